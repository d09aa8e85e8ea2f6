#include "platform/linux/StandardErrorConsole.h"

#include "foundation/MessageText.h"
#include "foundation/PathString.h"
#include "platform/linux/TerminalOutput.h"

#include <array>
#include <cstdio>
#include <ctime>

#include <unistd.h>

namespace platform {
namespace {

std::string localTime() {
    struct timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    struct tm parts {};
    ::localtime_r(&now.tv_sec, &parts);
    std::array<char, 32> seconds{};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%d %H:%M:%S", &parts);
    std::array<char, 8> milliseconds{};
    std::snprintf(milliseconds.data(), milliseconds.size(), ".%03d", static_cast<int>(now.tv_nsec / 1'000'000));
    return std::string(seconds.data()) + milliseconds.data();
}

} // namespace

StandardErrorConsole::StandardErrorConsole(const std::string& program)
    : name_(foundation::visible(foundation::path::lastPathComponent(program))) {}

void StandardErrorConsole::log(const std::string& message) {
    if (message.empty())
        return;
    std::string line = localTime() + ' ' + name_ + '[' + std::to_string(::getpid()) + ':' + std::to_string(::gettid()) +
                       "] " + foundation::printableText(message);
    if (line.back() != '\n')
        line += '\n';
    TerminalOutput::shared().write(STDERR_FILENO, line);
}

} // namespace platform
