#include "tests/unit/FlowWorld.h"

// Every alert with every button, and quitting while a stage is busy.

using platform::Alert;
using platform::AlertStyle;
using platform::TerminateReply;

namespace {

const std::string manual = "MAC_LAUNCHER_FAILED_WARNING_MANUAL_DONWLOAD";
const std::string quit = "MAC_LAUNCHER_FAILED_WARNING_QUIT";
const std::string busy = "MAC_LAUNCHER_INCOMPLETE_WARNING";
const std::string store = "MAC_LAUNCHER_MACAPPSTORE_WARNING";
const std::string failed = "MAC_LAUNCHER_FAILED_";

void expectAlert(const Alert& alert, AlertStyle style, const std::string& subject, const Texts& buttons,
                 std::size_t escapeButton, std::size_t quitButton) {
    SCOPED_TRACE(subject + " with " + std::to_string(buttons.size()) + " buttons");
    EXPECT_EQ(alert.style, style);
    EXPECT_EQ(alert.messageText, subject + "_TITLE");
    EXPECT_EQ(alert.informativeText, subject + "_DESCRIPTION");
    EXPECT_EQ(alert.buttons, buttons);
    EXPECT_EQ(alert.escapeButton, escapeButton);
    EXPECT_EQ(alert.quitButton, quitButton);
    EXPECT_EQ(alert.endsProgram, subject != busy);
}

} // namespace

class AlertsTest : public testing::Test, public FlowWorld {};

TEST_F(AlertsTest, FailureAlertsOfferTheManualDownloadOnlyWhereItCanBe) {
    const auto shown = [](bool checked, bool onCheck, bool onDownload, bool onInstall) {
        FlowWorld flow;
        if (checked)
            flow.launchToDownload();
        flow.app->showFailureOnCheck(onCheck, onDownload, onInstall);
        return flow.system.alerts.shown();
    };
    const AlertStyle style = AlertStyle::Critical;
    expectAlert(shown(false, true, false, false), style, failed + "CHECK", {quit}, 0, 0);
    expectAlert(shown(true, true, true, true), style, failed + "CHECK", {quit}, 0, 0);
    expectAlert(shown(true, false, true, false), style, failed + "DOWNLOAD", {manual, quit}, 1, 1);
    expectAlert(shown(false, false, true, false), style, failed + "DOWNLOAD", {quit}, 0, 0);
    expectAlert(shown(true, false, false, true), style, failed + "INSTALL", {manual, quit}, 1, 1);
}

TEST_F(AlertsTest, EveryAnswerLogsItsCodeAndQuitsAfterIt) {
    // The code and the opened address of an answer to the store warning, or to a failure; 0 is the system's answer.
    const auto answer = [](bool store, int code, bool checked = true) {
        FlowWorld flow;
        checked ? flow.launchToDownload() : flow.launchToCheck();
        flow.app->stopDownload();
        store ? flow.app->showMacAppStoreWarning() : flow.app->showFailureOnCheck(false, true, false);
        flow.settle();
        flow.system.alerts.answer(code);
        Texts result = flow.system.workspace.opened;
        result.insert(result.begin(), flow.newSteps());
        EXPECT_EQ(flow.system.application.requests, result[0].empty() ? 1 : 0) << "the quit waits for the event";
        EXPECT_TRUE(flow.quits());
        return result;
    };
    EXPECT_EQ(answer(false, 1000), (Texts{"23.42", "https://h/Tolvix.dmg"}));
    EXPECT_EQ(answer(false, 1001), Texts{"23.43"});
    EXPECT_EQ(answer(false, 1000, false), Texts{""});
    EXPECT_EQ(answer(false, 0), Texts{""});
    EXPECT_EQ(answer(true, 1000), (Texts{"23.54", "macappstore://store.example/app/id42"}));
    EXPECT_EQ(answer(true, 1001), Texts{"23.53"});
    EXPECT_EQ(answer(true, 1002), (Texts{"23.52", "https://h/Tolvix.dmg"}));
    EXPECT_EQ(answer(true, 0), Texts{""});
}

TEST_F(AlertsTest, TheStoreWarningEndsTheInstallation) {
    launchToInstall();
    app->showMacAppStoreWarning();
    EXPECT_EQ(newSteps(), "23.51");
    EXPECT_EQ(window.changes.back(), "stop");
    EXPECT_TRUE(stage.expired());
    expectAlert(system.alerts.shown(), AlertStyle::Warning, store,
                {store + "_OPEN", store + "_QUIT", store + "_MANUAL_DONWLOAD"}, 1, 1);
    FlowWorld early;
    early.launchToCheck();
    early.app->showMacAppStoreWarning();
    expectAlert(early.system.alerts.shown(), AlertStyle::Warning, store, {store + "_OPEN", store + "_QUIT"}, 1, 1);
}

