#include "platform/qtcore/StepQueue.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

StepQueue::StepQueue() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

StepQueue::~StepQueue() {
    ::close(descriptor_);
}

void StepQueue::add(std::function<void()> step) {
    const std::lock_guard lock(mutex_);
    steps_.push_back(std::move(step));
    if (steps_.size() == 1)
        ::eventfd_write(descriptor_, 1);
}

void StepQueue::runNext() {
    std::function<void()> step;
    {
        const std::lock_guard lock(mutex_);
        if (steps_.empty())
            return;
        step = std::move(steps_.front());
        steps_.pop_front();
        if (steps_.empty()) {
            eventfd_t count = 0;
            ::eventfd_read(descriptor_, &count);
        }
    }
    step();
}

} // namespace platform
