#pragma once

#include "flow/TXFlowInterfaces.h"
#include "platform/Application.h"
#include "platform/UserInterface.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class TXInstallWindowController;

// The application delegate and the spine of the installer: check, download, install, quit. Every stage callback posts
// one step code, updates the window, and starts the next stage, shows an alert, or quits. It owns a stage controller
// only while that stage runs. Main thread.
class TXAppDelegate final : public platform::ApplicationDelegate,
                            public TXCheckControllerDelegate,
                            public TXDownloadControllerDelegate,
                            public TXInstallControllerDelegate,
                            public TXInstallerLogControllerDelegate,
                            public std::enable_shared_from_this<TXAppDelegate> {
public:
    explicit TXAppDelegate(TXStageFactory withStages);

    // The progress window; set before launch completes.
    void setWindowController(std::shared_ptr<TXInstallWindowController> controller);

    // The archive's URL that the check found; absent before.
    const std::optional<foundation::URL>& directURL() const { return _directURL; }

    void applicationDidFinishLaunching() override;
    platform::TerminateReply applicationShouldTerminate() override;
    bool applicationShouldTerminateAfterLastWindowClosed() override;

    // The command line's options. Outputs are written only where the arguments say something.
    static void parseArguments(const std::vector<std::string>& arguments, std::optional<std::string>& partnerName,
                               std::optional<std::string>& partnerID, std::optional<std::string>& campaignID,
                               bool& autoStart, bool& help);
    static void showHelpSectionForDeveloper();
    // Checks the parser against eight command lines; throws std::logic_error naming the first output that differs.
    static void testParseArguments();

    // The address at which the binaries service is asked for the newest disk image. Reading it can store the partner.
    static std::string feedURL();

    void startCheckAtURL(const std::optional<foundation::URL>& url);
    void stopCheck();
    void startDownloadAtURL(const foundation::URL& url);
    void stopDownload();
    void startInstallAtURL(const foundation::URL& url);
    void stopInstall();

    void showFailureOnCheck(bool onCheck, bool onDownload, bool onInstall);
    void showMacAppStoreWarning();
    void showHelp() override;
    void terminateAlertDidEnd(int returnCode);
    void errorAlertDidEnd(int returnCode);
    void macAppStoreAlertDidEnd(int returnCode);

    void checkWillStart() override;
    void checkDidEndWithURL(const foundation::URL& url, const std::string& withVersion) override;
    void checkDidFailWithError(const std::optional<foundation::Error>& error) override;

    void downloadWillStartAtURL(const std::optional<foundation::URL>& url) override;
    void downloadProgress(double progress) override;
    void downloadDidEndAtURL(const foundation::URL& url) override;
    void downloadDidFailWithError(const std::optional<foundation::Error>& error) override;

    void installWillStart() override;
    void installProgress(double progress) override;
    void installDidEnd() override;
    void installDidFailWithError(const std::optional<foundation::Error>& error) override;
    void launchDidFailWithError(const foundation::Error& error) override;

    void installerLogRequestWillStart() override;
    void installerLogRequestDidFinish() override;

private:
    static void printSummary(bool autoStart);
    // False when another installer of this user is at work on the applications folder.
    bool isOnlyInstaller();
    platform::SheetNumber beginSheet(const platform::Alert& alert, void (TXAppDelegate::*ended)(int returnCode));
    // Nothing runs any more that the question whether to quit could be about: it ends as if the person had chosen to go
    // on, and what the flow wants to do next does not wait for it.
    void endQuitQuestion();
    // Quits once no event is in flight.
    void terminateWhenLogged();

    std::int64_t _pendingRequests = 0;
    bool _terminateRequested = false;
    std::shared_ptr<TXInstallWindowController> windowController;
    std::shared_ptr<TXCheckStage> checkController;
    std::shared_ptr<TXDownloadStage> downloadController;
    std::shared_ptr<TXInstallStage> installController;
    std::optional<foundation::URL> _directURL;
    std::optional<platform::SheetNumber> _quitQuestion; // the last one; it may have been answered
    TXStageFactory stages;
};
