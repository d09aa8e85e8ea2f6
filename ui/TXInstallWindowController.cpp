#include "ui/TXInstallWindowController.h"

#include "ui/TXLocalizedString.h"

TXInstallWindowController::TXInstallWindowController(platform::Window& withWindow) : _window(withWindow) {}

std::shared_ptr<TXInstallWindowController> TXInstallWindowController::load(platform::MainInterface& interface) {
    auto controller = std::make_shared<TXInstallWindowController>(interface.window());
    controller->setTextIndicator(&interface.textIndicator());
    controller->setProgressIndicator(&interface.progressIndicator());
    controller->awakeFromNib();
    controller->windowDidLoad();
    return controller;
}

void TXInstallWindowController::awakeFromNib() {
    _window.setTitle(TXLocalizedString("MAC_LAUNCHER_WINDOW_TITLE"));
}

void TXInstallWindowController::windowDidLoad() {
    progressIndicator->setIndeterminate(true);
    progressIndicator->setMinValue(0.0);
    progressIndicator->setMaxValue(100.0);
    progressIndicator->startAnimation();
}

// To the person the check is a part of the download.
void TXInstallWindowController::checkWillStart() {
    textIndicator->setStringValue(TXLocalizedString("MAC_LAUNCHER_DOWNLOADING"));
}

void TXInstallWindowController::checkDidEnd() {}

void TXInstallWindowController::downloadWillStart() {
    progressIndicator->setIndeterminate(false);
    progressIndicator->setDoubleValue(0.0);
    textIndicator->setStringValue(TXLocalizedString("MAC_LAUNCHER_DOWNLOADING"));
}

void TXInstallWindowController::downloadProgress(double progress) {
    progressIndicator->setDoubleValue(progress);
}

// The animation was never stopped, so it runs again.
void TXInstallWindowController::downloadDidEnd() {
    progressIndicator->setIndeterminate(true);
}

void TXInstallWindowController::installWillStart() {
    progressIndicator->setIndeterminate(true);
    progressIndicator->startAnimation();
    textIndicator->setStringValue(TXLocalizedString("MAC_LAUNCHER_INSTALLING"));
}

void TXInstallWindowController::installProgress(double progress) {
    progressIndicator->setDoubleValue(progress);
}

void TXInstallWindowController::installDidEnd() {
    progressIndicator->stopAnimation();
}
