#include "tools/pictures/Palettes.h"

namespace {

struct Colors {
    QColor window;
    QColor text;
    QColor base;
    QColor button;
    QColor highlight;
    QColor highlightedText;
};

QPalette paletteOf(const Colors& colors) {
    QPalette palette(colors.button, colors.window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, colors.text);
    }
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::Highlight, colors.highlight);
    palette.setColor(QPalette::HighlightedText, colors.highlightedText);
    return palette;
}

} // namespace

QPalette Palettes::light() {
    return paletteOf({.window = "#f5f6f7",
                      .text = "#232629",
                      .base = "#ffffff",
                      .button = "#fcfcfc",
                      .highlight = "#2980b9",
                      .highlightedText = "#ffffff"});
}

QPalette Palettes::dark() {
    return paletteOf({.window = "#2a2d31",
                      .text = "#eff0f1",
                      .base = "#1b1d20",
                      .button = "#3a3e43",
                      .highlight = "#3daee9",
                      .highlightedText = "#0b1a22"});
}

QPalette Palettes::highContrast() {
    return paletteOf({.window = "#000000",
                      .text = "#ffffff",
                      .base = "#000000",
                      .button = "#000000",
                      .highlight = "#ffff00",
                      .highlightedText = "#000000"});
}
