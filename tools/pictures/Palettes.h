#pragma once

#include <QPalette>

// Desktops that the interface has to be at home on.
class Palettes {
public:
    static QPalette light();
    static QPalette dark();
    static QPalette highContrast();
    static QPalette highContrastLight();
    static QPalette yellowOnBlack();
};
