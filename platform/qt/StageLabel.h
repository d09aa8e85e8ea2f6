#pragma once

#include "platform/UserInterface.h"

#include <QLabel>

namespace platform {

// The window's line of text. It takes the keyboard focus when the window opens, because screen readers speak a changed
// text of their own accord only where the focus is.
class StageLabel : public QLabel, public Label {
    Q_OBJECT

public:
    explicit StageLabel(QWidget* parent = nullptr);

    void setStringValue(const std::string& text) override;

signals:
    void textChanged(const QString& text);
};

} // namespace platform
