#include "tools/pictures/ContactSheet.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr int gap = 24;
constexpr int titleHeight = 40;

} // namespace

void ContactSheet::addRow(const QString& title, const std::vector<Pictures::Picture>& pictures) {
    rows_.push_back({title, pictures});
}

QSize ContactSheet::Row::size() const {
    QSize size(gap, titleHeight + gap);
    for (const auto& picture : pictures) {
        size.rwidth() += picture.image.width() + gap;
        size.setHeight(std::max(size.height(), titleHeight + picture.image.height() + gap));
    }
    return size;
}

QImage ContactSheet::draw() const {
    QSize size(0, gap);
    for (const Row& row : rows_) {
        size.setWidth(std::max(size.width(), row.size().width()));
        size.rheight() += row.size().height();
    }
    QImage sheet(size, QImage::Format_RGB32);
    sheet.fill(QColor("#8d949c"));
    QPainter painter(&sheet);
    int y = gap;
    for (const Row& row : rows_) {
        painter.drawText(QRect(gap, y, size.width() - gap, titleHeight), Qt::AlignVCenter, row.title);
        int x = gap;
        for (const auto& picture : row.pictures) {
            painter.drawImage(QRect(QPoint(x, y + titleHeight), picture.image.size()), picture.image);
            x += picture.image.width() + gap;
        }
        y += row.size().height();
    }
    return sheet;
}

QImage ContactSheet::onDesktop(const QImage& picture, const QColor& desktop) {
    constexpr int margin = 28;
    constexpr double radius = 10;
    const double scale = picture.devicePixelRatio();
    const QSizeF content = picture.deviceIndependentSize();
    QImage image(((content + QSizeF(2 * margin, 2 * margin)) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(desktop);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF place(QPointF(margin, margin), content);
    constexpr int shadowDepth = 14;
    for (int spread = shadowDepth; spread > 0; --spread) {
        painter.setBrush(QColor(0, 0, 0, 3));
        painter.drawRoundedRect(place.adjusted(-spread, -spread + 3, spread, spread + 3), radius + spread,
                                radius + spread);
    }
    QPainterPath outline;
    outline.addRoundedRect(place, radius, radius);
    painter.setClipPath(outline);
    painter.drawImage(place, picture);
    return image;
}
