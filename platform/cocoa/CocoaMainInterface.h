#pragma once

#include "platform/Bundles.h"
#include "platform/cocoa/AlertSheets.h"
#include "platform/cocoa/DockProgress.h"
#include "platform/cocoa/ProgressWindow.h"

namespace platform {

// The main interface made of AppKit's windows. Main thread, after the application object.
class CocoaMainInterface : public MainInterface {
public:
    // Borrowed; its main bundle has the titles of the menus.
    explicit CocoaMainInterface(Bundles& bundles);

    ProgressWindow& window() override { return window_; }
    Label& textIndicator() override { return window_.textIndicator(); }
    ProgressIndicator& progressIndicator() override { return window_.progressIndicator(); }
    Alerts& alerts() override { return alerts_; }
    void start(Application& application, ApplicationDelegate& delegate) override;

private:
    Bundles& bundles_;
    ProgressWindow window_;
    AlertSheets alerts_{window_.window()};
    DockProgress dock_;
};

} // namespace platform
