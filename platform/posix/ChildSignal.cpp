#include "platform/posix/ChildSignal.h"

namespace platform {

DefaultChildSignal::DefaultChildSignal() {
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    ::sigaction(SIGCHLD, &standard, &previous_);
}

DefaultChildSignal::~DefaultChildSignal() {
    ::sigaction(SIGCHLD, &previous_, nullptr);
}

} // namespace platform
