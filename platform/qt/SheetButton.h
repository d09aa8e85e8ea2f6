#pragma once

#include <QPushButton>

namespace platform {

// A button of an alert. In high contrast it draws a frame of its own, because styles draw theirs in a shade of the
// window's colour, and black has none.
class SheetButton : public QPushButton {
    Q_OBJECT

public:
    SheetButton(const QString& title, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace platform
