#include "platform/linux/LinuxProcessInfo.h"

#include "platform/linux/LinuxLocale.h"
#include "platform/linux/StandardErrorConsole.h"
#include "tests/contract/SurroundingsContract.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakeSystem.h"

#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using platform::LinuxProcessInfo;
using tests::TestEnvironment;
using tests::TestFolder;

TEST(ProcessInfo, SystemPathsMoveBelowTheRoot) {
    EXPECT_EQ(LinuxProcessInfo({}, "").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(LinuxProcessInfo({}, "//").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(LinuxProcessInfo({}, "/srv/other/").systemPath("/Applications/X.app"), "/srv/other/Applications/X.app");
}

TEST(ProcessInfo, UniqueTextsAreKnownByTheirForm) {
    LinuxProcessInfo info({}, "");
    const std::string uuid = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    const std::regex unique(uuid + '-' + std::to_string(::getpid()) + "-[0-9A-F]{16}");
    EXPECT_TRUE(std::regex_match(info.makeUUID().value(), std::regex(uuid)));
    EXPECT_TRUE(std::regex_match(info.globallyUniqueString(), unique));
}

TEST(ProcessInfo, HomeIsAnAbsolutePath) {
    for (const char* home : {"/home/zoe/", "relative"}) {
        const TestEnvironment environment{{"HOME", home}};
        const std::string found = LinuxProcessInfo({}, "").homeDirectory();
        EXPECT_EQ(found == "/home/zoe", *home == '/') << home;
        EXPECT_EQ(found.front(), '/') << home;
    }
}

class TemporaryFolder : public ::testing::Test {
protected:
    // The folder that a new process would take, without the slash; closed to others.
    static std::string choice() {
        std::string chosen = LinuxProcessInfo({}, "").temporaryDirectory();
        EXPECT_EQ(chosen.back(), '/');
        chosen.pop_back();
        struct stat status {};
        EXPECT_EQ(::lstat(chosen.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode, S_IFDIR | 0700U) << chosen;
        EXPECT_EQ(status.st_uid, ::geteuid()) << chosen;
        return chosen;
    }
    void expectFreshFolder() const { EXPECT_TRUE(choice().starts_with(usual + '-')); }

    void SetUp() override {
        std::filesystem::create_directory(shared);
        ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    }

    TestFolder folder;
    std::string shared = folder.path("tmp");
    std::string usual = shared + "/tolvix-installer-" + std::to_string(::geteuid());
    TestEnvironment environment{{"TMPDIR", shared}};
};

TEST_F(TemporaryFolder, IsPrivate) {
    EXPECT_EQ(choice(), usual) << "made in a shared one";
    EXPECT_EQ(choice(), usual) << "the next run finds it again";
    const TestEnvironment own{{"TMPDIR", folder.path() + "//"}};
    EXPECT_EQ(choice(), folder.path()) << "the given one is private itself";
    for (const char* value : {"", "relative", "/nowhere/at/all"}) {
        const TestEnvironment other{{"TMPDIR", value}};
        const std::string chosen = choice();
        EXPECT_TRUE(chosen.starts_with("/tmp/")) << value;
        // Unless it is in use.
        std::error_code ignored;
        std::filesystem::remove(chosen, ignored);
    }
}

TEST_F(TemporaryFolder, IsReachedByAPlainPathThatOthersCannotBend) {
    for (const std::string& detour : {shared + "/.", shared + "/../tmp//", folder.path() + "/./tmp"}) {
        const TestEnvironment other{{"TMPDIR", detour}};
        EXPECT_EQ(choice(), usual) << detour;
    }
    std::filesystem::create_directories(shared + "/inner/own");
    ASSERT_EQ(::chmod((shared + "/inner/own").c_str(), 0700), 0);
    for (const mode_t bendable : {0777U, 0775U, 0707U}) {
        ASSERT_EQ(::chmod((shared + "/inner").c_str(), bendable), 0);
        for (const char* name : {"/inner", "/inner/own"}) {
            const TestEnvironment other{{"TMPDIR", shared + name}};
            const std::string chosen = choice();
            EXPECT_FALSE(chosen.starts_with(shared)) << chosen;
            std::error_code ignored;
            std::filesystem::remove(chosen, ignored); // unless it is in use
        }
    }
}

TEST_F(TemporaryFolder, TakesALibrarysFolderForSocketsAlongAtTheEnd) {
    const std::string sockets = shared + "/runtime-" + ::getpwuid(::geteuid())->pw_name;
    const TestEnvironment none{{"XDG_RUNTIME_DIR", std::nullopt}};
    const auto isLeft = [&](bool wasThere) {
        if (wasThere)
            ::mkdir(sockets.c_str(), 0700);
        LinuxProcessInfo info({}, "");
        ::mkdir(sockets.c_str(), 0700);
        info.removeEmptyTemporaryFolder();
        return std::filesystem::exists(sockets);
    };
    EXPECT_FALSE(isLeft(false));
    EXPECT_TRUE(isLeft(true)) << "it may be another program's";
}

TEST_F(TemporaryFolder, IsFreshWhenTheUsualOneCannotBeTrusted) {
    LinuxProcessInfo info({}, "");
    EXPECT_EQ(info.temporaryDirectory(), usual + '/');
    std::filesystem::remove(usual);
    std::filesystem::create_directory_symlink(folder.path(), usual);
    EXPECT_NE(info.temporaryDirectory(), usual + '/') << "looked at again at every use";
    expectFreshFolder();
    std::filesystem::remove(usual);
    std::filesystem::create_directory(usual);
    ASSERT_EQ(::chmod(usual.c_str(), 0755), 0);
    expectFreshFolder();
    if (::geteuid() == 0) {
        ASSERT_EQ(::chmod(usual.c_str(), 0700), 0);
        ASSERT_EQ(::chown(usual.c_str(), 12345, 12345), 0);
        expectFreshFolder();
    }
}

TEST(Console, MessagesOfManyThreadsStayWhole) {
    platform::StandardErrorConsole console("/opt/My App/Tolvix Installer");
    const std::string body(3000, 'x');
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 200; ++i)
                console.log(body);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::istringstream lines(testing::internal::GetCapturedStderr());
    int whole = 0;
    for (std::string line; std::getline(lines, line);)
        whole += line.find(" Tolvix Installer[") == 23 && line.ends_with("] " + body) ? 1 : 0;
    EXPECT_EQ(whole, 4 * 200);
}

} // namespace

namespace tests {

namespace {

struct LinuxWorld {
    TestFolder folder;
    TestEnvironment environment{{"TMPDIR", folder.path()}};
    LinuxProcessInfo info{{"program"}, ""};
    platform::LinuxLocale locale;
};

struct FakeWorld {
    FakeProcessInfo info;
    FakeLocale locale;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, SurroundingsContract, LinuxWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SurroundingsContract, FakeWorld);

} // namespace

} // namespace tests
