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
    EXPECT_EQ(alert.style, style);
    EXPECT_EQ(alert.messageText, subject + "_TITLE");
    EXPECT_EQ(alert.informativeText, subject + "_DESCRIPTION");
    EXPECT_EQ(alert.buttons, buttons);
    EXPECT_EQ(alert.escapeButton, escapeButton);
    EXPECT_EQ(alert.quitButton, quitButton);
}

} // namespace

class AlertsTest : public testing::Test, public FlowWorld {};

TEST_F(AlertsTest, FailureAlertsOfferTheManualDownloadOnlyWhereItCanBe) {
    struct Row {
        const char* name;
        bool flags[3];
        bool checked;
        const char* subject;
        bool offers;
    };
    const Row rows[] = {{"check", {true, false, false}, false, "CHECK", false},
                        {"check with an address", {true, false, false}, true, "CHECK", false},
                        {"download", {false, true, false}, true, "DOWNLOAD", true},
                        {"download without an address", {false, true, false}, false, "DOWNLOAD", false},
                        {"install", {false, false, true}, true, "INSTALL", true},
                        {"no flag", {false, false, false}, false, "INSTALL", false},
                        {"all flags", {true, true, true}, true, "CHECK", false},
                        {"the later two", {false, true, true}, true, "DOWNLOAD", true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FlowWorld flow;
        if (row.checked)
            flow.launchToDownload();
        flow.app->showFailureOnCheck(row.flags[0], row.flags[1], row.flags[2]);
        const std::size_t last = row.offers ? 1 : 0;
        expectAlert(flow.system.alerts.shown(), AlertStyle::Critical, failed + row.subject,
                    row.offers ? Texts{manual, quit} : Texts{quit}, last, last);
    }
}

TEST_F(AlertsTest, EveryAnswerLogsItsCodeAndQuitsAfterIt) {
    using Show = void (*)(TXAppDelegate&);
    const Show failure = [](TXAppDelegate& flow) { flow.showFailureOnCheck(false, true, false); };
    const Show warning = [](TXAppDelegate& flow) { flow.showMacAppStoreWarning(); };
    struct Row {
        const char* name;
        Show show;
        bool checked;
        int code;
        std::string step;
        std::string opened;
    };
    const std::string direct = "https://h/Tolvix.dmg";
    const Row rows[] = {
        {"failure, manual download", failure, true, 1000, "23.42", direct},
        {"failure, quit", failure, true, 1001, "23.43", ""},
        {"failure without an address, quit", failure, false, 1000, "", ""},
        {"failure, closed by the system", failure, true, 0, "", ""},
        {"store, open", warning, true, 1000, "23.54", "macappstore://store.example/app/id42"},
        {"store, quit", warning, true, 1001, "23.53", ""},
        {"store, manual download", warning, true, 1002, "23.52", direct},
        {"store, closed by the system", warning, true, 0, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FlowWorld flow;
        row.checked ? flow.launchToDownload() : flow.launchToCheck();
        flow.app->stopDownload();
        row.show(*flow.app);
        flow.settle();
        flow.system.alerts.answer(row.code);
        EXPECT_EQ(flow.newSteps(), row.step);
        EXPECT_EQ(flow.system.workspace.opened, row.opened.empty() ? Texts() : Texts{row.opened});
        EXPECT_EQ(flow.system.application.requests, row.step.empty() ? 1 : 0) << "the quit waits for the event";
        EXPECT_TRUE(flow.quits());
    }
}

TEST_F(AlertsTest, TheStoreWarningEndsTheInstallation) {
    launchToInstall();
    window.changes.clear();
    app->showMacAppStoreWarning();
    EXPECT_EQ(newSteps(), "23.51");
    EXPECT_EQ(window.changes, Texts{"stop"});
    EXPECT_TRUE(stage.expired());
    expectAlert(system.alerts.shown(), AlertStyle::Warning, store,
                {store + "_OPEN", store + "_QUIT", store + "_MANUAL_DONWLOAD"}, 1, 1);
    FlowWorld early;
    early.launchToCheck();
    early.app->showMacAppStoreWarning();
    expectAlert(early.system.alerts.shown(), AlertStyle::Warning, store, {store + "_OPEN", store + "_QUIT"}, 1, 1);
}

TEST_F(AlertsTest, TextsAreLookedUpInTheTable) {
    system.bundles.table = {{failed + "CHECK_TITLE", "Titel"}, {quit, "Beenden"}};
    app->showFailureOnCheck(true, false, false);
    EXPECT_EQ(system.alerts.shown().messageText, "Titel");
    EXPECT_EQ(system.alerts.shown().buttons, Texts{"Beenden"});
}

TEST_F(AlertsTest, HelpOpensTheSupportPageAndLogsNothing) {
    launchToCheck();
    app->showHelp();
    EXPECT_EQ(system.workspace.opened, Texts{"https://support.example/?utm_source=tolvix_app&utm_medium=macosx"});
    EXPECT_EQ(newSteps(), "");
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

TEST_F(AlertsTest, QuittingWhileBusyAsksFirst) {
    for (const bool installing : {false, true}) {
        for (const bool leave : {false, true}) {
            SCOPED_TRACE(std::string(installing ? "install, " : "download, ") + (leave ? "quit" : "continue"));
            FlowWorld flow;
            installing ? flow.launchToInstall() : flow.launchToDownload();
            flow.userQuits();
            expectAlert(flow.system.alerts.shown(), AlertStyle::Warning, busy, {busy + "_CONTINUE", busy + "_QUIT"}, 0,
                        1);
            flow.system.alerts.answer(leave ? 1001 : 1000);
            EXPECT_EQ(flow.system.application.replies, std::vector<bool>{leave});
            EXPECT_EQ(flow.system.application.ended, leave);
            EXPECT_EQ(flow.stage.expired(), leave);
            EXPECT_EQ(flow.journal, leave ? Texts{installing ? "abort install" : "abort download"} : Texts());
            EXPECT_EQ(flow.newSteps(), "");
        }
    }
}

TEST_F(AlertsTest, LeavingDoesNotWaitForEvents) {
    launchToDownload();
    app->downloadWillStartAtURL(file);
    userQuits();
    system.alerts.answer(1001);
    EXPECT_TRUE(system.application.ended);
}

TEST_F(AlertsTest, AFlowThatEndsUnderTheOpenQuestionQuitsAfterTheAnswer) {
    for (const int answer : {1000, 1001}) {
        SCOPED_TRACE(answer);
        FlowWorld flow;
        flow.launchToInstall();
        flow.userQuits();
        flow.install();
        EXPECT_FALSE(flow.quits()) << "the question is still open";
        EXPECT_EQ(flow.system.alerts.count(), 1U);
        flow.system.alerts.answer(answer);
        EXPECT_TRUE(flow.quits());
        EXPECT_EQ(flow.system.alerts.count(), 0U) << "asked again although nothing was running";
    }
}

TEST_F(AlertsTest, AFailureUnderTheOpenQuestionIsShownAfterIt) {
    launchToDownload();
    userQuits();
    end();
    app->downloadDidFailWithError(error);
    system.alerts.answer(1000);
    EXPECT_FALSE(system.application.ended);
    EXPECT_EQ(system.alerts.shown().messageText, failed + "DOWNLOAD_TITLE");
    system.alerts.answer(1001);
    EXPECT_TRUE(quits());
}
