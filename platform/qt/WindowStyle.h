#pragma once

#include <QFont>

class QWidget;

namespace platform {

// What the window and its sheets have in common, measured in the person's own font and language.
class WindowStyle {
public:
    // The font of a heading above texts in the given font.
    static QFont headingFont(const QFont& font);

    // The height of a line of text in the widget's font, in logical pixels: the measure of all distances, so that they
    // grow with the letters.
    static int lineHeight(const QWidget& widget);

    // The same distance on all sides of the window's content.
    static void setMargins(QWidget& window);

    // The width of a window of that many average letters, in logical pixels, but never more than its screen has room
    // for.
    static int windowWidth(const QWidget& window, int letters);

    // Gives the window the width, or what its content needs at least, and the height that its wrapped texts then need;
    // it cannot be resized.
    static void fitToContent(QWidget& window, int width);
};

} // namespace platform
