#include "platform/qt/IconView.h"

#include "platform/qt/ResourceIcon.h"

#include <QPainter>

#include <cmath>

namespace platform {

void IconView::setPicture(const QString& name, int extent) {
    name_ = name;
    pictureExtent_ = 0;
    setFixedSize(extent, extent);
    update();
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
    const int extent = static_cast<int>(std::ceil(width() * devicePixelRatioF()));
    if (extent != pictureExtent_) {
        picture_ = ResourceIcon::picture(name_, extent);
        pictureExtent_ = extent;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect(), picture_);
}

} // namespace platform
