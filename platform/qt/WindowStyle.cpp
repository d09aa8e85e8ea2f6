#include "platform/qt/WindowStyle.h"

#include <QFontInfo>
#include <QLabel>
#include <QLayout>
#include <QScreen>
#include <QTextLayout>
#include <QWindow>

#include <algorithm>
#include <limits>

namespace platform {

namespace {

// How many lines the text takes at the width; more than any text has where a word is wider.
int linesAt(QTextLayout& layout, int width) {
    int lines = 0;
    bool fits = true;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        fits = fits && line.naturalTextWidth() <= width;
        ++lines;
    }
    layout.endLayout();
    return fits ? lines : std::numeric_limits<int>::max();
}

// The least width at which the paragraphs take no more lines each than at the given one.
int balancedWidth(const QLabel& label, int width) {
    int widest = 0;
    for (const QString& paragraph : label.text().split('\n')) {
        QTextLayout layout(paragraph, label.font());
        const int lines = linesAt(layout, width);
        int tooNarrow = 0;
        int enough = width;
        while (enough - tooNarrow > 1) {
            const int middle = (tooNarrow + enough) / 2;
            (linesAt(layout, middle) > lines ? tooNarrow : enough) = middle;
        }
        widest = std::max(widest, enough);
    }
    return widest;
}

} // namespace

QFont WindowStyle::headingFont(const QFont& font) {
    QFont heading = font;
    heading.setPointSizeF(QFontInfo(font).pointSizeF() * 1.15);
    heading.setBold(true);
    return heading;
}

int WindowStyle::lineHeight(const QWidget& widget) {
    return widget.fontMetrics().height();
}

int WindowStyle::windowWidth(const QWidget& window) {
    return lineHeight(window) * 24;
}

QSize WindowStyle::room(const QWidget& window) {
    // Of a frame's usual size, until the window has one.
    QMargins frame(2, 32, 2, 2);
    if (window.windowHandle() != nullptr && !window.windowHandle()->frameMargins().isNull())
        frame = window.windowHandle()->frameMargins();
    return window.screen()->availableGeometry().marginsRemoved(frame).size();
}

void WindowStyle::setMargins(QLayout& layout, int lineHeight, QSize room) {
    const int margin = std::min(lineHeight * 5 / 4, room.height() / 20);
    layout.setContentsMargins(margin, margin, margin, margin);
}

QSize WindowStyle::fitInto(QSize room, int width, const std::function<QSize(int, bool)>& arrange) {
    const auto fits = [room](QSize size) { return size.width() <= room.width() && size.height() <= room.height(); };
    QSize needed = arrange(std::min(width, room.width()), true);
    if (!fits(needed))
        needed = arrange(room.width(), true);
    if (!fits(needed))
        needed = arrange(room.width(), false);
    return needed;
}

int WindowStyle::heightFor(QLayout& layout, int width) {
    // Nobody tells a layout of changes to what is not on screen yet.
    layout.invalidate();
    layout.activate();
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : layout.totalSizeHint().height();
}

int WindowStyle::longestWord(const QLabel& label) {
    return label.fontMetrics().boundingRect(QRect(0, 0, 1, 1), Qt::TextWordWrap, label.text()).width();
}

void WindowStyle::balanceLines(QLabel& label, int width) {
    // One pixel more than needed, for what is lost to rounding.
    const int spare = std::max(0, width - balancedWidth(label, width) - 1);
    const bool mirrored = label.isRightToLeft();
    label.setContentsMargins(mirrored ? spare : 0, 0, mirrored ? 0 : spare, 0);
    // Its own idea of the least width is not renewed when its margins change.
    label.setMinimumWidth(1);
}

} // namespace platform
