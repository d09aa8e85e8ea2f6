#pragma once

#include "platform/Threads.h"

#include <functional>
#include <memory>
#include <utility>

namespace platform::transfers {

// Sends messages to a delegate on the main thread, in order. The last message takes the delegate with it, so that the
// delegate is never destroyed on the thread that sends.
template <class Delegate>
class MainThreadMessenger {
public:
    MainThreadMessenger(Threads& threads, std::shared_ptr<Delegate> delegate)
        : threads_(&threads), delegate_(std::move(delegate)) {}

    void send(std::function<void(Delegate&)> message) { perform(delegate_, std::move(message)); }
    void sendLast(std::function<void(Delegate&)> message) { perform(std::move(delegate_), std::move(message)); }

private:
    void perform(std::shared_ptr<Delegate> delegate, std::function<void(Delegate&)> message) {
        threads_->performOnMain([receiver = std::move(delegate), message = std::move(message)] { message(*receiver); });
    }

    Threads* threads_;
    std::shared_ptr<Delegate> delegate_;
};

} // namespace platform::transfers
