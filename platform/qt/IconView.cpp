#include "platform/qt/IconView.h"

#include <QPainter>

namespace platform {

void IconView::setIcon(const QIcon& icon, int extent) {
    icon_ = icon;
    setFixedSize(extent, extent);
    update();
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    icon_.paint(&painter, rect());
}

} // namespace platform
