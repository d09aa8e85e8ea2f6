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

// Runs every step where it is asked for, so that changes are written at once; or keeps the background's waiting.
class StepThreads final : public platform::Threads {
public:
    void performOnMain(std::function<void()> step) override {
        if (!ended)
            step();
    }
    void performInBackground(std::function<void()> step) override {
        if (waits)
            waiting.push_back(std::move(step));
        else
            step();
    }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return nullptr; }

    bool waits = false;
    bool ended = false;
    std::vector<std::function<void()>> waiting;
};

StepThreads threads;

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
        QtPreferences writer(home, threads);
        EXPECT_EQ(writer.appValue("key" + text, domain), std::nullopt);
        writer.setValue(value, "key" + text, domain);
        writer.synchronize(domain);
    }
    QtPreferences reader(home, threads);
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
    QtPreferences preferences(folder.path(), threads);
    // Same length and nearly the same time: only the content tells the versions apart.
    for (int number = 10; number < 60; ++number) {
        folder.write(file, "[General]\nkey=" + std::to_string(number) + "\n");
        EXPECT_EQ(preferences.appValue("key", domain), Value(std::to_string(number)));
    }
    preferences.setValue(Value("mine"), "own", domain);
    EXPECT_EQ(preferences.appValue("own", domain), Value("mine")) << "before it is written";
    folder.write(file, "[General]\nlist=one, two,three\nkey=later\n\n[Window]\nsize=@Size(3 4)\n");
    preferences.synchronize(domain);
    EXPECT_EQ(folder.read(file), "[General]\nkey=later\nlist=one, two, three\nown=mine\n\n[Window]\nsize=@Size(3 4)\n");
    EXPECT_EQ(preferences.appValue("list", domain), Value("one, two, three"));

    preferences.setValue(std::nullopt, "own", domain);
    preferences.synchronize(domain);
    EXPECT_EQ(folder.read(file).find("own"), std::string::npos);
    EXPECT_EQ(preferences.appValue("own", domain), std::nullopt);
}

TEST(Preferences, aWriteUnderWayLosesNoLaterChange) {
    const TestFolder folder;
    StepThreads slow;
    slow.waits = true;
    QtPreferences preferences(folder.path(), slow);
    const auto change = [&](const char* value) {
        preferences.setValue(Value(value), "key", domain);
        preferences.synchronize(domain);
        EXPECT_EQ(preferences.appValue("key", domain), Value(value)) << "before it is written";
    };
    change("first");
    change("second");
    ASSERT_EQ(slow.waiting.size(), 1U);
    slow.waiting[0]();
    EXPECT_EQ(folder.read(file), "[General]\nkey=first\n");
    EXPECT_EQ(preferences.appValue("key", domain), Value("second"));
    ASSERT_EQ(slow.waiting.size(), 2U);
    slow.waiting[1]();
    EXPECT_EQ(folder.read(file), "[General]\nkey=second\n");
    folder.write(file, "[General]\nkey=other\n");
    EXPECT_EQ(preferences.appValue("key", domain), Value("other")) << "what is written counts no longer";

    change("third");
    change("last");
    slow.ended = true;
    preferences.finishWriting({});
    EXPECT_EQ(folder.read(file), "[General]\nkey=other\n") << "nothing overtakes the write under way";
    slow.waiting[2]();
    EXPECT_EQ(folder.read(file), "[General]\nkey=third\n");
    preferences.finishWriting({});
    EXPECT_EQ(folder.read(file), "[General]\nkey=last\n");
}

TEST(Preferences, keepsBrokenFilesAside) {
    using namespace std::string_literals;
    const std::vector<std::string> contents{"[General\nkey=value\n", "key=value\nno value here\n", "\x7F\x45LF\0key=1"s,
                                            "[General]\nkey=caf\xE9\n", std::string(2 * 1024 * 1024, 'x')};
    const TestFolder folder;
    QtPreferences preferences(folder.path(), threads);
    for (std::size_t index = 0; index < contents.size(); ++index) {
        folder.write(file, contents[index]);
        EXPECT_EQ(preferences.appValue("key", domain), std::nullopt) << index;
        EXPECT_EQ(folder.read(file), contents[index]) << "reading changes nothing";
        preferences.setValue(Value("new"), "key", domain);
        preferences.synchronize(domain);
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
    QtPreferences preferences(folder.path("inner"), threads);
    for (const char* name : {"", ".", "..", "../outside", "a/b", "/tmp/x"}) {
        EXPECT_EQ(preferences.appValue("key", name), std::nullopt) << name;
        preferences.setValue(Value("changed"), "key", name);
        preferences.synchronize(name);
    }
    EXPECT_EQ(folder.read("outside.conf"), "[General]\nkey=secret\n");
    EXPECT_EQ(entryCount(folder.path("inner")), 0U);
}

TEST(Preferences, aFailedWriteLeavesEverythingAsItWas) {
    const TestFolder folder;
    const std::string before = "[General]\nkey=old\n";
    folder.write(file, before);
    QtPreferences preferences(folder.path(), threads);
    preferences.setValue(Value(std::string(5000, 'x')), "key", domain);
    // Files cannot grow any more, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit unlimited {};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    const struct rlimit limited { 1000, unlimited.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &limited);
    preferences.synchronize(domain);
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(folder.read(file), before);
    EXPECT_EQ(entryCount(folder.path()), 1U);
    preferences.synchronize(domain);
    EXPECT_NE(folder.read(file), before);

    QtPreferences homeless(folder.path(std::string(file) + "/below"), threads);
    homeless.setValue(Value("x"), "key", domain);
    homeless.synchronize(domain);
    EXPECT_EQ(homeless.appValue("key", domain), Value("x")) << "for the rest of this run";
}

TEST(Preferences, linksStayLinksAndOtherItemsAreLeftAlone) {
    const TestFolder folder;
    folder.write("dotfiles/real.conf", "[General]\nkey=old\n");
    std::filesystem::create_symlink("dotfiles/real.conf", folder.path(file));
    QtPreferences preferences(folder.path(), threads);
    preferences.setValue(Value("new"), "key", domain);
    preferences.synchronize(domain);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path(file)));
    EXPECT_EQ(folder.read("dotfiles/real.conf"), "[General]\nkey=new\n");

    std::filesystem::create_symlink("nowhere", folder.path("dangling.conf"));
    ASSERT_EQ(::mkfifo(folder.path("pipe.conf").c_str(), 0600), 0);
    for (const char* name : {"dangling", "pipe"}) {
        EXPECT_EQ(preferences.appValue("key", name), std::nullopt);
        preferences.setValue(Value("x"), "key", name);
        preferences.synchronize(name);
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
