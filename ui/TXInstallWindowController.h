#pragma once

#include "platform/UserInterface.h"

#include <memory>

// Drives the progress window: a title, one line that names the stage, and a bar. The window and its outlets come from
// the main interface description and are borrowed from it. Main thread.
class TXInstallWindowController {
public:
    explicit TXInstallWindowController(platform::Window& withWindow);

    // The controller of the main interface's window, with its outlets connected and the window's texts and bar set up.
    static std::shared_ptr<TXInstallWindowController> load(platform::MainInterface& interface);

    platform::Window& window() const { return _window; }

    // The outlets; connected before awakeFromNib.
    void setTextIndicator(platform::Label* label) { textIndicator = label; }
    void setProgressIndicator(platform::ProgressIndicator* bar) { progressIndicator = bar; }

    void awakeFromNib();
    void windowDidLoad();

    void checkWillStart();
    void checkDidEnd();
    void downloadWillStart();
    void downloadProgress(double progress);
    void downloadDidEnd();
    void installWillStart();
    void installProgress(double progress);
    void installDidEnd();

private:
    platform::Window& _window;
    platform::Label* textIndicator = nullptr;
    platform::ProgressIndicator* progressIndicator = nullptr;
};
