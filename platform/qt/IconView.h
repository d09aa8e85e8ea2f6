#pragma once

#include <QPixmap>
#include <QWidget>

namespace platform {

// A picture of a fixed logical size, sharp at every scale. Decoration: screen readers pass it by.
class IconView : public QWidget {
    Q_OBJECT

public:
    explicit IconView(QWidget* parent = nullptr) : QWidget(parent) {}

    // One of the program's pictures, and its width and height in logical pixels.
    void setPicture(const QString& name, int extent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString name_;
    // As painted last, and the device pixels that it was chosen for.
    QPixmap picture_;
    int pictureExtent_ = 0;
};

} // namespace platform
