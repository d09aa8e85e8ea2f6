#pragma once

#include <QObject>
#include <QTimer>

class QWidget;

namespace platform {

// Keeps a sheet from taking a key or a click that was meant for something else: for another window, when this one was
// not active or had just become so as the sheet came, or for the sheet before. It then answers only after the window
// has been active for a moment. Main thread.
class AnswerGuard : public QObject {
    Q_OBJECT

public:
    // The window is borrowed and outlives the guard.
    explicit AnswerGuard(QWidget& window);

    // Whether the sheet may take an answer.
    bool isOpen() const { return open_; }

    void sheetCame();
    void sheetWent();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget& window_;
    // Runs for the moment after the window became active, or a sheet went.
    QTimer settling_;
    bool open_ = false;
};

} // namespace platform
