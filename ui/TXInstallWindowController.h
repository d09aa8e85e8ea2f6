#pragma once

#include "platform/UserInterface.h"

// Drives the progress window: a title, one line that names the stage, and a bar. The window and its outlets come from
// the main interface description and are borrowed from it. Main thread.
class TXInstallWindowController {
public:
    explicit TXInstallWindowController(platform::Window& withWindow);

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
