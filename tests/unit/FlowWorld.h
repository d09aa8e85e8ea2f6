#pragma once

#include "app/TXAppDelegate.h"
#include "tests/unit/CoreTest.h"
#include "ui/TXInstallWindowController.h"

#include "foundation/MessageText.h"

// A stage that only remembers what it was told; the test sends the delegate's messages itself.
class RecordingStage final : public TXCheckStage, public TXDownloadStage, public TXInstallStage {
public:
    RecordingStage(std::string kind, Texts& journal) : kind_(std::move(kind)), journal_(journal) {}

    void startCheckAtURL(const std::optional<foundation::URL>& url) override { start(foundation::textOf(url)); }
    void startDownloadArchiveAtURL(const foundation::URL& url) override { start(url.absoluteString()); }
    void startInstallArchiveAtURL(const foundation::URL& url) override { start(url.absoluteString()); }
    void abortChecking() override { journal_.push_back("abort " + kind_); }
    void abortDownloadArchive() override { journal_.push_back("abort " + kind_); }
    void abortInstallArchive() override { journal_.push_back("abort " + kind_); }
    bool checkInProgress() const override { return inProgress; }
    bool downloadInProgress() const override { return inProgress; }
    bool installInProgress() const override { return inProgress; }

    bool inProgress = true;

private:
    void start(const std::string& url) { journal_.push_back(kind_ + " " + url); }

    std::string kind_;
    Texts& journal_;
};

// The application delegate with the real log controller and the real window controller, and recording stages.
class FlowWorld : public CoreWorld {
public:
    FlowWorld() {
        windowController->setTextIndicator(&window);
        windowController->setProgressIndicator(&window);
        use({[this](auto) { return make("check"); }, [this](auto) { return make("download"); },
             [this](auto) { return make("install"); }});
    }

    ~FlowWorld() {
        app->stopCheck();
        app->stopDownload();
        app->stopInstall();
    }

    void use(TXStageFactory factory) {
        app = std::make_shared<TXAppDelegate>(std::move(factory));
        app->setWindowController(windowController);
        system.application.delegate = app.get();
    }

    void launch(const Texts& options = {}) {
        system.processInfo.commandLine.insert(system.processInfo.commandLine.end(), options.begin(), options.end());
        app->applicationDidFinishLaunching();
    }

    // What a stage reports when it comes to its end; its own flag is down by then.
    void check() {
        app->checkWillStart();
        end();
        app->checkDidEndWithURL(archive, "5.1.0");
    }
    void download() {
        app->downloadWillStartAtURL(file);
        app->downloadProgress(50.0);
        end();
        app->downloadDidEndAtURL(file);
    }
    void install() {
        app->installWillStart();
        end();
        app->installDidEnd();
    }
    void end() {
        if (const auto running = stage.lock())
            running->inProgress = false;
    }

    // To the point where the stage runs and every event so far has ended.
    void launchToCheck() { launch(), settle(); }
    void launchToDownload() { launchToCheck(), check(), settle(); }
    void launchToInstall() { launchToDownload(), download(), settle(); }
    void settle() {
        system.transfers.finishPosts();
        newSteps();
        journal.clear();
    }

    // Lets every event end; whether the program has ended then.
    bool quits() {
        system.transfers.finishPosts();
        system.threads.runAll();
        return system.application.ended;
    }

    void userQuits() {
        system.application.terminate();
        system.threads.runAll();
    }

    const foundation::URL archive = *foundation::URL::withString("https://h/Tolvix.dmg");
    const foundation::URL file = *foundation::URL::withString("/tmp/me/1.tolvix/Tolvix.dmg");
    const foundation::Error error{"D", 7, {}};
    FakeProgressWindow window;
    std::shared_ptr<TXInstallWindowController> windowController = std::make_shared<TXInstallWindowController>(window);
    std::shared_ptr<TXAppDelegate> app;
    std::weak_ptr<RecordingStage> stage; // the last one made, while the flow holds it
    Texts journal;                       // what the stages were told

private:
    std::shared_ptr<RecordingStage> make(const std::string& kind) {
        EXPECT_TRUE(stage.expired()) << "two stages at a time";
        auto made = std::make_shared<RecordingStage>(kind, journal);
        stage = made;
        return made;
    }
};
