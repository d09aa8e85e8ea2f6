#include "platform/qt/SheetButton.h"

#include "platform/qt/Contrast.h"

#include <QPainter>

namespace platform {

// An ampersand would underline the letter after it.
SheetButton::SheetButton(const QString& title, QWidget* parent)
    : QPushButton(QString(title).replace('&', "&&"), parent) {}

// Some styles leave hardly any room beside the title.
QSize SheetButton::sizeHint() const {
    const int line = fontMetrics().height();
    return QPushButton::sizeHint() + QSize(line, line / 4);
}

void SheetButton::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    if (Contrast::isHigh(palette())) {
        const double width = isDefault() ? 2.0 : 1.0;
        const double inset = width / 2;
        QPainter painter(this);
        painter.setPen(QPen(palette().color(QPalette::WindowText), width));
        painter.drawRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
    }
}

} // namespace platform
