#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace platform {

// What one thread waits for: its pipes and its children.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    // Handles the next event, waiting for one at most that long. Whether there was one. Only on the thread that made
    // the loop.
    virtual bool runOnce(std::chrono::milliseconds limit) = 0;
};

// Hand-over between threads. Every operation may be called from any thread.
class Threads {
public:
    virtual ~Threads() = default;

    // Runs the step on the main thread: always later, never inside this call, in the order of the calls.
    virtual void performOnMain(std::function<void()> step) = 0;

    // Runs the step on a new thread of its own. False, and the step is dropped, when there is no thread to be had.
    virtual bool performInBackground(std::function<void()> step) = 0;

    // A new loop for the calling thread.
    virtual std::shared_ptr<RunLoop> makeRunLoop() = 0;
};

} // namespace platform
