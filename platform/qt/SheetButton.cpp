#include "platform/qt/SheetButton.h"

#include "platform/qt/AnswerGuard.h"
#include "platform/qt/Contrast.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace platform {

namespace {

bool isPress(const QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::TouchBegin:
        return true;
    case QEvent::KeyPress: {
        const int key = static_cast<const QKeyEvent&>(event).key();
        return key == Qt::Key_Space || key == Qt::Key_Select || key == Qt::Key_Return || key == Qt::Key_Enter;
    }
    default:
        return false;
    }
}

// A key that has been held down since before the button was there.
bool isRepeated(const QEvent& event) {
    return event.type() == QEvent::KeyPress && static_cast<const QKeyEvent&>(event).isAutoRepeat();
}

} // namespace

// An ampersand would underline the letter after it.
SheetButton::SheetButton(const QString& title, const AnswerGuard& guard, QWidget* parent)
    : QPushButton(QString(title).replace('&', "&&"), parent), guard_(guard) {
    // Whichever has the focus is the one that Return presses, and looks so.
    setAutoDefault(true);
    // A click either answers or leaves everything as it was.
    setFocusPolicy(Qt::TabFocus);
}

bool SheetButton::event(QEvent* event) {
    const bool isMeant = !isPress(*event) || (guard_.isOpen() && !isRepeated(*event));
    return isMeant ? QPushButton::event(event) : true;
}

// Some styles leave hardly any room beside the title.
QSize SheetButton::sizeHint() const {
    const int line = fontMetrics().height();
    const QSize styled = QPushButton::sizeHint();
    const int titleWidth = fontMetrics().size(Qt::TextShowMnemonic, text()).width();
    return {std::max(styled.width(), titleWidth + line * 3 / 2), styled.height() + line / 4};
}

// Over the style's own frame, which is often too faint to be seen.
void SheetButton::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    const double width = isDefault() ? 2.0 : 1.0;
    const double inset = width / 2;
    constexpr double radius = 2.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(frameColor(), width));
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius, radius);
}

QColor SheetButton::frameColor() const {
    const QPalette colors = palette();
    if (!isDefault() || Contrast::isHigh(colors))
        return Contrast::frame(colors);
    return Contrast::makeVisible(colors.color(QPalette::Highlight), colors.color(QPalette::WindowText),
                                 colors.color(QPalette::Window));
}

} // namespace platform
