#pragma once

#include <QColor>
#include <QPalette>

namespace platform {

// The colours of a bar, all taken from a palette.
struct ProgressColors {
    QColor groove;
    QColor outline;
    // Always to be told from the groove.
    QColor chunk;

    static ProgressColors of(const QPalette& palette);
};

} // namespace platform
