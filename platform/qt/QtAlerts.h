#pragma once

#include "platform/AlertQueue.h"

namespace platform {

class MainWindow;
class QtApplicationObject;

// Alerts as sheets on the progress window.
class QtAlerts : public AlertQueue {
public:
    // Both are borrowed and outlive the alerts.
    QtAlerts(QtApplicationObject& applicationObject, MainWindow& window)
        : applicationObject_(applicationObject), window_(window) {}

private:
    void show(const Alert& alert) override;
    void allEnded(bool programEnds) override;

    QtApplicationObject& applicationObject_;
    MainWindow& window_;
};

} // namespace platform
