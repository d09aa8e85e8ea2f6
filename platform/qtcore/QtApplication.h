#pragma once

#include "platform/Application.h"
#include "platform/EndDelay.h"

#include <QObject>

namespace platform {

// The running application on a Qt event loop. Made on the main thread, after the Qt application object.
class QtApplication : public Application {
public:
    // Borrowed until the program ends; set before run().
    void setDelegate(ApplicationDelegate& delegate) { delegate_ = &delegate; }

    // Runs the event loop until the program is to end; the exit status.
    int run();

    void terminate() override;
    void replyToApplicationShouldTerminate(bool shouldTerminate) override;
    std::shared_ptr<void> delayEnd() override { return endDelay_.begin(); }

    // Waits until nothing delays the end of the process, as System::end has to.
    void awaitEnd() { endDelay_.end(); }

private:
    void post(void (QtApplication::*step)());
    void finishLaunching();
    void askDelegate();
    void end();

    ApplicationDelegate* delegate_ = nullptr;
    EndDelay endDelay_;
    // Steps that are still posted when this object goes are dropped with it.
    QObject context_;
    bool running_ = false;
    // The delegate's answer was Later, and its reply is still to come.
    bool replyPending_ = false;
    // A request came before the loop ran.
    bool requestWaiting_ = false;
    bool ended_ = false;
};

} // namespace platform
