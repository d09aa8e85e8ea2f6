#include "platform/linux/Terminal.h"

#include "platform/linux/Environment.h"

#include <algorithm>
#include <string>

#include <pthread.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace platform::terminal {

namespace {

// By the locale's name: a terminal shows these letters also where the locale itself is not installed.
bool localeIsUtf8() {
    const std::string name = environment::locale("LC_CTYPE");
    const std::size_t dot = std::min(name.find('.'), name.size());
    std::string codeset = name.substr(dot, name.find('@', dot) - dot);
    std::erase(codeset, '-');
    return codeset == ".UTF8" || codeset == ".utf8";
}

bool isDumb() {
    const std::string name = environment::value("TERM");
    return name.empty() || name == "dumb";
}

} // namespace

bool isTerminal(int descriptor) {
    return ::isatty(descriptor) == 1;
}

bool isInBackground(int descriptor) {
    // Not known for a terminal that does not control the process; such a one stops nobody.
    const pid_t foreground = ::tcgetpgrp(descriptor);
    return foreground > 0 && foreground != ::getpgrp();
}

std::size_t columns(int descriptor) {
    struct winsize size {};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

bool isPlain(int descriptor) {
    return !localeIsUtf8() || (isTerminal(descriptor) && isDumb());
}

KeepRunning::KeepRunning() {
    sigset_t stops;
    ::sigemptyset(&stops);
    ::sigaddset(&stops, SIGTTOU);
    ::sigaddset(&stops, SIGTTIN);
    ::pthread_sigmask(SIG_BLOCK, &stops, &previous_);
}

KeepRunning::~KeepRunning() {
    ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

} // namespace platform::terminal
