#pragma once

#include <QIcon>
#include <QPixmap>

#include <initializer_list>

namespace platform {

// Pictures that the program carries, each in several sizes.
class ResourceIcon {
public:
    // The icon made of the pictures of that name with these widths in device pixels.
    static QIcon named(const QString& name, std::initializer_list<int> extents);

    // The smallest picture of that name that is at least so wide, in device pixels; else the widest.
    static QPixmap picture(const QString& name, int extent);
};

} // namespace platform
