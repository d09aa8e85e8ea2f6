#include "platform/qtcore/QtThreads.h"

#include "platform/posix/PosixRunLoop.h"
#include "platform/qtcore/StepQueue.h"

#include <QSocketNotifier>

#include <system_error>
#include <thread>
#include <utility>

namespace platform {

// The steps wait in a queue of our own, because a queued Qt call can be destroyed on the thread that posted it. One
// step runs per turn of the loop, so that a step that ends the program is the last one.
QtThreads::QtThreads()
    : queue_(std::make_unique<StepQueue>()),
      notifier_(std::make_unique<QSocketNotifier>(queue_->descriptor(), QSocketNotifier::Read)) {
    QObject::connect(
        notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [queue = queue_.get()] { queue->runNext(); });
}

QtThreads::~QtThreads() = default;

void QtThreads::performOnMain(std::function<void()> step) {
    queue_->add(std::move(step));
}

bool QtThreads::performInBackground(std::function<void()> step) {
    try {
        std::thread(std::move(step)).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

std::shared_ptr<RunLoop> QtThreads::makeRunLoop() {
    return std::make_shared<PosixRunLoop>();
}

} // namespace platform
