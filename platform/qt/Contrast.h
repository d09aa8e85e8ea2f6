#pragma once

#include <QColor>
#include <QPalette>

namespace platform {

// How well colours can be told apart, for people with weak sight too.
class Contrast {
public:
    // What the parts of a control need at least.
    static constexpr double visible = 3.0;

    // From 1 (not at all) to 21 (black on white).
    static double between(const QColor& one, const QColor& other);

    // Whether the palette is one of those that go to the limits.
    static bool isHigh(const QPalette& palette);

    // One colour, with a share (0 to 1) of another.
    static QColor mix(const QColor& color, const QColor& other, float share);

    // The frame of a control on the window.
    static QColor frame(const QPalette& palette);

    // The colour, moved towards another one only as far as it takes to be visible on the background.
    static QColor makeVisible(const QColor& color, const QColor& towards, const QColor& background);
};

} // namespace platform
