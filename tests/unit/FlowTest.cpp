#include "check/TXCheckController.h"
#include "download/TXDownloadController.h"
#include "install/TXInstallController.h"
#include "telemetry/TXInstallerLogController.h"
#include "tests/unit/FlowWorld.h"

// The launch, the order of step codes for every outcome, the deferred quit, and the whole run on the real stages.

namespace {

const std::string feedBeginning = "https://binaries.example/5/binaries/query?platform=launcher_macosx&target=archive"
                                  "&format=json&currentSoftwareVersion=2001&os=OS_X_10_9_0&partner=";

} // namespace

class FlowTest : public testing::Test, public FlowWorld {
protected:
    // Launches with the real stages in place of the recording ones, up to the running download.
    void launchRealStages() {
        use({[](auto delegate) { return std::make_shared<TXCheckController>(std::move(delegate)); },
             [](auto delegate) { return std::make_shared<TXDownloadController>(std::move(delegate)); },
             [](auto delegate) { return std::make_shared<TXInstallController>(std::move(delegate)); }});
        system.transfers.answers[feedBeginning] =
            R"({"code":200,"content":{"download_url":"https://h/Tolvix.dmg","version":"5.1.0"}})";
        system.tasks.tools["/usr/bin/hdiutil"].effect = [this](const auto& task) {
            for (const char* name : {"/Tolvix.app/new", "/a"})
                system.files.addFile(task.arguments.at(3) + name);
        };
        launch();
        system.threads.runAll();
    }
};

TEST_F(FlowTest, LaunchSaysWhatItWillDoAndAsksForTheImage) {
    launch({"--partnerName", "acme", "--campaignID", "spring"});
    EXPECT_EQ(system.console.messages, Texts{"Tolvix Installation:\n"
                                             "- PartnerName: acme\n"
                                             "- PartnerID: (null)\n"
                                             "- CampaignID: spring\n"
                                             "- Silent: 0\n"
                                             "- Auto start: 1\n"
                                             "- Installer version: 2.0.1"});
    EXPECT_EQ(newSteps(), "23.01");
    EXPECT_EQ(fields(0)["content"],
              R"({"autoStart":"1","campaignId":"spring","partnerName":"acme","silentInstall":"0"})");
    EXPECT_EQ(journal, Texts{"check " + feedBeginning + "acme"});
    EXPECT_TRUE(TXInstallerConfig::autoStart());
    EXPECT_TRUE(app->applicationShouldTerminateAfterLastWindowClosed());

    FlowWorld quiet;
    quiet.system.bundles.information.insert_or_assign("TXBinariesHost", foundation::Value("no host"));
    quiet.launch({"--auto-start", "NO"});
    EXPECT_EQ(quiet.fields(0)["content"], R"({"autoStart":"0","silentInstall":"0"})");
    EXPECT_FALSE(TXInstallerConfig::autoStart());
    EXPECT_EQ(quiet.journal, Texts{"check (null)"}) << "a host that makes no address still starts the check";
}

TEST_F(FlowTest, ArgumentsBeyondUtf8AreTheSameEverywhere) {
    launch({"--partnerName", "caf\xE9", "--campaignID", "\xFF"});
    const std::string name = "caf\xEF\xBF\xBD";
    EXPECT_EQ(fields(0)["content"].find("{}"), std::string::npos) << "an event without its content";
    EXPECT_NE(fields(0)["content"].find("\"partnerName\":\"" + name), std::string::npos);
    EXPECT_EQ(TXInstallerConfig::partnerName(), name);
    EXPECT_EQ(system.preferences.stored["example.tolvix.agent"].at("TXPartnerName"), foundation::Value(name));
    EXPECT_EQ(journal, Texts{"check " + feedBeginning + "(null)"});
    EXPECT_EQ(system.console.messages.size(), 1U);
}

TEST_F(FlowTest, HelpPrintsAndQuitsAndStartsNothing) {
    const auto before = TXInstallerLogController::sharedTXInstallerLogController();
    launch({"--help", "--partnerName", "acme %@", "--partnerID", "7", "--auto-start", "NO"});
    EXPECT_EQ(TXInstallerLogController::sharedTXInstallerLogController(), before);
    EXPECT_EQ(system.console.messages,
              Texts{"Usage:\n"
                    "--auto-start [YES/NO]: Automatically start Tolvix after installation\n"
                    "--partnerName [string]: Overwrite the partner name for this installation\n"
                    "--partnerID [string]: Specify the partner ID for this installation\n"
                    "--campaignID [string]: Specify the campaign ID for this installation\n"
                    "\n"
                    "Options:\n"
                    "- PartnerName: acme %@\n"
                    "- PartnerID: 7\n"
                    "- CampaignID: (null)\n"
                    "- Auto start: 0\n"
                    "- Tolvix version: 2001\n"
                    "- Installer version: 2.0.1\n"});
    EXPECT_TRUE(newSteps().empty());
    EXPECT_TRUE(journal.empty());
    system.threads.runAll();
    EXPECT_TRUE(system.application.ended);
}

