#include "app/TXAppDelegate.h"

#include "app/StepCode.h"
#include "foundation/MessageText.h"
#include "foundation/PathString.h"
#include "foundation/Unicode.h"
#include "platform/Platform.h"
#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerConfig.h"
#include "telemetry/TXInstallerLogController.h"
#include "telemetry/TXInstallerTools.h"
#include "ui/TXInstallWindowController.h"

#include <algorithm>

using foundation::format;
using foundation::textOf;

TXAppDelegate::TXAppDelegate(TXStageFactory withStages) : stages(std::move(withStages)) {}

void TXAppDelegate::setWindowController(std::shared_ptr<TXInstallWindowController> controller) {
    windowController = std::move(controller);
}

void TXAppDelegate::applicationDidFinishLaunching() {
    std::optional<std::string> partnerName;
    std::optional<std::string> partnerID;
    std::optional<std::string> campaignID;
    bool autoStart = true;
    bool help = false;
    // Made UTF-8 once and for all: the query, the events and the stored name then say the same.
    std::vector<std::string> arguments = platform::current().processInfo->arguments();
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), foundation::makingValidUtf8);
    parseArguments(arguments, partnerName, partnerID, campaignID, autoStart, help);
    TXInstallerConfig::setPartnerName(partnerName);
    TXInstallerConfig::setPartnerID(partnerID);
    TXInstallerConfig::setCampaignID(campaignID);
    TXInstallerConfig::setAutoStart(autoStart);
    if (help) {
        showHelpSectionForDeveloper();
        platform::current().application->terminate();
        return;
    }
    if (!isOnlyInstaller()) {
        platform::current().console->log("The installer is already running.");
        platform::current().application->terminate();
        return;
    }
    _pendingRequests = 0;
    _terminateRequested = false;
    const auto log = TXInstallerLogController::initSharedTXInstallerLogControllerWithDelegate(shared_from_this());
    printSummary(autoStart);
    log->installerLogToServerWithCode(
        StepCode::launched,
        TXInstallerLogController::Precisions{{"silentInstall", "0"}, {"autoStart", autoStart ? "1" : "0"}}, true);
    startCheckAtURL(foundation::URL::withString(feedURL()));
}

// Two at a time would remove and replace each other's products.
bool TXAppDelegate::isOnlyInstaller() {
    platform::SingleInstance* instances = platform::current().singleInstance;
    return instances == nullptr ||
           instances->claim(foundation::path::deletingLastPathComponent(Deployment::applicationPath()),
                            [weak = weak_from_this()] {
                                if (const auto self = weak.lock())
                                    self->windowController->window().orderFront();
                            });
}

void TXAppDelegate::printSummary(bool autoStart) {
    platform::current().console->log(
        format("Tolvix Installation:\n"
               "- PartnerName: %@\n"
               "- PartnerID: %@\n"
               "- CampaignID: %@\n"
               "- Silent: 0\n" // Deliberate: no option sets it
               "- Auto start: %@\n"
               "- Installer version: %@",
               {textOf(TXInstallerConfig::partnerName()), textOf(TXInstallerConfig::partnerID()),
                textOf(TXInstallerConfig::campaignID()), autoStart ? "1" : "0",
                textOf(TXInstallerConfig::shortVersionString())}));
}

bool TXAppDelegate::applicationShouldTerminateAfterLastWindowClosed() {
    return true;
}

void TXAppDelegate::startCheckAtURL(const std::optional<foundation::URL>& url) {
    checkController = stages.makeCheckController(shared_from_this());
    checkController->startCheckAtURL(url);
}

void TXAppDelegate::stopCheck() {
    if (checkController && checkController->checkInProgress())
        checkController->abortChecking();
    checkController.reset();
}

void TXAppDelegate::startDownloadAtURL(const foundation::URL& url) {
    const auto controller = stages.makeDownloadController(shared_from_this());
    downloadController = controller;
    // A download that cannot begin fails inside this call, and the failure drops it.
    controller->startDownloadArchiveAtURL(url);
}

void TXAppDelegate::stopDownload() {
    if (downloadController && downloadController->downloadInProgress())
        downloadController->abortDownloadArchive();
    downloadController.reset();
}

