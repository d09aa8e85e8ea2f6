#pragma once

#include <QSize>

// A display that is drawn in memory only.
class OffscreenDisplay {
public:
    // The display of application objects made from now on: its size in logical pixels, and the device pixels to one of
    // them.
    static void use(QSize size, double scale = 1);
};