TEST_F(FlowTest, ASecondInstallerShowsTheFirstAndEnds) {
    launch();
    EXPECT_EQ(system.singleInstance.claimed, Texts{"/Applications"});
    window.changes.clear();
    system.singleInstance.another();
    EXPECT_EQ(window.changes, Texts{"front"});

    FlowWorld second;
    second.system.singleInstance.isFree = false;
    second.launch({"--partnerName", "acme"});
    EXPECT_EQ(second.system.console.messages, Texts{"The installer is already running."});
    EXPECT_EQ(second.newSteps(), "");
    EXPECT_TRUE(second.journal.empty());
    EXPECT_TRUE(second.system.preferences.stored.empty());
    second.system.threads.runAll();
    EXPECT_TRUE(second.system.application.ended);

    FlowWorld help;
    help.system.singleInstance.isFree = false;
    help.launch({"--help"});
    EXPECT_EQ(help.system.console.messages.at(0).rfind("Usage:", 0), 0U);
    EXPECT_TRUE(help.system.singleInstance.claimed.empty());
}

TEST_F(FlowTest, EveryOutcomePostsItsCodesInOrder) {
    // The codes, the line on the console, and the alert, after so many stages that went well.
    const auto outcome = [](int stagesDone, void (*ending)(FlowWorld & flow)) {
        FlowWorld flow;
        flow.launch();
        flow.system.console.messages = {""};
        void (FlowWorld::*const stages[])() = {&FlowWorld::check, &FlowWorld::download, &FlowWorld::install};
        for (int done = 0; done < stagesDone; ++done)
            (flow.*stages[done])();
        flow.end();
        ending(flow);
        EXPECT_TRUE(flow.stage.expired()) << "the flow still holds a stage";
        std::string result = flow.newSteps() + " " + flow.system.console.messages.back();
        if (!flow.quits()) {
            result += " " + flow.system.alerts.shown().messageText;
            flow.system.alerts.answer(1000);
        }
        EXPECT_TRUE(flow.quits());
        return result;
    };
    const std::string known = " did fail with error: Error Domain=D Code=7 \"(null)\"";
    const std::string unknown = " did fail with error: (null)";
    EXPECT_EQ(outcome(
                  3, [](FlowWorld&) {}),
              "23.01 23.11 23.12 23.21 23.22 23.31 23.32 ");
    EXPECT_EQ(outcome(
                  0, [](FlowWorld& flow) { flow.app->checkWillStart(), flow.app->checkDidFailWithError(flow.error); }),
              "23.01 23.11 23.13 Check" + known + " MAC_LAUNCHER_FAILED_CHECK_TITLE");
    EXPECT_EQ(outcome(
                  1, [](FlowWorld& flow) { flow.app->downloadDidFailWithError({}); }),
              "23.01 23.11 23.12 23.23 Download" + unknown + " MAC_LAUNCHER_FAILED_DOWNLOAD_TITLE");
    EXPECT_EQ(outcome(
                  2, [](FlowWorld& flow) { flow.app->installDidFailWithError({}); }),
              "23.01 23.11 23.12 23.21 23.22 23.33 Install" + unknown + " MAC_LAUNCHER_FAILED_INSTALL_TITLE");
    EXPECT_EQ(outcome(2, [](FlowWorld& flow) { flow.app->launchDidFailWithError(flow.error); }),
              "23.01 23.11 23.12 23.21 23.22 23.34 Launch" + known);
}

TEST_F(FlowTest, StagesAndWindowFollowOneAnother) {
    system.bundles.table["MAC_LAUNCHER_INSTALLING"] = "Wird installiert";
    windowController->awakeFromNib();
    windowController->windowDidLoad();
    launchToCheck();
    check();
    download();
    EXPECT_EQ(app->directURL(), archive);
    install();
    EXPECT_EQ(journal, (Texts{"download https://h/Tolvix.dmg", "install /tmp/me/1.tolvix/Tolvix.dmg"}));
    EXPECT_EQ(window.changes, (Texts{"title MAC_LAUNCHER_WINDOW_TITLE", "indeterminate", "minimum 0.000000",
                                     "maximum 100.000000", "start", "text MAC_LAUNCHER_DOWNLOADING", "determinate",
                                     "value 0.000000", "text MAC_LAUNCHER_DOWNLOADING", "value 50.000000",
                                     "indeterminate", "indeterminate", "start", "text Wird installiert", "stop"}));
}

