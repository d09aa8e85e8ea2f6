#pragma once

#include "platform/Threads.h"

#include <functional>
#include <memory>

class QSocketNotifier;

namespace platform {

class StepQueue;

// Hand-over between threads on a Qt event loop. Made on the main thread, after the Qt application object.
class QtThreads : public Threads {
public:
    QtThreads();
    ~QtThreads() override;
    QtThreads(const QtThreads&) = delete;
    QtThreads& operator=(const QtThreads&) = delete;

    // A step is destroyed on the main thread, or with this object when the loop ended before its turn.
    void performOnMain(std::function<void()> step) override;

    bool performInBackground(std::function<void()> step) override;

    std::shared_ptr<RunLoop> makeRunLoop() override;

private:
    std::unique_ptr<StepQueue> queue_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace platform
