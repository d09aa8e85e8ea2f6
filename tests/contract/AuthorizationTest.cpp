#include "platform/linux/LinuxAuthorization.h"

#include "platform/linux/Elevation.h"
#include "tests/contract/AuthorizationContract.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakeAuthorization.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::Authorization;
using platform::AuthorizationRef;
using platform::Elevation;
using platform::ElevationFacts;
using platform::LinuxAuthorization;
using tests::TestEnvironment;
using tests::TestFolder;

TEST(Elevation, IsChosenByWhatIsThereAndEndsTheHelpersOptions) {
    const ElevationFacts onDesktop{.hasPkexec = true, .hasSystemBus = true, .hasDisplay = true, .hasSudo = true};
    const ElevationFacts onTerminal{.hasPkexec = true, .hasSystemBus = true, .hasTerminal = true, .hasSudo = true};
    const ElevationFacts askpass{.hasTerminal = true, .hasSudo = true, .hasAskpass = true};
    const std::pair<ElevationFacts, const char*> rows[] = {
        {{.isRoot = true, .hasPkexec = true, .hasSystemBus = true, .hasDisplay = true}, "/bin/rm|-rf|--|/x y"},
        {onDesktop, "/usr/bin/pkexec|/bin/rm|-rf|--|/x y"},
        {onTerminal, "/usr/bin/pkexec|/bin/rm|-rf|--|/x y"},
        {{.hasPkexec = true, .hasSystemBus = true, .hasSudo = true}, "/usr/bin/sudo|-n|--|/bin/rm|-rf|--|/x y"},
        {{.hasPkexec = true, .hasTerminal = true, .hasSudo = true}, "/usr/bin/sudo|--|/bin/rm|-rf|--|/x y"},
        {askpass, "/usr/bin/sudo|-A|--|/bin/rm|-rf|--|/x y"},
        {{.hasPkexec = true, .hasDisplay = true, .hasAskpass = true}, ""},
    };
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        const Elevation elevation = platform::chooseElevation(rows[row].first);
        const auto command = platform::elevatedCommand(elevation, "/bin/rm", {"-rf", "--", "/x y"});
        std::string line = command.path;
        for (const std::string& word : command.arguments)
            line += '|' + word;
        EXPECT_EQ(line, rows[row].second) << "row " << row;
    }
}

TEST(Elevation, EnvironmentHoldsNothingThatChangesTools) {
    const TestEnvironment environment{
        {"PATH", "/evil"},       {"LD_PRELOAD", ""},       {"IFS", "x"},
        {"DISPLAY", ":5"},       {"SUDO_ASKPASS", "/ask"}, {"XAUTHORITY", std::nullopt},
        {"WAYLAND_DISPLAY", ""}, {"HOME", "/home/zoe"},    {"XDG_RUNTIME_DIR", "/run/x"},
        {"TERM", "vt100"},       {"LC_ALL", "fr_FR"},      {"DBUS_SESSION_BUS_ADDRESS", "bus"}};
    std::vector<std::string> expected{"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C"};
    EXPECT_EQ(platform::elevatedEnvironment(Elevation::Direct), expected);
    for (const char* asking : {"DISPLAY=:5", "XDG_RUNTIME_DIR=/run/x", "DBUS_SESSION_BUS_ADDRESS=bus",
                               "SUDO_ASKPASS=/ask", "TERM=vt100", "HOME=/home/zoe"})
        expected.emplace_back(asking);
    EXPECT_EQ(platform::elevatedEnvironment(Elevation::Pkexec), expected);
}

// Runs tools for real, which asks nobody only as root.
class Privileges : public ::testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0)
            GTEST_SKIP() << "needs to run as root";
        ASSERT_EQ(authorization.create(reference), Authorization::success);
    }
    bool execute(const std::string& tool, const std::vector<std::string>& arguments) {
        return authorization.executeWithPrivileges(*reference, tool, arguments);
    }
    std::optional<int> statusOf(const std::string& script) {
        return execute("/bin/sh", {"-c", script, "sh", folder.path()}) ? authorization.wait() : std::nullopt;
    }

    TestFolder folder;
    LinuxAuthorization authorization;
    std::shared_ptr<AuthorizationRef> reference;
};

