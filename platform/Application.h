#pragma once

#include <memory>

namespace platform {

// An application delegate's answer to a quit request.
enum class TerminateReply { Cancel = 0, Now = 1, Later = 2 };

// What the main loop tells the application. Main thread.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    virtual void applicationDidFinishLaunching() = 0;
    virtual TerminateReply applicationShouldTerminate() = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;

    // The user interface's help command.
    virtual void showHelp() = 0;
};

// The running application. Main thread, unless said otherwise.
class Application {
public:
    virtual ~Application() = default;

    // Asks the application to quit: later, never inside this call, and the delegate may refuse. A request that arrives
    // while an answer of Later is pending is dropped: the person has been asked already.
    virtual void terminate() = 0;

    // Ends the state that the answer Later began: the program ends, or goes on.
    virtual void replyToApplicationShouldTerminate(bool shouldTerminate) = 0;

    // Until the result is dropped, the process stays although the application has quit, for a minute at most: for work
    // on another thread that must not be left half done. Any thread.
    virtual std::shared_ptr<void> delayEnd() { return nullptr; }
};

} // namespace platform
