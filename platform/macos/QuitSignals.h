#pragma once

#include "platform/posix/FileDescriptor.h"

#include <array>
#include <csignal>
#include <functional>
#include <thread>

namespace platform {

// Tells of the signals that ask a process to quit. Signals that were ignored when the program started stay ignored. One
// object at a time.
class QuitSignals {
public:
    // Calls `requested` on a thread of its own. Without a descriptor or a thread left the signals keep their effect.
    explicit QuitSignals(std::function<void()> requested);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};

    void watch();

    const std::function<void()> requested_;
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
    std::thread watcher_;
    std::array<struct sigaction, signals.size()> previous_{};
};

} // namespace platform
