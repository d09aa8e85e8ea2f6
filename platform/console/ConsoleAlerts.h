#pragma once

#include "platform/AlertQueue.h"

#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>

namespace platform {

// Alerts as numbered questions on the terminal. Where nobody can answer, the button that ends the program is taken.
class ConsoleAlerts : public AlertQueue {
public:
    // `openChanged` is told when a question begins and when the last one has ended.
    explicit ConsoleAlerts(std::function<void(bool open)> openChanged);

private:
    void show(const Alert& alert) override;
    void allEnded(bool programEnds) override;
    void ask();
    void stopAsking();
    void prompt(const std::string& linesAbove);
    void print(const std::string& lines);
    void readInput();
    void takeLine(const std::string& line);
    void takeButton(std::size_t button);
    void takeQuitButton();

    const std::function<void(bool)> openChanged_;
    // The open question; null while there is none.
    const Alert* alert_ = nullptr;
    std::string input_;
    QTimer quitLater_;
    QTimer askLater_;
    // Runs while the terminal is held up, so that a question appears as soon as it goes on.
    QTimer flushLater_;
    std::unique_ptr<QSocketNotifier> inputReady_;
};

} // namespace platform
