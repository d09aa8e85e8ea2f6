#pragma once

#include "platform/UserInterface.h"

#include <deque>

namespace platform {

class AlertSheet;
class MainWindow;

// Alerts as sheets on the progress window, one at a time.
class AlertQueue : public Alerts {
public:
    // The window is borrowed and outlives the queue.
    explicit AlertQueue(MainWindow& window) : window_(window) {}

    void beginSheet(const Alert& alert, std::function<void(int returnCode)> ended) override;

private:
    struct Entry {
        Alert alert;
        std::function<void(int returnCode)> ended;
    };

    void showNext();
    void sheetEnded(int returnCode);

    MainWindow& window_;
    // The first one is the open sheet's.
    std::deque<Entry> entries_;
    // Owned by the window, gone soon after it ended.
    AlertSheet* sheet_ = nullptr;
};

} // namespace platform