TEST_F(FlowTest, VersionsGetTheirSuffixOnce) {
    launch();
    for (const auto& [found, sent] :
         {std::pair("5.1.0", "5.1.0-dmg"), {"5.1.0-dmg", "5.1.0-dmg"}, {"dmg", "dmg-dmg"}}) {
        app->checkDidEndWithURL(archive, found);
        EXPECT_EQ(fields(system.transfers.posts.size() - 1)["version"], sent);
        app->stopDownload();
    }
}

// Deliberate in the program: the store edition is reported and the installation goes on.
TEST_F(FlowTest, TheStoreEditionIsReportedAndTheDownloadStarts) {
    system.files.addFolder("/Users/me/Library/Containers/example.tolvix.desktop");
    launch();
    check();
    EXPECT_EQ(newSteps(), "23.01 23.11 23.12 23.51");
    EXPECT_EQ(journal.back(), "download https://h/Tolvix.dmg");
    EXPECT_EQ(system.alerts.count(), 0U);
}

TEST_F(FlowTest, QuittingWaitsForTheLastEventWhicheverThatIs) {
    for (const std::vector<std::size_t>& order : {std::vector<std::size_t>{0, 1, 2}, {2, 1, 0}, {1, 2, 0}}) {
        FlowWorld flow;
        flow.launch();
        flow.app->installWillStart();
        flow.app->installDidEnd();
        ASSERT_EQ(flow.system.transfers.posts.size(), 3U);
        for (const std::size_t post : order) {
            EXPECT_EQ(flow.system.application.requests, 0);
            flow.system.transfers.failPost(post, error);
        }
        EXPECT_EQ(flow.system.application.requests, 1);
    }
}

TEST_F(FlowTest, AnEventThatCannotBeSentHoldsTheQuit) {
    system.transfers.refusesPosts = true;
    launch();
    system.transfers.refusesPosts = false;
    app->installDidEnd();
    EXPECT_FALSE(quits());
}

TEST_F(FlowTest, TheRealStagesInstallFromEndToEnd) {
    launchRealStages();
    ASSERT_EQ(system.transfers.downloads.size(), 1U);
    system.transfers.downloads[0]->finish();
    // A request to quit while the product is being started.
    system.workspace.observer = [this](const std::string& /*request*/) { system.application.terminate(); };
    system.threads.runAll();
    EXPECT_EQ(newSteps(), "23.01 23.11 23.12 23.21 23.22 23.31 23.32");
    EXPECT_FALSE(system.application.ended);
    EXPECT_TRUE(system.application.replies.empty()) << "nothing is left to ask then";
    EXPECT_TRUE(quits());
    EXPECT_TRUE(system.files.has("/Applications/Tolvix.app/new"));
    EXPECT_EQ(system.workspace.requests, Texts{"launch /Applications/Tolvix.app"});
    EXPECT_EQ(system.files.contentsOfDirectory("/tmp/me"), Texts{"UNIQUE"}) << "only the mount point is left";
}

TEST_F(FlowTest, ResultsThatComeLateFindTheFlowWithoutItsController) {
    launchRealStages();
    newSteps();
    for (const char* name : {"Tolvix.app", "a"})
        system.files.failAt(FakeFiles::Operation::Copy, std::string("/tmp/me/UNIQUE/") + name);
    system.transfers.downloads[0]->finish();
    system.threads.runAll();
    EXPECT_EQ(newSteps(), "23.22 23.31 23.33 23.33");
    EXPECT_EQ(system.console.messages.back(), "Install did fail with error: (null)");
    EXPECT_EQ(system.alerts.count(), 2U);
}

TEST_F(FlowTest, ADownloadThatCannotBeMadeEndsInsideItsStart) {
    system.transfers.refusesDownloads = true;
    launchRealStages();
    EXPECT_EQ(newSteps(), "23.01 23.11 23.12 23.23");
    EXPECT_EQ(system.alerts.shown().messageText, "MAC_LAUNCHER_FAILED_DOWNLOAD_TITLE");
    EXPECT_EQ(app->applicationShouldTerminate(), platform::TerminateReply::Now);
}
