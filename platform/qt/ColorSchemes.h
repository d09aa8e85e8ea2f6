#pragma once

#include <QColor>
#include <QPalette>

namespace platform {

// Complete sets of colours for desktops that wish for some without bringing a theme of their own.
class ColorSchemes {
public:
    struct Colors {
        QColor window;
        QColor text;
        QColor base;
        QColor button;
        QColor highlight;
        QColor highlightedText;
    };

    static QPalette of(const Colors& colors);

    static QPalette dark();
    // Black and white, the text being the lighter one on a dark desktop.
    static QPalette highContrast(bool isDark);
};

} // namespace platform
