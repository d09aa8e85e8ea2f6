#pragma once

#include <QFont>
#include <QSize>

#include <functional>

class QLabel;
class QLayout;
class QWidget;

namespace platform {

// What the window and its sheets have in common, measured in the person's own font. All lengths are logical pixels.
class WindowStyle {
public:
    // The font of a heading above texts in the given font.
    static QFont headingFont(const QFont& font);

    // The height of a line of text in the widget's font: the measure of all distances, so that they grow with the
    // letters. A font's average letter would not do: it is twice as wide where the font is made for Chinese.
    static int lineHeight(const QWidget& widget);

    // The width that a window has where nothing needs more.
    static int windowWidth(const QWidget& window);

    // What a window's content can have of its screen at most.
    static QSize room(const QWidget& window);

    // The same distance on all sides of a content; less of it where there is little room.
    static void setMargins(QLayout& layout, int lineHeight, QSize room);

    // Arranges a content so that it fits into the room: in the given width, then in the full width, then without its
    // icon. `arrange` returns the size that is needed; so does this, for the last arrangement that was tried.
    static QSize fitInto(QSize room, int width, const std::function<QSize(int width, bool withIcon)>& arrange);

    // The height that the content needs in that width.
    static int heightFor(QLayout& layout, int width);

    // The room that the label's longest word needs.
    static int longestWord(const QLabel& label);

    // Breaks the label's text into lines of about equal length that are no more than the width makes necessary, so that
    // no word is left alone on the last one.
    static void balanceLines(QLabel& label, int width);
};

} // namespace platform
