#pragma once

#include <QPushButton>

namespace platform {

class AnswerGuard;

// A button of an alert. In high contrast it draws a frame of its own, because styles draw theirs in a shade of the
// window's colour, and black has none.
class SheetButton : public QPushButton {
    Q_OBJECT

public:
    // The guard, which is borrowed and outlives the button, decides which keys and clicks it takes.
    SheetButton(const QString& title, const AnswerGuard& guard, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor frameColor() const;

    const AnswerGuard& guard_;
};

} // namespace platform
