#include "tools/pictures/ContactSheet.h"

#include <QPainter>

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
