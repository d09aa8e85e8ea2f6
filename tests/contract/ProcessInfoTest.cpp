#include "platform/linux/LinuxProcessInfo.h"

#include "platform/linux/StandardErrorConsole.h"
#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

using platform::LinuxProcessInfo;
using platform::StandardErrorConsole;
using tests::TestEnvironment;
using tests::TestFolder;

bool isClosedToOthers(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & 07777U) == 0700;
}

TEST(ProcessInfo, systemPathsMoveBelowTheRoot) {
    for (const char* root : {"", "/", "//"}) {
        EXPECT_EQ(LinuxProcessInfo({}, root).systemPath("/Applications"), "/Applications");
    }
    EXPECT_EQ(LinuxProcessInfo({}, "/srv/other/").systemPath("/Applications/X.app"), "/srv/other/Applications/X.app");
}

TEST(ProcessInfo, theVersionIsTheKernels) {
    struct utsname system {};
    ASSERT_EQ(::uname(&system), 0);
    const auto version = LinuxProcessInfo({}, "").operatingSystemVersion();
    const std::string numbers =
        std::to_string(version.major) + '.' + std::to_string(version.minor) + '.' + std::to_string(version.patch);
    EXPECT_EQ(std::string(&system.release[0]).rfind(numbers, 0), 0U) << numbers;
}

TEST(ProcessInfo, uniqueTextsNeverRepeat) {
    LinuxProcessInfo info({}, "");
    const std::regex uuid("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    const std::regex unique("[0-9A-F-]{36}-" + std::to_string(::getpid()) + "-[0-9A-F]{16}");
    std::set<std::string> seen;
    for (int count = 0; count < 1000; ++count) {
        const std::string text = info.makeUUID();
        EXPECT_TRUE(std::regex_match(text, uuid)) << text;
        seen.insert(text);
        seen.insert(info.globallyUniqueString());
    }
    EXPECT_EQ(seen.size(), 2000U);
    EXPECT_TRUE(std::regex_match(info.globallyUniqueString(), unique));
}

TEST(ProcessInfo, homeIsAnAbsolutePath) {
    LinuxProcessInfo info({}, "");
    {
        const TestEnvironment environment{{"HOME", "/home/zoe/"}};
        EXPECT_EQ(info.homeDirectory(), "/home/zoe");
    }
    for (const std::optional<std::string>& home : {std::optional<std::string>("relative"), {}}) {
        const TestEnvironment environment{{"HOME", home}};
        EXPECT_EQ(info.homeDirectory().front(), '/');
    }
}

class TemporaryFolder : public ::testing::Test {
protected:
    // The folder that a new process would take.
    std::string choice() const { return LinuxProcessInfo({}, "").temporaryDirectory(); }
    std::string usual() const { return shared + "/tolvix-installer-" + std::to_string(::geteuid()); }
    void expectFreshFolder() const {
        const std::string chosen = choice();
        EXPECT_EQ(chosen.rfind(usual() + '-', 0), 0U) << chosen;
        EXPECT_TRUE(isClosedToOthers(chosen.substr(0, chosen.size() - 1)));
    }

    void SetUp() override {
        std::filesystem::create_directory(shared);
        ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    }

    TestFolder folder;
    std::string shared = folder.path("tmp");
    TestEnvironment environment{{"TMPDIR", shared}};
};

TEST_F(TemporaryFolder, isTheGivenOneWhenThatIsPrivate) {
    const TestEnvironment own{{"TMPDIR", folder.path() + "//"}};
    EXPECT_EQ(choice(), folder.path() + '/');
}

TEST_F(TemporaryFolder, isMadeOnceInASharedOne) {
    EXPECT_EQ(choice(), usual() + '/');
    EXPECT_TRUE(isClosedToOthers(usual()));
    EXPECT_EQ(choice(), usual() + '/') << "the next run finds it again";
}

TEST_F(TemporaryFolder, isFreshWhenTheUsualOneCannotBeTrusted) {
    std::filesystem::create_directory_symlink(folder.path(), usual());
    expectFreshFolder();
    std::filesystem::remove(usual());
    std::filesystem::create_directory(usual());
    ASSERT_EQ(::chmod(usual().c_str(), 0755), 0);
    expectFreshFolder();
    if (::geteuid() == 0) {
        ASSERT_EQ(::chmod(usual().c_str(), 0700), 0);
        ASSERT_EQ(::chown(usual().c_str(), 12345, 12345), 0);
        expectFreshFolder();
    }
}

TEST_F(TemporaryFolder, isCheckedAgainAtEveryUse) {
    LinuxProcessInfo info({}, "");
    EXPECT_EQ(info.temporaryDirectory(), usual() + '/');
    std::filesystem::remove(usual());
    std::filesystem::create_directory_symlink(folder.path(), usual());
    EXPECT_NE(info.temporaryDirectory(), usual() + '/');
}

TEST_F(TemporaryFolder, ignoresVariablesThatNameNoFolder) {
    for (const char* value : {"", "relative", "/nowhere/at/all"}) {
        const TestEnvironment other{{"TMPDIR", value}};
        EXPECT_EQ(choice().rfind("/tmp/", 0), 0U) << value;
    }
}

// Standard error leads into a file for the duration of the test.
class ConsoleLog : public ::testing::Test {
protected:
    void SetUp() override {
        previous_ = ::dup(STDERR_FILENO);
        const int file = ::open(folder.write("log", "").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        ::dup2(file, STDERR_FILENO);
        ::close(file);
    }
    void TearDown() override {
        ::dup2(previous_, STDERR_FILENO);
        ::close(previous_);
    }
    std::string written() const { return folder.read("log"); }

    TestFolder folder;
    StandardErrorConsole console{"/opt/My App/Tolvix Installer"};

private:
    int previous_ = -1;
};

TEST_F(ConsoleLog, linesBeginWithTimeAndProcess) {
    console.log("");
    EXPECT_EQ(written(), "");
    console.log("one\ttwo\n{\n}\n");
    console.log("three");
    const std::string banner = R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} Tolvix Installer\[)" +
                               std::to_string(::getpid()) + ":" + std::to_string(::gettid()) + R"(\] )";
    EXPECT_TRUE(std::regex_match(written(), std::regex(banner + "one\ttwo\n\\{\n\\}\n" + banner + "three\n")))
        << written();
}

TEST_F(ConsoleLog, controlBytesAreVisible) {
    console.log("a\x1b[2Jb\rc");
    const std::string text = written();
    EXPECT_EQ(text.substr(text.find("] ") + 2), "a\\x1b[2Jb\\x0dc\n");
}

TEST_F(ConsoleLog, messagesOfManyThreadsStayWhole) {
    constexpr int count = 200;
    const std::string body(3000, 'x');
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < count; ++i) {
                console.log(body);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::istringstream lines(written());
    int whole = 0;
    for (std::string line; std::getline(lines, line);) {
        whole += line.size() > body.size() && line.substr(line.size() - body.size() - 1) == ' ' + body ? 1 : 0;
    }
    EXPECT_EQ(whole, 4 * count);
}

} // namespace
