#include "app/TXAppDelegate.h"

#include "app/StepCode.h"
#include "platform/Platform.h"
#include "telemetry/Deployment.h"
#include "ui/TXInstallWindowController.h"
#include "ui/TXLocalizedString.h"

using platform::Alert;
using platform::AlertStyle;

namespace {

constexpr int firstButton = Alert::firstButtonReturn;
constexpr int secondButton = Alert::firstButtonReturn + 1;
constexpr int thirdButton = Alert::firstButtonReturn + 2;

Alert makeAlert(AlertStyle style, const std::string& subject, const std::vector<std::string>& buttonKeys) {
    Alert alert;
    alert.style = style;
    alert.messageText = TXLocalizedString(subject + "_TITLE");
    alert.informativeText = TXLocalizedString(subject + "_DESCRIPTION");
    for (const std::string& key : buttonKeys)
        alert.buttons.push_back(TXLocalizedString(key));
    return alert;
}

Alert quitWhileBusyAlert() {
    Alert alert = makeAlert(AlertStyle::Warning, "MAC_LAUNCHER_INCOMPLETE_WARNING",
                            {"MAC_LAUNCHER_INCOMPLETE_WARNING_CONTINUE", "MAC_LAUNCHER_INCOMPLETE_WARNING_QUIT"});
    alert.escapeButton = 0;
    alert.quitButton = 1;
    return alert;
}

Alert failureAlert(const std::string& subject, bool offersManualDownload) {
    std::vector<std::string> buttons;
    if (offersManualDownload)
        buttons.emplace_back("MAC_LAUNCHER_FAILED_WARNING_MANUAL_DONWLOAD");
    buttons.emplace_back("MAC_LAUNCHER_FAILED_WARNING_QUIT");
    Alert alert = makeAlert(AlertStyle::Critical, subject, buttons);
    alert.escapeButton = alert.quitButton = buttons.size() - 1;
    return alert;
}

Alert storeAlert(bool offersManualDownload) {
    std::vector<std::string> buttons{"MAC_LAUNCHER_MACAPPSTORE_WARNING_OPEN", "MAC_LAUNCHER_MACAPPSTORE_WARNING_QUIT"};
    if (offersManualDownload)
        buttons.emplace_back("MAC_LAUNCHER_MACAPPSTORE_WARNING_MANUAL_DONWLOAD");
    Alert alert = makeAlert(AlertStyle::Warning, "MAC_LAUNCHER_MACAPPSTORE_WARNING", buttons);
    alert.escapeButton = alert.quitButton = 1;
    return alert;
}

void openURL(const std::optional<foundation::URL>& url) {
    if (url)
        platform::current().workspace->openURL(*url);
}

} // namespace

void TXAppDelegate::beginSheet(const Alert& alert, void (TXAppDelegate::*ended)(int returnCode)) {
    platform::current().alerts->beginSheet(
        alert, [self = shared_from_this(), ended](int returnCode) { (self.get()->*ended)(returnCode); });
}

platform::TerminateReply TXAppDelegate::applicationShouldTerminate() {
    const bool busy = (downloadController && downloadController->downloadInProgress()) ||
                      (installController && installController->installInProgress());
    if (!busy)
        return platform::TerminateReply::Now;
    beginSheet(quitWhileBusyAlert(), &TXAppDelegate::terminateAlertDidEnd);
    return platform::TerminateReply::Later;
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
    std::string subject = "MAC_LAUNCHER_FAILED_INSTALL";
    if (onDownload)
        subject = "MAC_LAUNCHER_FAILED_DOWNLOAD";
    if (onCheck)
        subject = "MAC_LAUNCHER_FAILED_CHECK";
    beginSheet(failureAlert(subject, !onCheck && _directURL), &TXAppDelegate::errorAlertDidEnd);
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
    beginSheet(storeAlert(_directURL.has_value()), &TXAppDelegate::macAppStoreAlertDidEnd);
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
