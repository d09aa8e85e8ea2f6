#pragma once

#include <csignal>
#include <cstddef>

// What the standard streams lead to. Any thread.
namespace platform::terminal {

bool isTerminal(int descriptor);

// Whether another job has the process's terminal at the moment. Then nobody can be asked, and reading would stop the
// process.
bool isInBackground(int descriptor);

// The width of the terminal; 80 where it is not known.
std::size_t columns(int descriptor);

// Whether nothing but lines of ASCII may be written: the locale knows no other letters, or the terminal is a dumb one.
bool isPlain(int descriptor);

// While it exists, the thread's writing to a terminal in the background is no reason for the system to stop the
// process, and its reading fails instead.
class KeepRunning {
public:
    KeepRunning();
    ~KeepRunning();
    KeepRunning(const KeepRunning&) = delete;
    KeepRunning& operator=(const KeepRunning&) = delete;

private:
    sigset_t previous_{};
};

} // namespace platform::terminal
