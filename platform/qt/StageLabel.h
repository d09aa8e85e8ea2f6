#pragma once

#include "platform/UserInterface.h"

#include <QLabel>

namespace platform {

// The window's line of text. Screen readers speak each new text as a notification; the keyboard focus is on it where no
// button has it, so that they can read it again.
class StageLabel : public QLabel, public Label {
    Q_OBJECT

public:
    explicit StageLabel(QWidget* parent = nullptr);

    void setStringValue(const std::string& text) override;

    // While it is quiet, screen readers are not told that it appears.
    void setQuiet(bool quiet) { quiet_ = quiet; }
    bool isQuiet() const { return quiet_; }

signals:
    void textChanged(const QString& text);

private:
    bool quiet_ = false;
};

} // namespace platform