void TXAppDelegate::startInstallAtURL(const foundation::URL& url) {
    installController = stages.makeInstallController(shared_from_this());
    installController->startInstallArchiveAtURL(url);
}

void TXAppDelegate::stopInstall() {
    if (installController && installController->installInProgress())
        installController->abortInstallArchive();
    installController.reset();
}

void TXAppDelegate::checkWillStart() {
    logStep(StepCode::checkWillStart);
    windowController->checkWillStart();
}

void TXAppDelegate::checkDidEndWithURL(const foundation::URL& url, const std::string& withVersion) {
    const std::string suffix = "-dmg";
    const bool complete = withVersion.size() >= suffix.size() &&
                          withVersion.compare(withVersion.size() - suffix.size(), suffix.size(), suffix) == 0;
    if (const auto log = TXInstallerLogController::sharedTXInstallerLogController())
        log->setVersion(complete ? withVersion : withVersion + suffix);
    logStep(StepCode::checkDidEnd);
    windowController->checkDidEnd();
    stopCheck();
    _directURL = url;
    // Deliberate: the store edition is reported and the installation goes on.
    if (TXInstallerTools::isInstalledMASTolvixAgent())
        logStep(StepCode::storeEditionPresent);
    startDownloadAtURL(url);
}

void TXAppDelegate::checkDidFailWithError(const std::optional<foundation::Error>& error) {
    platform::current().console->log(format("Check did fail with error: %@", {textOf(error)}));
    logStep(StepCode::checkDidFail);
    windowController->checkDidEnd();
    stopCheck();
    showFailureOnCheck(true, false, false);
}

void TXAppDelegate::downloadWillStartAtURL(const std::optional<foundation::URL>& /*url*/) {
    logStep(StepCode::downloadWillStart);
    windowController->downloadWillStart();
}

void TXAppDelegate::downloadProgress(double progress) {
    windowController->downloadProgress(progress);
}

void TXAppDelegate::downloadDidEndAtURL(const foundation::URL& url) {
    logStep(StepCode::downloadDidEnd);
    windowController->downloadDidEnd();
    stopDownload();
    startInstallAtURL(url);
}

void TXAppDelegate::downloadDidFailWithError(const std::optional<foundation::Error>& error) {
    platform::current().console->log(format("Download did fail with error: %@", {textOf(error)}));
    logStep(StepCode::downloadDidFail);
    windowController->downloadDidEnd();
    stopDownload();
    showFailureOnCheck(false, true, false);
}

void TXAppDelegate::installWillStart() {
    logStep(StepCode::installWillStart);
    windowController->installWillStart();
}

void TXAppDelegate::installProgress(double progress) {
    windowController->installProgress(progress);
}

void TXAppDelegate::installDidEnd() {
    logStep(StepCode::installDidEnd);
    windowController->installDidEnd();
    stopInstall();
    terminateWhenLogged();
}

void TXAppDelegate::installDidFailWithError(const std::optional<foundation::Error>& error) {
    platform::current().console->log(format("Install did fail with error: %@", {textOf(error)}));
    logStep(StepCode::installDidFail);
    windowController->installDidEnd();
    stopInstall();
    showFailureOnCheck(false, false, true);
}

// Deliberate: the product is in place, so a failed launch is not shown to the person.
void TXAppDelegate::launchDidFailWithError(const foundation::Error& error) {
    platform::current().console->log(format("Launch did fail with error: %@", {error.description()}));
    logStep(StepCode::launchDidFail);
    windowController->installDidEnd();
    stopInstall();
    terminateWhenLogged();
}

void TXAppDelegate::installerLogRequestWillStart() {
    ++_pendingRequests;
}

void TXAppDelegate::installerLogRequestDidFinish() {
    --_pendingRequests;
    if (_pendingRequests == 0 && _terminateRequested)
        platform::current().application->terminate();
}

void TXAppDelegate::terminateWhenLogged() {
    endQuitQuestion();
    if (_pendingRequests <= 0)
        platform::current().application->terminate();
    else
        _terminateRequested = true;
}
