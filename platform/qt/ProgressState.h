#pragma once

namespace platform {

// What a bar has been told, and what is to be seen of it. Plain values; one thread at a time.
struct ProgressState {
    // The shown position runs from 0 to this.
    static constexpr int steps = 1000;

    bool indeterminate = true;
    // Only an indeterminate bar starts and stops, so a determinate phase in between leaves this as it was.
    bool animating = false;
    double minimum = 0.0;
    double maximum = 100.0;
    double value = 0.0;

    void startAnimation() { animating = animating || indeterminate; }
    void stopAnimation() { animating = animating && !indeterminate; }

    bool isBusy() const { return indeterminate && animating; }

    // The value within the range; an indeterminate bar is empty.
    int position() const;
};

} // namespace platform
