#pragma once

#include "platform/UserInterface.h"

#include <QTimer>

#include <string>

namespace platform {

// The bar on the lowest line of the terminal; nothing where standard output is none, or cannot take
// a line back. It is shown while a value is
// known: an animation would disturb a password prompt on the same terminal.
class ConsoleProgress : public ProgressIndicator {
public:
    ConsoleProgress();

    void setIndeterminate(bool indeterminate) override;
    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;
    void startAnimation() override {}
    void stopAnimation() override {}

    // Whether the line is needed for something else.
    void setSuspended(bool suspended);

private:
    bool isShown() const { return canDraw_ && !indeterminate_ && !suspended_; }
    void update();
    void draw();
    int percent() const;

    const bool canDraw_;
    bool indeterminate_ = true;
    bool suspended_ = false;
    double minimum_ = 0;
    double maximum_ = 100;
    double value_ = 0;
    std::string drawn_;
    // Runs for a while after each drawing, so that a fast download does not flood a slow terminal.
    QTimer pause_;
};

} // namespace platform
