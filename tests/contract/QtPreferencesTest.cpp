// Preferences in files of the form that Qt programs have, and everybody's contract over them and over the fake.

#include "platform/qtcore/QtPreferences.h"

#include "tests/contract/PreferencesContract.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakePreferences.h"

#include <QSettings>

#include <array>
#include <csignal>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

using foundation::Value;
using platform::QtPreferences;

constexpr const char* domain = "example.agent";
constexpr const char* file = "example.agent.conf";

struct QtWorld {
    void run(const std::function<void(platform::Preferences&)>& step) const {
        QtPreferences preferences(folder.path("new/folder"));
        step(preferences);
    }

    TestFolder folder;
};

struct FakeWorld {
    void run(const std::function<void(platform::Preferences&)>& step) {
        FakePreferences preferences;
        preferences.stored = std::move(stored);
        step(preferences);
        stored = std::move(preferences.stored);
    }

    std::map<std::string, Value::Dictionary> stored;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PreferencesContract, QtWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PreferencesContract, FakeWorld);

std::size_t entryCount(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

void store(QtPreferences& preferences, const std::string& value, const std::string& key = "key") {
    preferences.setValue(Value(value), key, domain);
    preferences.synchronize(domain);
}

} // namespace

TEST(QtPreferencesTest, IsReadByQtProgramsAndReadsWhatTheyWrite) {
    const TestFolder folder;
    QtPreferences preferences(folder.path());
    preferences.setValue(Value(true), "flag", domain);
    preferences.setValue(Value(std::int64_t{42}), "number", domain);
    preferences.setValue(Value("caf\xE9"), "marked", domain);
    store(preferences,
          "a, \"b\"\n@ \x01"
          "1 Zoë",
          "käy /\\%");
    struct stat status {};
    ASSERT_EQ(::stat(folder.path(file).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    {
        QSettings settings(QString::fromStdString(folder.path(file)), QSettings::IniFormat);
        EXPECT_TRUE(settings.value("flag").toBool());
        EXPECT_EQ(settings.value("number").toInt(), 42);
        EXPECT_EQ(settings.value("marked").toString(), "caf\xEF\xBF\xBD");
        EXPECT_EQ(settings.value(settings.allKeys().value(1)).toString(), "a, \"b\"\n@ \x01"
                                                                          "1 Zoë");
        settings.setValue("text", " Zoë; 安装 = \"\\\n");
        settings.setValue("list", QStringList{"one", "two, three"});
        settings.setValue("Window/text", "elsewhere");
    }
    std::ofstream(folder.path(file), std::ios::app) << "[General]\nnoted=\"value\" ; note\n";
    QtPreferences reader(folder.path());
    EXPECT_EQ(reader.appValue("text", domain), Value(" Zoë; 安装 = \"\\\n"));
    EXPECT_EQ(reader.appValue("list", domain), Value("one, two, three"));
    EXPECT_EQ(reader.appValue("flag", domain), Value("true"));
    EXPECT_EQ(reader.appValue("noted", domain), Value("value"));
}

TEST(QtPreferencesTest, ChangesNoByteThatIsNotItsOwn) {
    using namespace std::string_literals;
    const struct {
        std::string before;
        std::string after; // "key" set to "new", and "gone" removed
    } rows[] = {
        {"", "[General]\nkey=new\n"},
        {"\xEF\xBB\xBF[General]\r\nkey=old\r\n", "\xEF\xBB\xBF[General]\r\nkey=new\r\n"},
        {"\xEF\xBB\xBF", "\xEF\xBB\xBF[General]\nkey=new\n"},
        {"; note\n# [x]\n[General]\n  a = 1 ;x\nno value here\nlast=\xE9\n\n[Window]\nkey=2\ngone=2",
         "; note\n# [x]\n[General]\n  a = 1 ;x\nno value here\nlast=\xE9\nkey=new\n\n[Window]\nkey=2\ngone=2"},
        {"[Window]\nkey=2", "[Window]\nkey=2\n\n[General]\nkey=new\n"},
        {"[general]\ngone=1\n gone =2\nkey=1\nkey = caf\xE9\n[%General]\nkey=x\n",
         "[general]\nkey=new\n[%General]\nkey=x\n"},
        {"[General\nkey=value\n", "[General\nkey=new\n"},
        {"open=\"quote\nkey=1\n", "open=\"quote\nkey=new\n"},
        {"\x7F\x45LF\0key=1"s, "\x7F\x45LF\0key=1\nkey=new\n"s},
    };
    for (const auto& row : rows) {
        const TestFolder folder;
        folder.write(file, row.before);
        QtPreferences preferences(folder.path());
        preferences.setValue(std::nullopt, "gone", domain);
        preferences.appValue("key", domain);
        preferences.setValue(Value("even newer"), "key", domain);
        preferences.setValue(Value("new"), "key", domain);
        EXPECT_EQ(folder.read(file), row.before);
        preferences.synchronize(domain);
        EXPECT_EQ(folder.read(file), row.after);
        EXPECT_EQ(QtPreferences(folder.path()).appValue("key", domain), Value("new"));
        EXPECT_EQ(entryCount(folder.path()), 1U);
    }
}

TEST(QtPreferencesTest, KeepsWhatOtherProgramsStoreMeanwhile) {
    const TestFolder folder;
    QtPreferences preferences(folder.path());
    preferences.setValue(Value("mine"), "id", domain);
    preferences.setValue(Value("mine"), "own", domain);
    folder.write(file, "[General]\nid=first\nother=x\n");
    EXPECT_EQ(preferences.appValue("id", domain), Value("mine")) << "what was read once is kept";
    preferences.synchronize(domain);
    EXPECT_EQ(preferences.appValue("id", domain), Value("first"));
    EXPECT_EQ(folder.read(file), "[General]\nid=first\nother=x\nown=mine\n");
    folder.write(file, "[General]\nid=first\nown=theirs\n");
    store(preferences, "changed", "own");
    EXPECT_EQ(folder.read(file), "[General]\nid=first\nown=changed\n") << "a value that was known is replaced";
}

TEST(QtPreferencesTest, FirstRunsAtOnceAgree) {
    const TestFolder folder;
    std::array<int, 2> start{};
    ASSERT_EQ(::pipe(start.data()), 0);
    std::vector<pid_t> runs(8);
    for (std::size_t number = 0; number < runs.size(); ++number) {
        runs[number] = ::fork();
        if (runs[number] != 0)
            continue;
        ::close(start[1]);
        char none = 0;
        EXPECT_EQ(::read(start[0], &none, 1), 0) << "all begin when the last writer has closed";
        QtPreferences preferences(folder.path());
        store(preferences, std::to_string(number), "run" + std::to_string(number));
        if (!preferences.appValue("key", domain))
            store(preferences, std::to_string(number));
        ::_exit(std::stoi(preferences.appValue("key", domain)->description()));
    }
    ::close(start[0]);
    ::close(start[1]);
    std::vector<int> values;
    for (const pid_t run : runs) {
        int status = -1;
        EXPECT_EQ(::waitpid(run, &status, 0), run);
        EXPECT_TRUE(WIFEXITED(status));
        values.push_back(WEXITSTATUS(status));
    }
    QtPreferences reader(folder.path());
    const auto agreed = reader.appValue("key", domain);
    ASSERT_TRUE(agreed);
    EXPECT_EQ(values, std::vector(runs.size(), std::stoi(agreed->description())));
    for (std::size_t number = 0; number < runs.size(); ++number)
        EXPECT_EQ(reader.appValue("run" + std::to_string(number), domain), Value(std::to_string(number)));
}

TEST(QtPreferencesTest, AKilledRunLeavesOneWholeFile) {
    const TestFolder folder;
    std::array<int, 2> begun{};
    ASSERT_EQ(::pipe(begun.data()), 0);
    for (int round = 0; round < 30; ++round) {
        const pid_t run = ::fork();
        if (run == 0) {
            QtPreferences preferences(folder.path());
            for (int number = 0;; ++number) {
                store(preferences, std::string(100000, static_cast<char>('a' + number % 26)));
                if (number == 0 && ::write(begun[1], "", 1) != 1)
                    ::_exit(1);
            }
        }
        char sign = 'x';
        EXPECT_EQ(::read(begun[0], &sign, 1), 1);
        std::this_thread::sleep_for(std::chrono::microseconds(331 * round));
        ::kill(run, SIGKILL);
        ::waitpid(run, nullptr, 0);
        // Free again as soon as nobody writes any more.
        const int lock = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        EXPECT_EQ(::flock(lock, LOCK_EX), 0);
        ::close(lock);
        EXPECT_LE(entryCount(folder.path()), 1U);
        const auto value = QtPreferences(folder.path()).appValue("key", domain);
        EXPECT_TRUE(!value || value->description().size() == 100000);
    }
    EXPECT_EQ(entryCount(folder.path()), 1U);
    ::close(begun[0]);
    ::close(begun[1]);
}

TEST(QtPreferencesTest, RefusesDomainsThatLeaveTheFolder) {
    const TestFolder folder;
    folder.write("outside.conf", "[General]\nkey=secret\n");
    std::filesystem::create_directory(folder.path("inner"));
    QtPreferences preferences(folder.path("inner"));
    for (const char* name : {"", ".", "..", "../outside", "a/b", "/tmp/x"}) {
        EXPECT_EQ(preferences.appValue("key", name), std::nullopt) << name;
        preferences.setValue(Value("changed"), "key", name);
        preferences.synchronize(name);
    }
    EXPECT_EQ(folder.read("outside.conf"), "[General]\nkey=secret\n");
    EXPECT_EQ(entryCount(folder.path("inner")), 0U);
}

TEST(QtPreferencesTest, AFailedWriteLeavesEverythingAsItWas) {
    const TestFolder folder;
    const std::string before = "[General]\nkey=old\n";
    folder.write(file, before);
    QtPreferences preferences(folder.path());
    const std::string value(5000, 'x');
    // Files cannot grow any more, as on a full disk.
    struct rlimit unlimited {};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    const struct rlimit limited { 1000, unlimited.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &limited);
    store(preferences, value);
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(folder.read(file), before);
    EXPECT_EQ(entryCount(folder.path()), 1U);
    EXPECT_EQ(preferences.appValue("key", domain), Value(value)) << "for the rest of this run";
    preferences.synchronize(domain);
    EXPECT_EQ(folder.read(file), "[General]\nkey=" + value + "\n");

    const std::string tooLarge(2 << 20, 'x');
    folder.write(file, tooLarge);
    QtPreferences other(folder.path());
    store(other, "new");
    EXPECT_TRUE(folder.read(file) == tooLarge);

    QtPreferences homeless(folder.path(std::string(file) + "/below"));
    store(homeless, "x");
    EXPECT_EQ(homeless.appValue("key", domain), Value("x"));
}

TEST(QtPreferencesTest, LinksStayLinksAndOtherItemsAreLeftAlone) {
    const TestFolder folder;
    folder.write("dotfiles/real.conf", "[General]\nkey=old\n");
    std::filesystem::create_symlink("dotfiles/real.conf", folder.path(file));
    QtPreferences preferences(folder.path());
    store(preferences, "new");
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

TEST(QtPreferencesTest, TheFolderIsTheUsersOwn) {
    const TestEnvironment relative{{"XDG_CONFIG_HOME", "relative/folder"}};
    EXPECT_EQ(QtPreferences::userConfigurationFolder("/home/zoe"), "/home/zoe/.config");
    const TestEnvironment absolute{{"XDG_CONFIG_HOME", "/srv/config"}};
    EXPECT_EQ(QtPreferences::userConfigurationFolder("/home/zoe"), "/srv/config");
}

} // namespace tests
