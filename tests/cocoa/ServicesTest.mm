#include "platform/cocoa/CocoaConsole.h"
#include "platform/cocoa/CocoaLocale.h"
#include "platform/cocoa/CocoaPreferences.h"
#include "platform/cocoa/CocoaProcessInfo.h"
#include "platform/cocoa/CocoaWorkspace.h"
#include "tests/cocoa/TestBundle.h"

#include "platform/posix/PosixFileChanges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <regex>
#include <unistd.h>

using foundation::Value;
using namespace platform;

namespace {

constexpr const char* domain = "example.tolvix.tests";

} // namespace

TEST(CocoaPreferencesTest, keepsValuesUntilTheyAreRemoved) {
    CocoaPreferences preferences;
    for (const Value& value : {Value("text"), Value(true), Value(std::int64_t{7}), Value(Value::Array{Value("a")})}) {
        preferences.setValue(value, "key", domain);
        preferences.synchronize(domain);
        EXPECT_EQ(CocoaPreferences().appValue("key", domain), value);
    }
    EXPECT_EQ(preferences.appValue("key", "example.tolvix.other"), std::nullopt);
    preferences.setValue(std::nullopt, "key", domain);
    preferences.synchronize(domain);
    EXPECT_EQ(preferences.appValue("key", domain), std::nullopt);
}

TEST(CocoaProcessInfoTest, tellsFacts) {
    CocoaProcessInfo info({"program", "--option"}, "");
    EXPECT_EQ(info.arguments(), (std::vector<std::string>{"program", "--option"}));
    EXPECT_GE(info.operatingSystemVersion().major, 10);
    EXPECT_NE(info.globallyUniqueString(), info.globallyUniqueString());
    EXPECT_EQ(info.globallyUniqueString().find('/'), std::string::npos);
    EXPECT_TRUE(std::regex_match(info.makeUUID().value_or(""), std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")));
    EXPECT_NE(info.makeUUID(), info.makeUUID());
    EXPECT_TRUE(std::regex_match(info.temporaryDirectory(), std::regex("/.*[^/]/")));
    EXPECT_EQ(info.homeDirectory().front(), '/');
    EXPECT_LT(std::abs(info.secondsSinceReferenceDate() + 978307200 - static_cast<double>(std::time(nullptr))), 60);
}

TEST(CocoaProcessInfoTest, movesSystemPathsBelowAnotherRoot) {
    EXPECT_EQ(CocoaProcessInfo({}, "").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(CocoaProcessInfo({}, "/").systemPath("/Applications"), "/Applications");
    EXPECT_EQ(CocoaProcessInfo({}, "/trial/").systemPath("/Applications"), "/trial/Applications");
}

TEST(CocoaLocaleTest, alwaysPrefersALanguage) {
    CocoaLocale locale;
    ASSERT_FALSE(locale.preferredLanguages().empty());
    EXPECT_FALSE(locale.preferredLanguages().front().empty());
    const auto country = locale.countryCode();
    EXPECT_TRUE(!country || std::regex_match(*country, std::regex("[A-Z]{2}|[0-9]{3}")));
}

TEST(CocoaConsoleTest, logsOneMessageWithoutControlBytes) {
    testing::internal::CaptureStderr();
    CocoaConsole().log("first\nsecond \x1B[2J 100% %@ done");
    CocoaConsole().log("");
    const std::string logged = testing::internal::GetCapturedStderr();
    EXPECT_NE(logged.find("first\nsecond \\x1b[2J 100% %@ done\n"), std::string::npos) << logged;
    EXPECT_EQ(std::count(logged.begin(), logged.end(), '\n'), 2) << logged;
}

TEST(CocoaWorkspaceTest, showsNothingThatIsNotThere) {
    PosixFileChanges files({});
    CocoaWorkspace workspace(files);
    EXPECT_FALSE(workspace.selectFile("/no/such/item", ""));
    EXPECT_FALSE(workspace.selectFile("relative", ""));
    EXPECT_FALSE(workspace.selectFile("", ""));
}

TEST(CocoaWorkspaceTest, destroysNamedItemsOfAFolder) {
    const tests::TestFolder folder;
    std::ofstream(folder.path("one")) << "1";
    PosixFileChanges files({});
    CocoaWorkspace workspace(files);
    EXPECT_FALSE(workspace.destroyFiles(folder.path(), {"one", "../two"}));
    EXPECT_TRUE(workspace.destroyFiles(folder.path(), {"one"}));
    EXPECT_FALSE(workspace.destroyFiles(folder.path(), {"one"}));
}

TEST(CocoaWorkspaceTest, findsNoCopiesOfWhatDoesNotRunAndLeavesOthersAlone) {
    PosixFileChanges files({});
    CocoaWorkspace workspace(files);
    EXPECT_TRUE(workspace.runningApplications("example.tolvix.nothing").empty());
    // Its number is taken, but by a process with another start.
    workspace.terminate({::getpid(), 1});
}
