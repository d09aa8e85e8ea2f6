#pragma once

#include <csignal>
#include <sys/types.h>

namespace hdiutil {

// Keeps SIGTERM, SIGINT and SIGHUP from ending the program in the middle of its work, for the rest of its life.
void deferInterruptions();

// Notices that the work is no longer wanted: a terminating signal came, or the program that started this one ended.
// One object per process, made before any child; the signals stay pending and are asked for, so no handler runs.
class Interruption {
public:
    Interruption();

    // Throws Failure once the work is no longer wanted.
    void check();

    // Waits for a direct child and returns its wait status. A child that is running when the work stops being wanted is
    // killed and reaped, and Failure is thrown.
    int waitForChild(pid_t child);

    // Whether the program that started this one has ended, so that nobody else will clean up.
    bool isParentGone() const;

private:
    bool isPending();

    pid_t parent_;
    bool requested_ = false;
};

} // namespace hdiutil
