#include "platform/qt/ProgressColors.h"

#include "platform/qt/Contrast.h"

namespace platform {

ProgressColors ProgressColors::of(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    const QColor groove = Contrast::mix(window, text, 0.1F);
    return {.groove = groove,
            .outline = Contrast::frame(palette),
            .chunk = Contrast::makeVisible(palette.color(QPalette::Highlight), text, groove)};
}

} // namespace platform
