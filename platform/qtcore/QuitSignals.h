#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <vector>

namespace platform {

// Turns the signals that ask a process to quit into calls from the event loop. Signals that were ignored when the
// program started stay ignored. One object at a time; main thread.
class QuitSignals {
public:
    // Throws std::system_error when the system has no descriptor left.
    explicit QuitSignals(std::function<void()> requested);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    struct Previous {
        int signal = 0;
        struct sigaction action {};
    };

    const std::function<void()> requested_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::vector<Previous> previous_;
};

} // namespace platform