TEST_F(AlertsTest, HelpOpensTheSupportPageAndLogsNothing) {
    launchToCheck();
    app->showHelp();
    EXPECT_EQ(system.workspace.opened, Texts{"https://support.example/?utm_source=tolvix_app&utm_medium=macosx"});
    EXPECT_EQ(newSteps(), "");
}

TEST_F(AlertsTest, AnAnswerThatNobodyAskedForChangesNothing) {
    launchToDownload();
    app->terminateAlertDidEnd(1001);
    EXPECT_EQ(system.application.replies, std::vector<bool>{true});
    EXPECT_FALSE(system.application.ended);
}

TEST_F(AlertsTest, ARunningCheckAndAnEndedDownloadAreNotBusy) {
    EXPECT_EQ(app->applicationShouldTerminate(), TerminateReply::Now);
    launchToCheck();
    EXPECT_EQ(app->applicationShouldTerminate(), TerminateReply::Now);
    check();
    end();
    EXPECT_EQ(app->applicationShouldTerminate(), TerminateReply::Now);
    EXPECT_EQ(system.alerts.count(), 0U);
}

TEST_F(AlertsTest, QuittingWhileBusyAsksFirstAndWaitsForNoEvents) {
    for (const auto& [installing, leave] : {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        SCOPED_TRACE(std::string(installing ? "install, " : "download, ") + (leave ? "quit" : "continue"));
        FlowWorld flow;
        installing ? flow.launchToInstall() : flow.launchToDownload();
        installing ? flow.app->installWillStart() : flow.app->downloadWillStartAtURL(file);
        flow.newSteps();
        flow.userQuits();
        expectAlert(flow.system.alerts.shown(), AlertStyle::Warning, busy, {busy + "_CONTINUE", busy + "_QUIT"}, 0, 1);
        flow.system.alerts.answer(leave ? 1001 : 1000);
        EXPECT_EQ(flow.system.application.replies, std::vector<bool>{leave});
        EXPECT_EQ(flow.system.application.ended, leave);
        EXPECT_EQ(flow.stage.expired(), leave);
        EXPECT_EQ(flow.journal, leave ? Texts{installing ? "abort install" : "abort download"} : Texts());
        EXPECT_EQ(flow.newSteps(), "");
    }
}

TEST_F(AlertsTest, TheQuestionEndsWithTheInstallationThatItIsAbout) {
    for (const bool launched : {true, false}) {
        FlowWorld flow;
        flow.launchToInstall();
        flow.userQuits();
        flow.userQuits();
        EXPECT_EQ(flow.system.alerts.count(), 1U) << "asked twice";
        flow.app->installWillStart();
        flow.end();
        launched ? flow.app->installDidEnd() : flow.app->launchDidFailWithError(flow.error);
        EXPECT_EQ(flow.system.alerts.count(), 0U);
        EXPECT_EQ(flow.system.application.replies, std::vector<bool>{false});
        EXPECT_TRUE(flow.quits());
    }
}

TEST_F(AlertsTest, TheQuestionStaysWhileTheNextStageRuns) {
    launchToDownload();
    userQuits();
    download();
    EXPECT_EQ(system.alerts.count(), 1U);
    system.alerts.answer(1001);
    EXPECT_TRUE(system.application.ended);
}

TEST_F(AlertsTest, AFailureTakesTheQuestionsPlace) {
    launchToDownload();
    userQuits();
    end();
    app->downloadDidFailWithError(error);
    EXPECT_EQ(system.application.replies, std::vector<bool>{false});
    EXPECT_EQ(system.alerts.shown().messageText, failed + "DOWNLOAD_TITLE");
    EXPECT_FALSE(system.alerts.leftTheScreen);
    // A second report of the same failure waits its turn, and the window stays until it was answered.
    app->downloadDidFailWithError(error);
    system.alerts.answer(1001);
    EXPECT_FALSE(system.alerts.leftTheScreen);
    system.alerts.answer(1001);
    EXPECT_TRUE(system.alerts.leftTheScreen);
    EXPECT_FALSE(system.application.ended) << "the event is on its way";
    EXPECT_TRUE(quits());
}
