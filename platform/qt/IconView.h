#pragma once

#include <QIcon>
#include <QWidget>

namespace platform {

// A picture of a fixed logical size, sharp at every scale. Decoration: screen readers pass it by.
class IconView : public QWidget {
    Q_OBJECT

public:
    explicit IconView(QWidget* parent = nullptr) : QWidget(parent) {}

    // The width and height in logical pixels.
    void setIcon(const QIcon& icon, int extent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon icon_;
};

} // namespace platform
