#pragma once

#include "platform/cocoa/Retained.h"

#import <AppKit/AppKit.h>

#include <optional>

@class TXDockView;

namespace platform {

// Progress on the program's icon in the Dock. Main thread, after the application object.
class DockProgress {
public:
    // A share from 0 to 1; nothing takes the progress away. Draws whole per cents only.
    void setProgress(std::optional<double> share);

private:
    Retained<TXDockView> view_;
    std::optional<int> percent_;
};

} // namespace platform
