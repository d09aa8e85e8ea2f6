#include "install/TXInstallController.h"

#include "install/TXDiskImageUnarchiver.h"
#include "tests/unit/RecordingDelegate.h"

// Unarchive, copy, launch: the order of the steps, every way to end, and what is left on disk.

namespace {

const std::string folder = "/tmp/me/1.tolvix";
const std::string archive = folder + "/Tolvix.dmg";
const std::string source = folder + "/UNIQUE/Tolvix.app";
const std::string product = "/Applications/Tolvix.app";
const std::string installerError = "TXTolvixInstallerErrorDomain ";

} // namespace

class InstallControllerTest : public CoreTest {
protected:
    InstallControllerTest() {
        system.files.addFile(product + "/old");
        system.tasks.tools["/usr/bin/hdiutil"].effect = [this](const auto& task) {
            for (const std::string& name : volume)
                system.files.addFile(task.arguments.at(3) + "/" + name);
        };
        delegate->observer = [this](const std::string& message) {
            const bool starting = message == "start";
            EXPECT_EQ(system.files.has(folder), starting) << "the folder goes before the last message";
            EXPECT_EQ(controller && controller->installInProgress(), starting && controller) << "busy after the end";
            EXPECT_TRUE(starting || system.threads.backgroundCount() == 0) << "an end starts no thread";
        };
    }

    void start(const std::string& path = archive) {
        system.files.addFile(path);
        system.files.removeTree("/tmp/me/UNIQUE");
        system.processInfo.uniqueTexts = 0;
        controller->startInstallArchiveAtURL(*foundation::URL::withString(path));
    }
    Texts messages() {
        system.threads.runAll();
        return delegate->taken();
    }
    Texts install() {
        start();
        return messages();
    }
    bool holds(const std::string& name) { return system.files.has(product + "/" + name); }

