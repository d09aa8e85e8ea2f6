#include "platform/qt/Contrast.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

double Contrast::between(const QColor& one, const QColor& other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

bool Contrast::isHigh(const QPalette& palette) {
    // Between black on the light grey of a desktop without colours of its own (18.3) and yellow on black (19.6).
    constexpr double nearlyTheMost = 19.0;
    return between(palette.color(QPalette::WindowText), palette.color(QPalette::Window)) > nearlyTheMost;
}

QColor Contrast::mix(const QColor& color, const QColor& other, float share) {
    const auto between = [share](float from, float to) { return from + (to - from) * share; };
    return QColor::fromRgbF(between(color.redF(), other.redF()), between(color.greenF(), other.greenF()),
                            between(color.blueF(), other.blueF()));
}

QColor Contrast::frame(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    return isHigh(palette) ? text : makeVisible(mix(window, text, 0.38F), text, window);
}

QColor Contrast::makeVisible(const QColor& color, const QColor& towards, const QColor& background) {
    constexpr int stages = 20;
    for (int stage = 0; stage < stages; ++stage) {
        const QColor candidate = mix(color, towards, static_cast<float>(stage) / stages);
        if (between(candidate, background) >= visible)
            return candidate;
    }
    return towards;
}

} // namespace platform
