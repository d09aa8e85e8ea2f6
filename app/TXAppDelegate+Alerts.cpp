#include "app/TXAppDelegate.h"

#include "app/InstallerAlerts.h"
#include "app/StepCode.h"
#include "platform/Platform.h"
#include "telemetry/Deployment.h"
#include "ui/TXInstallWindowController.h"

#include <utility>

using platform::Alert;

namespace {

constexpr int firstButton = Alert::firstButtonReturn;
constexpr int secondButton = Alert::firstButtonReturn + 1;
constexpr int thirdButton = Alert::firstButtonReturn + 2;

void openURL(const std::optional<foundation::URL>& url) {
    if (url)
        platform::current().workspace->openURL(*url);
}

} // namespace

platform::SheetNumber TXAppDelegate::beginSheet(const Alert& alert, void (TXAppDelegate::*ended)(int returnCode)) {
    return platform::current().alerts->beginSheet(
        alert, [self = shared_from_this(), ended](int returnCode) { (self.get()->*ended)(returnCode); });
}

platform::TerminateReply TXAppDelegate::applicationShouldTerminate() {
    const bool busy = (downloadController && downloadController->downloadInProgress()) ||
                      (installController && installController->installInProgress());
    if (!busy)
        return platform::TerminateReply::Now;
    // The product is there and about to run: nothing is left to ask, and the program ends by itself in a moment.
    if (installController && installController->isLaunching())
        return platform::TerminateReply::Cancel;
    _quitQuestion = beginSheet(InstallerAlerts::quitWhileBusy(), &TXAppDelegate::terminateAlertDidEnd);
    return platform::TerminateReply::Later;
}

void TXAppDelegate::endQuitQuestion() {
    if (const auto question = std::exchange(_quitQuestion, std::nullopt))
        platform::current().alerts->endSheet(*question, firstButton);
}

void TXAppDelegate::terminateAlertDidEnd(int returnCode) {
    if (returnCode == firstButton) {
        platform::current().application->replyToApplicationShouldTerminate(false);
        return;
    }
    if (downloadController)
        stopDownload();
    if (installController)
        stopInstall();
    platform::current().application->replyToApplicationShouldTerminate(true);
}

void TXAppDelegate::showFailureOnCheck(bool onCheck, bool onDownload, bool /*onInstall*/) {
    using InstallerAlerts::FailedStage;
    FailedStage stage = FailedStage::Install;
    if (onDownload)
        stage = FailedStage::Download;
    if (onCheck)
        stage = FailedStage::Check;
    endQuitQuestion();
    beginSheet(InstallerAlerts::failure(stage, !onCheck && _directURL), &TXAppDelegate::errorAlertDidEnd);
}

void TXAppDelegate::errorAlertDidEnd(int returnCode) {
    if (returnCode == firstButton && _directURL) {
        openURL(_directURL);
        logStep(StepCode::failureManualDownload);
    } else if (returnCode == secondButton) {
        logStep(StepCode::failureQuit);
    }
    terminateWhenLogged();
}

void TXAppDelegate::showMacAppStoreWarning() {
    logStep(StepCode::storeEditionPresent);
    windowController->installDidEnd();
    stopInstall();
    endQuitQuestion();
    beginSheet(InstallerAlerts::storeEdition(_directURL.has_value()), &TXAppDelegate::macAppStoreAlertDidEnd);
}

void TXAppDelegate::macAppStoreAlertDidEnd(int returnCode) {
    if (returnCode == firstButton) {
        openURL(foundation::URL::withString("macappstore://" + Deployment::storeHost() + "/app/id" +
                                            Deployment::storeIdentifier()));
        logStep(StepCode::storeOpened);
    } else if (returnCode == secondButton) {
        logStep(StepCode::storeQuit);
    } else if (returnCode == thirdButton && _directURL) {
        openURL(_directURL);
        logStep(StepCode::storeManualDownload);
    }
    terminateWhenLogged();
}

void TXAppDelegate::showHelp() {
    openURL(foundation::URL::withString("https://" + Deployment::supportHost() +
                                        "/?utm_source=tolvix_app&utm_medium=macosx"));
}
