#include "platform/console/ConsoleAlerts.h"

#include "platform/console/ConsoleText.h"
#include "platform/linux/Terminal.h"
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
    return !terminal::isTerminal(STDOUT_FILENO) && terminal::isTerminal(STDERR_FILENO) ? STDERR_FILENO : STDOUT_FILENO;
}

bool canAsk() {
    return terminal::isTerminal(STDIN_FILENO) && !terminal::isInBackground(STDIN_FILENO);
}

// What was typed before is no answer to a question that comes now.
void forgetTypedText() {
    const terminal::KeepRunning keepRunning;
    ::tcflush(STDIN_FILENO, TCIFLUSH);
}

ssize_t readWithoutStopping(char* buffer, std::size_t size) {
    const terminal::KeepRunning keepRunning;
    return ::read(STDIN_FILENO, buffer, size);
}

std::string buttonLines(const Alert& alert) {
    std::string lines;
    for (std::size_t index = 0; index < alert.buttons.size(); ++index) {
        const std::string number = '[' + std::to_string(index + 1) + "] ";
        lines += consoleLines(questionDescriptor(), number + alert.buttons[index], number.size());
    }
    return lines;
}

std::string promptText(const Alert& alert) {
    const std::size_t count = alert.buttons.size();
    return (count > 1 ? "[1-" + std::to_string(count) : "[1") + ", Return = 1] > ";
}

// The number from 1 to `count` that is all there is in the line but blanks, or 0. An empty line stands for the first
// button, which answers the Return key.
std::size_t chosenNumber(const std::string& line, std::size_t count) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos)
        return 1;
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
    for (QTimer* timer : {&quitLater_, &askLater_}) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    quitLater_.callOnTimeout([this] { takeQuitButton(); });
    askLater_.callOnTimeout([this] { ask(); });
    flushLater_.setInterval(100);
    flushLater_.callOnTimeout([this] {
        if (TerminalOutput::shared().flush({}))
            flushLater_.stop();
    });
}

void ConsoleAlerts::show(const Alert& alert) {
    const bool isFirst = alert_ == nullptr;
    stopAsking();
    alert_ = &alert;
    if (isFirst) {
        openChanged_(true);
        ask();
    } else {
        // Later: the answer before may have told the program to end, and then there is no next question.
        askLater_.start();
    }
}

void ConsoleAlerts::allEnded(bool /*programEnds*/) {
    stopAsking();
    alert_ = nullptr;
    openChanged_(false);
}

void ConsoleAlerts::stopAsking() {
    inputReady_->setEnabled(false);
    quitLater_.stop();
    askLater_.stop();
    // The prompt, when nobody has answered it.
    TerminalOutput::shared().clear();
}

void ConsoleAlerts::ask() {
    const Alert& alert = *alert_;
    std::string text = '\n' + consoleLines(questionDescriptor(), alert.messageText);
    if (!alert.informativeText.empty())
        text += consoleLines(questionDescriptor(), alert.informativeText);
    text += '\n' + buttonLines(alert);
    if (canAsk()) {
        // Before the question stands there: what is typed from then on is an answer.
        forgetTypedText();
        input_.clear();
        prompt(text);
        inputReady_->setEnabled(true);
    } else {
        print(text);
        quitLater_.start();
    }
}

void ConsoleAlerts::prompt(const std::string& linesAbove) {
    const int descriptor = questionDescriptor();
    if (terminal::isTerminal(descriptor))
        TerminalOutput::shared().show(descriptor, promptText(*alert_), linesAbove);
    else
        TerminalOutput::shared().write(descriptor, linesAbove);
    flushLater_.start();
}

void ConsoleAlerts::print(const std::string& lines) {
    TerminalOutput::shared().write(questionDescriptor(), lines);
}

void ConsoleAlerts::readInput() {
    std::array<char, 4096> buffer{};
    const ssize_t count = readWithoutStopping(buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    // The end of the input, or a terminal that another job has now.
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
    const std::size_t number = chosenNumber(line, alert_->buttons.size());
    if (number > 0)
        answer(Alert::firstButtonReturn + static_cast<int>(number - 1));
    else
        prompt(buttonLines(*alert_));
}

void ConsoleAlerts::takeQuitButton() {
    const std::size_t button = alert_->quitButton;
    TerminalOutput::shared().clear();
    print("> " + std::to_string(button + 1) + '\n');
    answer(Alert::firstButtonReturn + static_cast<int>(button));
}

} // namespace platform
