#include "platform/macos/QuitSignals.h"

#include "platform/posix/SystemCalls.h"

#include <atomic>
#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr char quit = 'q';
constexpr char end = 'e';

std::atomic<int> signalDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void send(int descriptor, char message) {
    [[maybe_unused]] const ssize_t written = ::write(descriptor, &message, 1);
}

extern "C" void noteQuitSignal(int /*signal*/) {
    const int error = errno;
    send(signalDescriptor.load(), quit);
    errno = error;
}

} // namespace

QuitSignals::QuitSignals(std::function<void()> requested) : requested_(std::move(requested)) {
    if (!makePipe(readEnd_, writeEnd_))
        return;
    try {
        watcher_ = std::thread([this] { watch(); });
    } catch (const std::system_error&) {
        return;
    }
    signalDescriptor = writeEnd_.get();
    struct sigaction action {};
    action.sa_handler = noteQuitSignal;
    action.sa_flags = SA_RESTART;
    for (std::size_t index = 0; index < signals.size(); ++index) {
        ::sigaction(signals[index], nullptr, &previous_[index]);
        if (previous_[index].sa_handler != SIG_IGN)
            ::sigaction(signals[index], &action, nullptr);
    }
}

QuitSignals::~QuitSignals() {
    if (!watcher_.joinable())
        return;
    for (std::size_t index = 0; index < signals.size(); ++index)
        ::sigaction(signals[index], &previous_[index], nullptr);
    send(signalDescriptor.exchange(-1), end);
    watcher_.join();
}

void QuitSignals::watch() {
    char message = end;
    while (readSome(readEnd_.get(), &message, 1) > 0 && message != end)
        requested_();
}

} // namespace platform
