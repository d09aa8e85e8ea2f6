#pragma once

#include "platform/Application.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform {

// The progress window and its parts, made from the main interface description. Main thread.

class Window {
public:
    virtual ~Window() = default;
    virtual void setTitle(const std::string& title) = 0;

    // Brings the window in front of the others, as far as the desktop lets it. A console has none.
    virtual void orderFront() {}
};

class Label {
public:
    virtual ~Label() = default;
    virtual void setStringValue(const std::string& text) = 0;
};

// A bar over a range; while indeterminate it shows no value and, between start and stop, an animation.
class ProgressIndicator {
public:
    virtual ~ProgressIndicator() = default;
    virtual void setIndeterminate(bool indeterminate) = 0;
    virtual void setMinValue(double value) = 0;
    virtual void setMaxValue(double value) = 0;
    // Any value; what is drawn is limited to the range.
    virtual void setDoubleValue(double value) = 0;
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
};

enum class AlertStyle { Warning, Critical };

// A question or a message, shown as a sheet on the progress window. Plain text throughout.
struct Alert {
    static constexpr int firstButtonReturn = 1000;

    AlertStyle style = AlertStyle::Warning;
    std::string messageText;
    std::string informativeText;
    // In order of adding; the n-th returns 1000 + n. The first answers the Return key.
    std::vector<std::string> buttons;
    // The safe button: it answers the Escape key.
    std::size_t escapeButton = 0;
    // The button that ends the program: taken where nobody can be asked.
    std::size_t quitButton = 0;
    // Whether every answer ends the program. With the last one of these the interface leaves the screen, although the
    // program's end can take a while.
    bool endsProgram = false;
};

// Names a sheet, from its beginning on; never used again for another one.
using SheetNumber = int;

class Alerts {
public:
    virtual ~Alerts() = default;

    // Shows the alert and returns at once; `ended` is called once, later, with the chosen button's code. An alert that
    // comes while another is open waits for its end.
    virtual SheetNumber beginSheet(const Alert& alert, std::function<void(int returnCode)> ended) = 0;

    // Ends a sheet that is open or waits, as if the button with that code had been chosen: calls its `ended` at once.
    // One that has ended already is left alone.
    virtual void endSheet(SheetNumber sheet, int returnCode) = 0;
};

// The main interface, loaded from its description: a window, or a console where there is no display. Main thread.
class MainInterface {
public:
    virtual ~MainInterface() = default;
    virtual Window& window() = 0;
    virtual Label& textIndicator() = 0;
    virtual ProgressIndicator& progressIndicator() = 0;
    virtual Alerts& alerts() = 0;

    // Connects the quit and help commands and shows the interface. Both are borrowed until the program ends.
    virtual void start(Application& application, ApplicationDelegate& delegate) = 0;
};

} // namespace platform
