#include "platform/qtcore/QtThreads.h"

#include "platform/qtcore/StepQueue.h"

#include <QSocketNotifier>

#include <chrono>
#include <system_error>
#include <utility>

namespace platform {

// The steps wait in a queue of our own, because a queued Qt call can be destroyed on the thread that posted it. One
// step runs per turn of the loop, so that a step that ends the program is the last one.
QtThreads::QtThreads()
    : queue_(std::make_unique<StepQueue>()),
      notifier_(std::make_unique<QSocketNotifier>(queue_->descriptor(), QSocketNotifier::Read)) {
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [queue = queue_.get()] { queue->runNext(); });
    starter_ = std::thread([this] { startThreads(); });
}

QtThreads::~QtThreads() {
    starts_.post([this] { ended_ = true; });
    starter_.join();
}

void QtThreads::performOnMain(std::function<void()> step) {
    queue_->add(std::move(step));
}

void QtThreads::performInBackground(std::function<void()> step) {
    const auto shared = std::make_shared<std::function<void()>>(std::move(step));
    const auto run = [shared] { std::exchange(*shared, nullptr)(); };
    starts_.post([this, run] {
        try {
            std::thread(run).detach();
        } catch (const std::system_error&) {
            performOnMain(run);
        }
    });
}

void QtThreads::startThreads() {
    while (!ended_)
        starts_.runOnce(std::chrono::hours(1));
}

std::shared_ptr<RunLoop> QtThreads::makeRunLoop() {
    return std::make_shared<PosixRunLoop>();
}

} // namespace platform
