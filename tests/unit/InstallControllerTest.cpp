#include "install/TXInstallController.h"

#include "install/TXDiskImageUnarchiver.h"
#include "tests/unit/CoreTest.h"

// Unarchive, copy, launch: the order of the steps, every way to end, and what is left on disk.

namespace {

const std::string folder = "/tmp/me/1.tolvix";
const std::string archive = folder + "/Tolvix.dmg";
const std::string source = folder + "/UNIQUE/Tolvix.app";
const std::string product = "/Applications/Tolvix.app";
const std::string installerError = "TXTolvixInstallerErrorDomain ";

struct RecordingInstallDelegate : TXInstallControllerDelegate {
    explicit RecordingInstallDelegate(FakePlatform& fake) : system(fake) {}
    void add(const std::string& message) {
        messages.push_back(message);
        EXPECT_FALSE(system.threads.inBackground());
        EXPECT_EQ(system.files.has(folder), message == "start") << "the folder goes before the last message";
    }
    void installWillStart() override { add("start"); }
    void installProgress(double /*progress*/) override { add("progress"); }
    void installDidEnd() override { add("end"); }
    void installDidFailWithError(const std::optional<foundation::Error>& error) override {
        add(error ? "fail " + text(*error) : "fail");
    }
    void launchDidFailWithError(const foundation::Error& error) override { add("launch failed " + text(error)); }
    static std::string text(const foundation::Error& error) {
        return error.domain + " " + std::to_string(error.code) + " " +
               error.userInfo.at(foundation::localizedDescriptionKey).description();
    }
    FakePlatform& system;
    Texts messages;
};

} // namespace

class InstallControllerTest : public CoreTest {
protected:
    InstallControllerTest() {
        system.files.addFile(product + "/old");
        system.tasks.tools["/usr/bin/hdiutil"].effect = [this](const auto& task) {
            for (const std::string& name : volume)
                system.files.addFile(task.arguments.at(3) + "/" + name);
        };
    }

    void start(const std::string& path = archive) {
        system.files.addFile(path);
        system.files.removeTree("/tmp/me/UNIQUE");
        controller->startInstallArchiveAtURL(*foundation::URL::withString(path));
    }
    Texts messages() {
        system.threads.runAll();
        return std::exchange(delegate->messages, {});
    }
    Texts install() {
        start();
        return messages();
    }
    bool holds(const std::string& name) { return system.files.has(product + "/" + name); }

    Texts volume{"Tolvix.app/new", "Read me.txt"};
    std::shared_ptr<RecordingInstallDelegate> delegate = std::make_shared<RecordingInstallDelegate>(system);
    std::shared_ptr<TXInstallController> controller = std::make_shared<TXInstallController>(delegate);
    const Texts ended{"start", "end"};
    const Texts copyRefused{"start", "fail TXPluginsInstallerErrorDomain 4001 Authenticated file copy from " + source +
                                         " to " + product + " failed."};
};

TEST_F(InstallControllerTest, ReplacesTheProductAndRemovesThePrivateFolderAlone) {
    EXPECT_EQ(install(), ended);
    EXPECT_FALSE(controller->installInProgress());
    EXPECT_TRUE(holds("new"));
    EXPECT_FALSE(holds("old")) << "old and new were mixed";
    EXPECT_EQ(Texts(system.files.changes.end() - 3, system.files.changes.end()),
              (Texts{"remove " + product, "copy " + source + " " + product, "removePrivateFolder " + folder}));
    EXPECT_TRUE(system.files.has("/tmp/me"));
    EXPECT_EQ(system.authorization.requests, 0);
}

TEST_F(InstallControllerTest, RunningCopiesAreClosedBeforeTheOldProductGoes) {
    system.workspace.running = {{7, 1}, {9, 2}};
    system.workspace.refusals = 2;
    system.workspace.observer = [this](const std::string& request) { EXPECT_TRUE(holds("old")) << request; };
    EXPECT_EQ(install(), ended);
    EXPECT_EQ(system.workspace.requests, (Texts{"terminate 7", "terminate 7", "terminate 7", "terminate 9"}));
}

TEST_F(InstallControllerTest, OtherProgramsAreNotClosed) {
    system.workspace.running = {{7, 1}};
    system.workspace.runningIdentifier = "example.other";
    EXPECT_EQ(install(), ended);
    EXPECT_TRUE(system.workspace.requests.empty());
}

TEST_F(InstallControllerTest, MissingContentsAreReported) {
    volume = {"Read me.txt"};
    system.workspace.running = {{7, 1}};
    EXPECT_EQ(install(), (Texts{"start", "fail " + installerError + "4002 Couldn't find file at path: " + source}));
    EXPECT_TRUE(holds("old")) << "the old product goes only for a new one";
    EXPECT_EQ(system.workspace.requests, Texts{"terminate 7"}) << "running copies are closed all the same";

    start();
    system.threads.runBackground();
    system.files.removeTree(folder + "/UNIQUE");
    EXPECT_EQ(messages().back(),
              "fail " + installerError + "4001 Couldn't extract file at path: " + folder + "/UNIQUE");
}

