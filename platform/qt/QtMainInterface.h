#pragma once

#include "platform/qt/DesktopColors.h"
#include "platform/qt/LauncherEntry.h"
#include "platform/qt/MainWindow.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtApplicationObject.h"
#include "platform/qtcore/QuitSignals.h"

#include <memory>
#include <optional>

namespace platform {

// The main interface made of widgets.
class QtMainInterface : public MainInterface {
public:
    explicit QtMainInterface(const QtInterfaceOptions& options);

    Window& window() override { return window_; }
    Label& textIndicator() override { return window_.textIndicator(); }
    ProgressIndicator& progressIndicator() override;
    Alerts& alerts() override { return alerts_; }
    void start(Application& application, ApplicationDelegate& delegate) override;

private:
    void connectCommands(Application& application, ApplicationDelegate& delegate);
    void showOnLauncher();

    QtApplicationObject applicationObject_;
    DesktopColors desktopColors_;
    MainWindow window_;
    QtAlerts alerts_;
    // Made when there is the first progress to show.
    std::unique_ptr<LauncherEntry> launcherEntry_;
    std::optional<QuitSignals> quitSignals_;
};

} // namespace platform
