#pragma once

#include <QEvent>

namespace platform {

// A window, of the given kind, whose measures follow its font and whose size follows its content.
template <class Widget>
class FittedWindow : public Widget {
protected:
    using Widget::Widget;

    bool event(QEvent* event) override {
        const bool handled = Widget::event(event);
        if (event->type() == QEvent::FontChange)
            adaptToFont();
        else if (event->type() == QEvent::StyleChange || event->type() == QEvent::LayoutDirectionChange)
            fit();
        return handled;
    }

    // Sets all measures that come from the font, and fits.
    virtual void adaptToFont() = 0;

    // Takes the size that the content needs.
    virtual void fit() = 0;
};

} // namespace platform
