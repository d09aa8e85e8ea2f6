#include "platform/qt/QtMainInterface.h"

#include "platform/qt/ProgressAnnouncer.h"
#include "platform/qt/ProgressBar.h"
#include "platform/qtcore/SessionBus.h"

namespace platform {

QtMainInterface::QtMainInterface(const QtInterfaceOptions& options)
    : applicationObject_(options), desktopColors_(SessionBus::connection()), alerts_(applicationObject_, window_) {
    new ProgressAnnouncer(window_.progressIndicator());
    QObject::connect(&window_.progressIndicator(), &ProgressBar::stateChanged, &window_, [this] { showOnLauncher(); });
    // The program ends without destroying anything, and tidies up for a moment in which the window could not answer.
    QObject::connect(qApp, &QApplication::aboutToQuit, &window_, [this] {
        launcherEntry_.reset();
        window_.hide();
    });
}

ProgressIndicator& QtMainInterface::progressIndicator() {
    return window_.progressIndicator();
}

void QtMainInterface::start(Application& application, ApplicationDelegate& delegate) {
    connectCommands(application, delegate);
    quitSignals_.emplace([&application] { application.terminate(); });
    window_.showCentred();
}

void QtMainInterface::connectCommands(Application& application, ApplicationDelegate& delegate) {
    QObject::connect(
        &window_, &MainWindow::quitRequested, &window_, [&application] { application.terminate(); });
    QObject::connect(
        &window_, &MainWindow::helpRequested, &window_, [&delegate] { delegate.showHelp(); });
    QObject::connect(qApp, &QApplication::lastWindowClosed, &window_, [&application, &delegate] {
        if (delegate.applicationShouldTerminateAfterLastWindowClosed())
            application.terminate();
    });
}

void QtMainInterface::showOnLauncher() {
    const ProgressState& state = window_.progressIndicator().state();
    if (!state.indeterminate && launcherEntry_ == nullptr)
        launcherEntry_ = std::make_unique<LauncherEntry>(QApplication::desktopFileName(), SessionBus::connection());
    if (launcherEntry_ != nullptr) {
        const double share = static_cast<double>(state.position()) / ProgressState::steps;
        launcherEntry_->setProgress(state.indeterminate ? std::nullopt : std::optional(share));
    }
}

} // namespace platform
