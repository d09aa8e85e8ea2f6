#include "platform/qtcore/QuitSignals.h"

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

namespace {

std::atomic<int> signalDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void noteQuitSignal(int /*signal*/) {
    const int error = errno;
    ::eventfd_write(signalDescriptor.load(), 1);
    errno = error;
}

} // namespace

QuitSignals::QuitSignals(std::function<void()> requested) : requested_(std::move(requested)) {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    signalDescriptor = descriptor;
    notifier_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, descriptor] {
        eventfd_t count = 0;
        ::eventfd_read(descriptor, &count);
        requested_();
    });
    struct sigaction action {};
    action.sa_handler = noteQuitSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Previous previous{signal, {}};
        ::sigaction(signal, nullptr, &previous.action);
        if (previous.action.sa_handler != SIG_IGN && ::sigaction(signal, &action, nullptr) == 0)
            previous_.push_back(previous);
    }
}

QuitSignals::~QuitSignals() {
    for (const Previous& previous : previous_)
        ::sigaction(previous.signal, &previous.action, nullptr);
    notifier_.reset();
    ::close(signalDescriptor.exchange(-1));
}

} // namespace platform
