#include "platform/console/ConsoleProgress.h"

#include "platform/linux/Terminal.h"
#include "platform/linux/TerminalOutput.h"

#include <algorithm>
#include <chrono>

#include <unistd.h>

namespace platform {
namespace {

constexpr std::chrono::milliseconds shortestPause{50};
constexpr std::size_t widestLine = 72;
constexpr std::size_t keptFree = 3;

// "[####      ]  40%", or the number alone where there is no room. The last columns stay free: for the "^C" that a
// terminal shows, and because writing in the very last one would begin a new line on some.
std::string barText(int percent, std::size_t columns) {
    std::string number = std::to_string(percent) + '%';
    number.insert(0, 4 - std::min<std::size_t>(number.size(), 4), ' ');
    const std::size_t width = std::min(columns - std::min(columns, keptFree), widestLine);
    const std::size_t frame = number.size() + 3;
    if (width < frame + 4)
        return number.substr(0, width);
    const std::size_t length = width - frame;
    const std::size_t filled = length * static_cast<std::size_t>(percent) / 100;
    return '[' + std::string(filled, '#') + std::string(length - filled, ' ') + "] " + number;
}

} // namespace

ConsoleProgress::ConsoleProgress()
    : canDraw_(terminal::isTerminal(STDOUT_FILENO) && !terminal::isPlain(STDOUT_FILENO)) {
    pause_.setSingleShot(true);
    pause_.setInterval(shortestPause);
    pause_.callOnTimeout([this] { update(); });
}

void ConsoleProgress::setIndeterminate(bool indeterminate) {
    indeterminate_ = indeterminate;
    update();
}

void ConsoleProgress::setMinValue(double value) {
    minimum_ = value;
    update();
}

void ConsoleProgress::setMaxValue(double value) {
    maximum_ = value;
    update();
}

void ConsoleProgress::setDoubleValue(double value) {
    value_ = value;
    update();
}

void ConsoleProgress::setSuspended(bool suspended) {
    suspended_ = suspended;
    update();
}

void ConsoleProgress::update() {
    if (isShown()) {
        if (!pause_.isActive())
            draw();
    } else if (!drawn_.empty()) {
        TerminalOutput::shared().clear();
        drawn_.clear();
    }
}

void ConsoleProgress::draw() {
    // Another job's terminal is not ours to draw on.
    if (terminal::isInBackground(STDOUT_FILENO))
        return;
    const std::string text = barText(percent(), terminal::columns(STDOUT_FILENO));
    if (text != drawn_) {
        TerminalOutput::shared().show(STDOUT_FILENO, text);
        drawn_ = text;
        pause_.start();
    }
}

int ConsoleProgress::percent() const {
    const double share = maximum_ > minimum_ ? (value_ - minimum_) / (maximum_ - minimum_) : 0;
    // Also true for what is no number.
    return share > 0 ? static_cast<int>(std::min(share, 1.0) * 100) : 0;
}

} // namespace platform
