#pragma once

#include "platform/qt/ProgressBar.h"

#include <QBasicTimer>
#include <QObject>

namespace platform {

// Tells screen readers how a bar gets on: when it becomes busy or stops being so at once, its value in whole per cents
// and no more often than anybody could listen to.
class ProgressAnnouncer : public QObject {
    Q_OBJECT

public:
    // The bar owns the announcer.
    explicit ProgressAnnouncer(ProgressBar& bar);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void follow();
    void tellBusy();
    void tellValue();

    ProgressBar& bar_;
    bool busy_ = false;
    int percent_ = 0;
    // Runs after each value that was told.
    QBasicTimer pause_;
};

} // namespace platform
