#include "platform/qt/WindowStyle.h"

#include <QFontInfo>
#include <QLayout>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace platform {

QFont WindowStyle::headingFont(const QFont& font) {
    QFont heading = font;
    heading.setPointSizeF(QFontInfo(font).pointSizeF() * 1.15);
    heading.setBold(true);
    return heading;
}

int WindowStyle::lineHeight(const QWidget& widget) {
    return widget.fontMetrics().height();
}

void WindowStyle::setMargins(QWidget& window) {
    const int margin = lineHeight(window) * 5 / 4;
    window.layout()->setContentsMargins(margin, margin, margin, margin);
}

int WindowStyle::windowWidth(const QWidget& window, int letters) {
    const int wanted = window.fontMetrics().averageCharWidth() * letters;
    const int room = window.screen()->availableGeometry().width() * 4 / 5;
    return std::min(wanted, room);
}

void WindowStyle::fitToContent(QWidget& window, int width) {
    QLayout& layout = *window.layout();
    const int fullWidth = std::max(width, layout.totalMinimumSize().width());
    const int height =
        layout.hasHeightForWidth() ? layout.totalHeightForWidth(fullWidth) : layout.totalSizeHint().height();
    window.setFixedSize(fullWidth, height);
}

} // namespace platform