TEST_F(Privileges, OnlyPlainFilesAreStartedAndOnlyWithItsOwnRights) {
    using namespace std::string_literals;
    for (const std::string& tool : {"/no/such/tool"s, folder.write("plain", "x"), folder.path()})
        EXPECT_FALSE(execute(tool, {})) << tool;
    EXPECT_FALSE(execute("/bin/rm", {"-rf", folder.path("\0x"s)})) << "it would be cut to the folder";
    EXPECT_TRUE(std::filesystem::exists(folder.path()));
    class : public AuthorizationRef {
    } stranger;
    EXPECT_FALSE(authorization.executeWithPrivileges(stranger, "/bin/true", {}));
    EXPECT_EQ(authorization.wait(), std::nullopt);
}

TEST_F(Privileges, ToolsInheritNothing) {
    const TestEnvironment environment{{"SECRET", "1"}, {"HOME", "/root"}};
    const int leaked = ::fcntl(STDERR_FILENO, F_DUPFD, 50);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(statusOf("cd \"$1\"; env -u PWD -u OLDPWD -u _ | sort > env; "
                       "echo $(readlink /proc/$$/fd/0 /proc/$$/fd/1) > streams"),
              0);
    EXPECT_EQ(statusOf("ls /proc/self/fd > \"$1/descriptors\""), 0);
    // Without a shell, which changes signals itself.
    EXPECT_TRUE(execute("/bin/cp", {"/proc/self/status", folder.path()}));
    EXPECT_EQ(authorization.wait(), 0);
    EXPECT_EQ(statusOf("pwd > \"$1/cwd\""), 0);
    std::signal(SIGPIPE, previous);
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    ::close(leaked);
    EXPECT_EQ(folder.read("env"), "LC_ALL=C\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n");
    EXPECT_EQ(folder.read("streams"), "/dev/null /dev/null\n");
    EXPECT_EQ(folder.read("cwd"), "/\n");
    EXPECT_EQ(folder.read("descriptors"), "0\n1\n2\n3\n") << "3 is the listed folder";
    EXPECT_NE(folder.read("status").find("\nSigBlk:\t0000000000000000\n"), std::string::npos);
    const std::string ignored = folder.read("status").substr(folder.read("status").find("SigIgn:\t") + 8, 16);
    EXPECT_EQ(std::stoull(ignored, nullptr, 16) & (1ULL << (SIGPIPE - 1)), 0U);
}

TEST_F(Privileges, ThePathsOfItsToolsAreInUseForAsLongAsItIsHeld) {
    EXPECT_TRUE(execute("/bin/test", {"-e", "/some/path", "relative"}));
    authorization.wait();
    EXPECT_EQ(authorization.pathsInUse(), std::vector<std::string>{"/some/path"});
    reference.reset();
    EXPECT_TRUE(authorization.pathsInUse().empty());
}

TEST_F(Privileges, ChildrenOfOtherThreadsAreTheirOwn) {
    pid_t child = -1;
    std::string name = "/bin/true";
    char* arguments[] = {name.data(), nullptr};
    ASSERT_EQ(::posix_spawn(&child, name.c_str(), nullptr, nullptr, arguments, environ), 0);
    siginfo_t ended{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0) << "ready to be taken";
    std::optional<int> status;
    std::thread([&] { status = statusOf("sleep 0.3; exit 7"); }).join();
    EXPECT_EQ(status, 0x0700);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child) << "still there for its own thread";
}

} // namespace

namespace tests {

namespace {

struct LinuxWorld : RealTools<LinuxAuthorization> {
    static std::string missing() { return ::geteuid() == 0 ? "" : "root"; }
};

struct FakeWorld {
    std::vector<std::string> arguments(int status) {
        authorization.waitResults[static_cast<int>(authorization.commands.size()) + 1] = status << 8;
        return {};
    }
    static std::string missing() { return {}; }

    FakeFiles files;
    FakeAuthorization authorization{files};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, AuthorizationContract, LinuxWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, AuthorizationContract, FakeWorld);

} // namespace

} // namespace tests