    Texts volume{"Tolvix.app/new", "Read me.txt"};
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(system.threads);
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

TEST_F(InstallControllerTest, RunningCopiesAloneAreClosedBeforeTheOldProductGoes) {
    system.workspace.running = {{7, 1}, {9, 2}};
    system.workspace.refusals = 2;
    system.workspace.observer = [this](const std::string& request) {
        EXPECT_TRUE(holds("old")) << request;
        EXPECT_FALSE(system.application.isDelayed()) << "a product that refuses to quit holds the installer";
    };
    EXPECT_EQ(install(), ended);
    const Texts requests{"terminate 7", "terminate 7", "terminate 7", "terminate 9"};
    EXPECT_EQ(system.workspace.requests, requests);
    system.workspace.running = {{7, 1}};
    system.workspace.runningIdentifier = "example.other";
    EXPECT_EQ(install(), ended);
    EXPECT_EQ(system.workspace.requests, requests);
}

TEST_F(InstallControllerTest, MissingContentsAreReported) {
    volume = {"Read me.txt"};
    EXPECT_EQ(install(), (Texts{"start", "fail " + installerError + "4002 Couldn't find file at path: " + source}));
    EXPECT_TRUE(holds("old")) << "the old product goes only for a new one";

    start();
    system.threads.runBackground();
    system.files.removeTree(folder + "/UNIQUE");
    EXPECT_EQ(messages().back(),
              "fail " + installerError + "4001 Couldn't extract file at path: " + folder + "/UNIQUE");
}

// Deliberate in the program: the old product goes first, and only the second copy's reason is reported.
TEST_F(InstallControllerTest, AFailedPlainCopyIsDoneAgainWithAuthenticationAndNothingMoreIsRemoved) {
    system.files.failAt(FakeFiles::Operation::Copy, source);
    system.authorization.observer = [this](const std::string& command) {
        EXPECT_TRUE(system.application.isDelayed()) << "a quit could come between the commands: " << command;
    };
    EXPECT_EQ(install(), ended);
    EXPECT_FALSE(system.application.isDelayed());
    EXPECT_TRUE(holds("new"));
    EXPECT_EQ(system.authorization.commands, (Texts{"/bin/rm -rf " + product, "/bin/mv -f " + source + " " + product,
                                                    "/usr/sbin/chown -R 501:20 " + product}));
    system.authorization.waitResults = {{4, 1 << 8}, {5, 1 << 8}};
    EXPECT_EQ(install(), copyRefused);
    EXPECT_FALSE(system.files.has(product));
    system.files.addFile(product + "/old");
    system.files.failAt(FakeFiles::Operation::Remove, product);
    EXPECT_EQ(install(), copyRefused);
    EXPECT_TRUE(holds("old")) << "nobody could remove it";
    system.authorization.waitResults = {{8, 1 << 8}};
    EXPECT_EQ(install(), copyRefused);
    EXPECT_TRUE(holds("new")) << "a product that only lacks its owner is a whole one";
}

// Deliberate in the program: a link is something, wherever it leads.
TEST_F(InstallControllerTest, ADanglingLinkInTheProductsPlaceGivesWay) {
    system.files.removeTree(product);
    system.files.addLink(product, "/nowhere");
    EXPECT_EQ(install(), ended);
    EXPECT_TRUE(holds("new"));
    EXPECT_EQ(system.authorization.requests, 0);
}

TEST_F(InstallControllerTest, WithoutAThreadTheStageFails) {
    const std::string reason = "NSPOSIXErrorDomain 11 No further thread could be started.";
    for (const auto& [threads, end] :
         {std::pair(0, std::string("fail")), {1, "fail " + reason}, {2, "launch failed " + reason}}) {
        system.threads.threadsLeft = threads;
        EXPECT_EQ(install(), (Texts{"start", end}));
        EXPECT_FALSE(controller->installInProgress());
    }
}

TEST_F(InstallControllerTest, ManyFailuresStartNoThreads) {
    for (int entry = 0; entry < 2000; ++entry) {
        volume.push_back(std::to_string(entry));
        system.files.failAt(FakeFiles::Operation::Copy, "/tmp/me/UNIQUE/" + volume.back());
    }
    const Texts all = install();
    EXPECT_EQ(all.size(), 2001U);
    EXPECT_EQ(all.back(), "fail");
}

TEST_F(InstallControllerTest, TheLaunchDecidesTheEnd) {
    const std::string launch = "launch " + product;
    const std::string reveal = "reveal " + product + " in ''";
    const auto end = [this](bool autoStart, bool launches, bool reveals) {
        TXInstallerConfig::setAutoStart(autoStart);
        system.workspace.launchSucceeds = launches;
        system.workspace.revealSucceeds = reveals;
        system.workspace.requests.clear();
        const std::string last = install().back();
        EXPECT_TRUE(holds("new"));
        EXPECT_FALSE(controller->installInProgress());
        return last;
    };
    EXPECT_EQ(end(false, false, false), "end");
    EXPECT_TRUE(system.workspace.requests.empty() && system.console.messages.empty());
    EXPECT_EQ(end(true, true, false), "end");
    EXPECT_EQ(system.workspace.requests, Texts{launch});
    EXPECT_EQ(system.console.messages, Texts{"Launching Tolvix..."});
    EXPECT_EQ(end(true, false, true), "end");
    EXPECT_EQ(system.workspace.requests, (Texts{launch, reveal}));
    EXPECT_EQ(end(true, false, false),
              "launch failed " + installerError + "4002 Couldn't open application at path: " + product);
}

// Deliberate in the program: an archive that no unarchiver takes leaves the installation in progress.
TEST_F(InstallControllerTest, AnotherKindOfArchiveHangsInProgress) {
    start(folder + "/Tolvix.zip");
    EXPECT_EQ(messages(), Texts{"start"});
    EXPECT_TRUE(controller->installInProgress());
    EXPECT_TRUE(system.files.changes.empty());
    TXDiskImageUnarchiver unarchiver(archive);
    controller->unarchiverDidFinish(unarchiver);
    EXPECT_EQ(messages(), Texts{"fail " + installerError + "4001 Couldn't extract file at path: (null)"});
}

// Deliberate in the program: steps already running go on to their end.
TEST_F(InstallControllerTest, NeitherASecondStartNorAnAbortChangesARunningInstallation) {
    TXInstallerConfig::setAutoStart(true);
    start();
    start("/tmp/me/2.tolvix/Tolvix.dmg");
    system.threads.runBackground();
    controller->abortInstallArchive();
    EXPECT_TRUE(controller->installInProgress());
    controller.reset();
    EXPECT_EQ(messages(), ended);
    EXPECT_TRUE(holds("new"));
    EXPECT_EQ(system.tasks.launches.size(), 1U);
    EXPECT_EQ(system.workspace.requests, Texts{"launch " + product});
    EXPECT_TRUE(system.files.has("/tmp/me/2.tolvix"));
}
