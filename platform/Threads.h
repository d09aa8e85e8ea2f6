#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace platform {

// The event queue of one thread.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    // Adds an event; from any thread. Events of a loop that nobody runs any more are dropped with it.
    virtual void post(std::function<void()> event) = 0;

    // Runs the next event, waiting for one at most that long. Whether one was run. Only from the thread that owns it.
    virtual bool runOnce(std::chrono::milliseconds limit) = 0;
};

// Hand-over between threads. Every operation may be called from any thread.
class Threads {
public:
    virtual ~Threads() = default;

    // Runs the step on the main thread: always later, never inside this call, in the order of the calls.
    virtual void performOnMain(std::function<void()> step) = 0;

    // Runs the step on a new thread of its own.
    virtual void performInBackground(std::function<void()> step) = 0;

    // A new event queue for the calling thread.
    virtual std::shared_ptr<RunLoop> makeRunLoop() = 0;
};

} // namespace platform
