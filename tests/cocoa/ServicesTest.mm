#include "platform/cocoa/CocoaConsole.h"
#include "platform/cocoa/CocoaLocale.h"
#include "platform/cocoa/CocoaPreferences.h"
#include "platform/cocoa/CocoaProcessInfo.h"
#include "platform/cocoa/CocoaWorkspace.h"
#include "platform/posix/PosixFileChanges.h"
#include "tests/contract/FolderWorld.h"
#include "tests/contract/PreferencesContract.h"
#include "tests/contract/SurroundingsContract.h"
#include "tests/contract/WorkspaceContract.h"

#ifdef GNUSTEP
#include "tests/support/gnustep/Preferences.h"
#endif

#include <cmath>
#include <ctime>

using namespace platform;

namespace tests {

namespace {

struct CocoaPreferencesWorld {
    static void run(const std::function<void(Preferences&)>& step) {
#ifdef GNUSTEP
        forgetUnstoredPreferences();
#endif
        CocoaPreferences preferences;
        step(preferences);
    }
};

struct CocoaSurroundingsWorld {
    CocoaProcessInfo info{{"program"}, ""};
    CocoaLocale locale;
};

struct CocoaWorkspaceWorld : FolderWorld {
    PosixFileChanges changes{ProtectedPaths{}};
    CocoaWorkspace workspace{changes};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, PreferencesContract, CocoaPreferencesWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, SurroundingsContract, CocoaSurroundingsWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, WorkspaceContract, CocoaWorkspaceWorld);

} // namespace

TEST(CocoaProcessInfoTest, TellsTheVersionAndTheTime) {
    CocoaProcessInfo info({}, "");
    EXPECT_GE(info.operatingSystemVersion().major, 10);
    EXPECT_LT(std::abs(info.secondsSinceReferenceDate() + 978307200 - static_cast<double>(std::time(nullptr))), 60);
}

TEST(CocoaProcessInfoTest, MovesSystemPathsBelowAnotherRoot) {
    EXPECT_EQ(CocoaProcessInfo({}, "").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(CocoaProcessInfo({}, "/").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(CocoaProcessInfo({}, "/trial/").systemPath("/Applications"), "/trial/Applications");
}

TEST(CocoaConsoleTest, LogsOneMessageWithoutControlBytes) {
    testing::internal::CaptureStderr();
    CocoaConsole().log("first\nsecond \x1B[2J 100% %@ done");
    CocoaConsole().log("");
    const std::string logged = testing::internal::GetCapturedStderr();
    EXPECT_NE(logged.find("first\nsecond \\x1b[2J 100% %@ done\n"), std::string::npos) << logged;
    EXPECT_EQ(std::count(logged.begin(), logged.end(), '\n'), 2) << logged;
}

} // namespace tests
