#pragma once

#include "platform/UserInterface.h"

#include <QSocketNotifier>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace platform {

// Alerts as numbered questions on the terminal. Where nobody can answer, the button that ends the program is taken.
class ConsoleAlerts : public Alerts {
public:
    // `openChanged` is told when a question begins and when the last one has ended.
    explicit ConsoleAlerts(std::function<void(bool open)> openChanged);

    void beginSheet(const Alert& alert, std::function<void(int returnCode)> ended) override;

private:
    struct Question {
        Alert alert;
        std::function<void(int)> ended;
    };

    void showFirst();
    void showNext();
    void prompt();
    void readInput();
    void takeLine(const std::string& line);
    void takeButton(std::size_t button);
    void takeQuitButton();

    const std::function<void(bool)> openChanged_;
    // The first one is open.
    std::deque<Question> questions_;
    std::string input_;
    QTimer quitLater_;
    QTimer nextLater_;
    std::unique_ptr<QSocketNotifier> inputReady_;
};

} // namespace platform
