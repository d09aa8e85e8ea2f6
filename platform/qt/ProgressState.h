#pragma once

namespace platform {

// What a bar has been told, and what is to be seen of it. Plain values; one thread at a time.
struct ProgressState {
    // The shown position runs from 0 to this.
    static constexpr int steps = 1000;

    bool indeterminate = true;
    // Only an indeterminate bar starts and stops, so a determinate phase in between leaves this as it was.
    bool animating = false;
    // Stopped after it had run: what it was about is done.
    bool finished = false;
    double minimum = 0.0;
    double maximum = 100.0;
    double value = 0.0;

    void startAnimation() {
        animating = animating || indeterminate;
        finished = finished && !indeterminate;
    }
    void stopAnimation() {
        finished = finished || isBusy();
        animating = animating && !indeterminate;
    }

    bool isBusy() const { return indeterminate && animating; }
    // Nothing is known yet of a value, and perhaps never will be.
    bool isWaiting() const { return !indeterminate && position() == 0; }

    // The value within the range; an indeterminate bar is full once it has finished, and empty before.
    int position() const;

    // The same in whole per cents that are complete.
    int percent() const { return position() * 100 / steps; }
};

} // namespace platform
