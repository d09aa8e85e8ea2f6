#include "platform/console/ConsoleAlerts.h"

#include "platform/linux/TerminalOutput.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <utility>

#include <termios.h>
#include <unistd.h>

namespace platform {
namespace {

// Questions go where the person looks: standard output may lead into a file.
int questionDescriptor() {
    return ::isatty(STDOUT_FILENO) != 1 && ::isatty(STDERR_FILENO) == 1 ? STDERR_FILENO : STDOUT_FILENO;
}

bool canAsk() {
    return ::isatty(STDIN_FILENO) == 1;
}

void print(const std::string& lines) {
    TerminalOutput::shared().write(questionDescriptor(), lines);
}

std::string buttonLines(const Alert& alert) {
    std::string lines;
    for (std::size_t index = 0; index < alert.buttons.size(); ++index) {
        lines += '[' + std::to_string(index + 1) + "] " + printableText(alert.buttons[index]) + '\n';
    }
    return lines;
}

// The number from 1 to `count` that is all there is in the line but blanks, or 0.
std::size_t chosenNumber(const std::string& line, std::size_t count) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos) {
        return 0;
    }
    const char* const last = line.data() + line.find_last_not_of(" \t\r") + 1;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(line.data() + start, last, number);
    return error == std::errc() && end == last && number <= count ? number : 0;
}

} // namespace

ConsoleAlerts::ConsoleAlerts(std::function<void(bool)> openChanged)
    : openChanged_(std::move(openChanged)),
      inputReady_(std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read)) {
    inputReady_->setEnabled(false);
    QObject::connect(inputReady_.get(), &QSocketNotifier::activated, inputReady_.get(), [this] { readInput(); });
    for (QTimer* timer : {&quitLater_, &nextLater_}) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    quitLater_.callOnTimeout([this] { takeQuitButton(); });
    nextLater_.callOnTimeout([this] { showNext(); });
}

void ConsoleAlerts::beginSheet(const Alert& alert, std::function<void(int)> ended) {
    questions_.push_back({alert, std::move(ended)});
    if (questions_.size() == 1) {
        openChanged_(true);
        showFirst();
    }
}

void ConsoleAlerts::showFirst() {
    const Alert& alert = questions_.front().alert;
    std::string text = '\n' + printableText(alert.messageText) + '\n';
    if (!alert.informativeText.empty()) {
        text += printableText(alert.informativeText) + '\n';
    }
    print(text + '\n' + buttonLines(alert));
    if (canAsk()) {
        // What was typed before the question was there is no answer to it.
        ::tcflush(STDIN_FILENO, TCIFLUSH);
        input_.clear();
        prompt();
        inputReady_->setEnabled(true);
    } else {
        quitLater_.start();
    }
}

void ConsoleAlerts::prompt() {
    if (::isatty(questionDescriptor()) == 1) {
        TerminalOutput::shared().show(questionDescriptor(), "> ");
    }
}

void ConsoleAlerts::readInput() {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (count <= 0) {
        takeQuitButton();
        return;
    }
    input_.append(buffer.data(), static_cast<std::size_t>(count));
    const std::size_t end = input_.find('\n');
    if (end != std::string::npos) {
        TerminalOutput::shared().forget();
        // Further lines were typed for no question that could be seen.
        takeLine(std::exchange(input_, {}).substr(0, end));
    }
}

void ConsoleAlerts::takeLine(const std::string& line) {
    const Alert& alert = questions_.front().alert;
    const std::size_t number = chosenNumber(line, alert.buttons.size());
    if (number > 0) {
        takeButton(number - 1);
        return;
    }
    print(buttonLines(alert));
    prompt();
}

void ConsoleAlerts::takeQuitButton() {
    const std::size_t button = questions_.front().alert.quitButton;
    TerminalOutput::shared().clear();
    print("> " + std::to_string(button + 1) + '\n');
    takeButton(button);
}

// The question stays the first until its end is told, so that an alert begun meanwhile waits for its turn.
void ConsoleAlerts::takeButton(std::size_t button) {
    inputReady_->setEnabled(false);
    const auto ended = std::move(questions_.front().ended);
    ended(Alert::firstButtonReturn + static_cast<int>(button));
    // Later: the program may have been told to end, and then there is no next question.
    nextLater_.start();
}

void ConsoleAlerts::showNext() {
    questions_.pop_front();
    if (questions_.empty()) {
        openChanged_(false);
    } else {
        showFirst();
    }
}

} // namespace platform