TEST_F(InstallControllerTest, ContentsThatWereNeverReportedAreMissing) {
    start(folder + "/Tolvix.zip");
    TXDiskImageUnarchiver unarchiver(archive);
    controller->unarchiverDidFinish(unarchiver);
    EXPECT_EQ(messages().back(), "fail " + installerError + "4001 Couldn't extract file at path: (null)");
}

TEST_F(InstallControllerTest, AnUnarchiveFailureCarriesNoErrorAndRepeats) {
    volume = {"a", "b"};
    for (const std::string& name : volume)
        system.files.failAt(FakeFiles::Operation::Copy, "/tmp/me/UNIQUE/" + name);
    EXPECT_EQ(install(), (Texts{"start", "fail", "fail"}));
    EXPECT_FALSE(controller->installInProgress());
    EXPECT_TRUE(holds("old"));
}

TEST_F(InstallControllerTest, AFailedPlainCopyIsDoneAgainWithAuthentication) {
    system.files.failAt(FakeFiles::Operation::Copy, source);
    EXPECT_EQ(install(), ended);
    EXPECT_TRUE(holds("new"));
    const Texts& commands = system.authorization.commands;
    ASSERT_EQ(commands.size(), 3U);
    EXPECT_EQ(commands[0], "/bin/rm -rf " + product);
    EXPECT_EQ(commands[1], "/bin/mv -f " + source + " " + product);
}

// Deliberate in the program: the old product goes first.
TEST_F(InstallControllerTest, ACopyThatFailsInTheEndLeavesNoProduct) {
    system.files.failAt(FakeFiles::Operation::Copy, source);
    system.authorization.waitResults[1] = 1 << 8;
    EXPECT_EQ(install(), copyRefused);
    EXPECT_FALSE(system.files.has(product)) << "not even the half of one";
}

TEST_F(InstallControllerTest, AProductThatNobodyCanRemoveStaysWhole) {
    system.files.failAt(FakeFiles::Operation::Remove, product);
    system.authorization.waitResults[1] = 1 << 8;
    EXPECT_EQ(install(), copyRefused);
    EXPECT_TRUE(holds("old"));
}

TEST_F(InstallControllerTest, TheLaunchDecidesTheEnd) {
    const std::string launch = "launch " + product;
    const std::string reveal = "reveal " + product + " in ''";
    const std::string failure =
        "launch failed " + installerError + "4002 Couldn't open application at path: " + product;
    struct Row {
        const char* name;
        bool autoStart;
        bool launches;
        bool reveals;
        Texts requests;
        std::string end;
    };
    const Row rows[] = {{"auto start off", false, false, false, {}, "end"},
                        {"launched", true, true, false, {launch}, "end"},
                        {"shown instead", true, false, true, {launch, reveal}, "end"},
                        {"neither", true, false, false, {launch, reveal}, failure}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TXInstallerConfig::setAutoStart(row.autoStart);
        system.workspace.launchSucceeds = row.launches;
        system.workspace.revealSucceeds = row.reveals;
        EXPECT_EQ(install(), (Texts{"start", row.end}));
        EXPECT_EQ(std::exchange(system.workspace.requests, {}), row.requests);
        EXPECT_EQ(std::exchange(system.console.messages, {}), row.autoStart ? Texts{"Launching Tolvix..."} : Texts());
        EXPECT_TRUE(holds("new"));
        EXPECT_FALSE(controller->installInProgress());
    }
}

// Deliberate in the program: an archive that no unarchiver takes leaves the installation in progress.
TEST_F(InstallControllerTest, AnotherKindOfArchiveHangsInProgress) {
    start(folder + "/Tolvix.zip");
    EXPECT_EQ(messages(), Texts{"start"});
    EXPECT_TRUE(controller->installInProgress());
    EXPECT_TRUE(system.files.changes.empty());
}

TEST_F(InstallControllerTest, ASecondStartWhileInstallingIsIgnored) {
    start();
    start("/tmp/me/2.tolvix/Tolvix.dmg");
    EXPECT_EQ(messages(), ended);
    EXPECT_EQ(system.tasks.launches.size(), 1U);
    EXPECT_EQ(system.files.changes.back(), "removePrivateFolder " + folder);
}

// Deliberate in the program: steps already running go on to their end.
TEST_F(InstallControllerTest, AnAbortedAndDroppedInstallationStillReports) {
    TXInstallerConfig::setAutoStart(true);
    start();
    system.threads.runBackground();
    controller->abortInstallArchive();
    EXPECT_TRUE(controller->installInProgress());
    controller.reset();
    EXPECT_EQ(messages(), ended);
    EXPECT_TRUE(holds("new"));
    EXPECT_EQ(system.workspace.requests, Texts{"launch " + product});
}
