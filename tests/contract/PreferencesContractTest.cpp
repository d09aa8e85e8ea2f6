#include "platform/qtcore/QtPreferences.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using foundation::Value;
using platform::QtPreferences;
using tests::TestFolder;

constexpr const char* domain = "example.agent";
constexpr const char* file = "example.agent.conf";

std::size_t entryCount(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(Preferences, storesTextsOfEveryKindAndOtherValuesAsTexts) {
    const TestFolder folder;
    const std::string home = folder.path("new/folder");
    std::vector<std::pair<Value, std::string>> rows{
        {Value("caf\xE9"), "caf\xEF\xBF\xBD"}, {Value(true), "true"}, {Value(std::int64_t{42}), "42"}};
    for (const std::string text :
         {"", "  two words ", "a=b;c,d \"e\" \\ % @x #", "@Invalid()", "one\ntwo\tthree", "Zoë 安装"}) {
        rows.emplace_back(Value(text), text);
    }
    for (const auto& [value, text] : rows) {
        QtPreferences writer(home);
        EXPECT_EQ(writer.appValue("key" + text, domain), std::nullopt);
        writer.setValue(value, "key" + text, domain);
        EXPECT_TRUE(writer.synchronize(domain)) << text;
    }
    QtPreferences reader(home);
    for (const auto& [ignored, text] : rows) {
        EXPECT_EQ(reader.appValue("key" + text, domain), Value(text));
    }
    struct stat status {};
    ASSERT_EQ(::stat((home + '/' + file).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(entryCount(home), 1U);
}

TEST(Preferences, seesAndKeepsWhatOtherProgramsWrite) {
    const TestFolder folder;
    QtPreferences preferences(folder.path());
    // Same length and nearly the same time: only the content tells the versions apart.
    for (int number = 10; number < 60; ++number) {
        folder.write(file, "[General]\nkey=" + std::to_string(number) + "\n");
        EXPECT_EQ(preferences.appValue("key", domain), Value(std::to_string(number)));
    }
    preferences.setValue(Value("mine"), "own", domain);
    EXPECT_EQ(preferences.appValue("own", domain), Value("mine")) << "before it is written";
    folder.write(file, "[General]\nlist=one, two,three\nkey=later\n\n[Window]\nsize=@Size(3 4)\n");
    ASSERT_TRUE(preferences.synchronize(domain));
    EXPECT_EQ(folder.read(file), "[General]\nkey=later\nlist=one, two, three\nown=mine\n\n[Window]\nsize=@Size(3 4)\n");
    EXPECT_EQ(preferences.appValue("list", domain), Value("one, two, three"));

    preferences.setValue(std::nullopt, "own", domain);
    ASSERT_TRUE(preferences.synchronize(domain));
    EXPECT_EQ(folder.read(file).find("own"), std::string::npos);
    EXPECT_EQ(preferences.appValue("own", domain), std::nullopt);
}

TEST(Preferences, keepsBrokenFilesAside) {
    using namespace std::string_literals;
    const std::vector<std::string> contents{"[General\nkey=value\n", "key=value\nno value here\n", "\x7F\x45LF\0key=1"s,
                                            "[General]\nkey=caf\xE9\n", std::string(2 * 1024 * 1024, 'x')};
    const TestFolder folder;
    QtPreferences preferences(folder.path());
    for (std::size_t index = 0; index < contents.size(); ++index) {
        folder.write(file, contents[index]);
        EXPECT_EQ(preferences.appValue("key", domain), std::nullopt) << index;
        EXPECT_EQ(folder.read(file), contents[index]) << "reading changes nothing";
        preferences.setValue(Value("new"), "key", domain);
        ASSERT_TRUE(preferences.synchronize(domain)) << index;
        EXPECT_EQ(preferences.appValue("key", domain), Value("new"));
        const std::string aside = std::string(file) + ".broken" + (index == 0 ? "" : '.' + std::to_string(index + 1));
        EXPECT_EQ(folder.read(aside), contents[index]) << aside;
    }
    EXPECT_EQ(entryCount(folder.path()), contents.size() + 1);
}

TEST(Preferences, refusesDomainsThatLeaveTheFolder) {
    const TestFolder folder;
    folder.write("outside.conf", "[General]\nkey=secret\n");
    std::filesystem::create_directory(folder.path("inner"));
    QtPreferences preferences(folder.path("inner"));
    for (const char* name : {"", ".", "..", "../outside", "a/b", "/tmp/x"}) {
        EXPECT_EQ(preferences.appValue("key", name), std::nullopt) << name;
        preferences.setValue(Value("changed"), "key", name);
        EXPECT_FALSE(preferences.synchronize(name)) << name;
    }
    EXPECT_EQ(folder.read("outside.conf"), "[General]\nkey=secret\n");
    EXPECT_EQ(entryCount(folder.path("inner")), 0U);
}

TEST(Preferences, aFailedWriteLeavesEverythingAsItWas) {
    const TestFolder folder;
    const std::string before = "[General]\nkey=old\n";
    folder.write(file, before);
    QtPreferences preferences(folder.path());
    preferences.setValue(Value(std::string(5000, 'x')), "key", domain);
    // Files cannot grow any more, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit unlimited {};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    const struct rlimit limited { 1000, unlimited.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &limited);
    EXPECT_FALSE(preferences.synchronize(domain));
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(folder.read(file), before);
    EXPECT_EQ(entryCount(folder.path()), 1U);
    EXPECT_TRUE(preferences.synchronize(domain)) << "the change is still waiting";
    EXPECT_NE(folder.read(file), before);

    QtPreferences homeless(folder.path(std::string(file) + "/below"));
    homeless.setValue(Value("x"), "key", domain);
    EXPECT_FALSE(homeless.synchronize(domain));
    EXPECT_EQ(homeless.appValue("key", domain), Value("x")) << "for the rest of this run";
}

TEST(Preferences, linksStayLinksAndOtherItemsAreLeftAlone) {
    const TestFolder folder;
    folder.write("dotfiles/real.conf", "[General]\nkey=old\n");
    std::filesystem::create_symlink("dotfiles/real.conf", folder.path(file));
    QtPreferences preferences(folder.path());
    preferences.setValue(Value("new"), "key", domain);
    ASSERT_TRUE(preferences.synchronize(domain));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path(file)));
    EXPECT_EQ(folder.read("dotfiles/real.conf"), "[General]\nkey=new\n");

    std::filesystem::create_symlink("nowhere", folder.path("dangling.conf"));
    ASSERT_EQ(::mkfifo(folder.path("pipe.conf").c_str(), 0600), 0);
    for (const char* name : {"dangling", "pipe"}) {
        EXPECT_EQ(preferences.appValue("key", name), std::nullopt);
        preferences.setValue(Value("x"), "key", name);
        EXPECT_FALSE(preferences.synchronize(name)) << name;
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("dangling.conf")));
    EXPECT_TRUE(std::filesystem::is_fifo(folder.path("pipe.conf")));
}

TEST(Preferences, theFolderIsTheUsersOwn) {
    const tests::TestEnvironment relative{{"XDG_CONFIG_HOME", "relative/folder"}};
    EXPECT_EQ(QtPreferences::userConfigurationFolder("/home/zoe"), "/home/zoe/.config");
    const tests::TestEnvironment absolute{{"XDG_CONFIG_HOME", "/srv/config"}};
    EXPECT_EQ(QtPreferences::userConfigurationFolder("/home/zoe"), "/srv/config");
}

} // namespace
