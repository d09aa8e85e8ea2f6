#include "tools/pictures/Palettes.h"

#include "platform/qt/ColorSchemes.h"

using platform::ColorSchemes;

QPalette Palettes::light() {
    return ColorSchemes::of({.window = "#f5f6f7",
                             .text = "#232629",
                             .base = "#ffffff",
                             .button = "#fcfcfc",
                             .highlight = "#2980b9",
                             .highlightedText = "#ffffff"});
}

QPalette Palettes::dark() {
    return ColorSchemes::dark();
}

QPalette Palettes::highContrast() {
    return ColorSchemes::highContrast(true);
}

QPalette Palettes::highContrastLight() {
    return ColorSchemes::highContrast(false);
}

QPalette Palettes::yellowOnBlack() {
    return ColorSchemes::of({.window = "#000000",
                             .text = "#ffff00",
                             .base = "#000000",
                             .button = "#000000",
                             .highlight = "#00ffff",
                             .highlightedText = "#000000"});
}
