#include "platform/qt/ColorSchemes.h"

namespace platform {

QPalette ColorSchemes::of(const Colors& colors) {
    QPalette palette(colors.button, colors.window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, colors.text);
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::ToolTipBase, colors.base);
    palette.setColor(QPalette::Highlight, colors.highlight);
    palette.setColor(QPalette::HighlightedText, colors.highlightedText);
    return palette;
}

QPalette ColorSchemes::dark() {
    return of({.window = "#2a2d31",
               .text = "#eff0f1",
               .base = "#1b1d20",
               .button = "#3a3e43",
               .highlight = "#3daee9",
               .highlightedText = "#0b1a22"});
}

QPalette ColorSchemes::highContrast(bool isDark) {
    const QColor ground = isDark ? Qt::black : Qt::white;
    const QColor text = isDark ? Qt::white : Qt::black;
    return of({.window = ground,
               .text = text,
               .base = ground,
               .button = ground,
               .highlight = isDark ? "#ffff00" : "#0000c0",
               .highlightedText = ground});
}

} // namespace platform
