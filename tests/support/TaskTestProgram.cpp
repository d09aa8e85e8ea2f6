// A tool for tests of child processes. Its arguments are steps, carried out in order; what it finds out goes to
// standard output, or to a file where nobody reads that.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

std::string openDescriptors() {
    std::string list;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) >= 0)
            list += std::to_string(descriptor) + ' ';
    }
    return list;
}

// The numbers of the signals that are ignored or blocked.
std::string unusualSignals() {
    sigset_t blocked{};
    ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
    std::string list;
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        if (::sigaction(number, nullptr, &action) != 0)
            continue;
        if (action.sa_handler == SIG_IGN || ::sigismember(&blocked, number) == 1)
            list += std::to_string(number) + ' ';
    }
    return list;
}

std::string streamTarget(int stream) {
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(stream));
}

// What the process was given, a line each.
std::string surroundings() {
    std::ostringstream text;
    text << "descriptors " << openDescriptors() << '\n'
         << "signals " << unusualSignals() << '\n'
         << "folder " << std::filesystem::current_path().string() << '\n'
         << "parent " << ::getppid() << '\n'
         << "ownGroup " << (::getpgrp() == ::getpid()) << '\n'
         << "session " << ::getsid(0) << '\n'
         << "group " << ::getpgrp() << '\n'
         << "streams " << streamTarget(0) << ' ' << streamTarget(1) << ' ' << streamTarget(2) << '\n';
    return text.str();
}

// The file appears whole.
void reportTo(const std::string& path) {
    const std::string text = surroundings();
    std::ofstream(path + ".part") << text;
    std::filesystem::rename(path + ".part", path);
}

void flood(const std::string& size) {
    const std::string block(65536, 'x');
    for (std::size_t left = std::stoul(size); left > 0;) {
        const std::size_t count = std::min(left, block.size());
        std::cout.write(block.data(), static_cast<std::streamsize>(count));
        left -= count;
    }
}

void endBySignal(const std::string& number) {
    std::signal(std::stoi(number), SIG_DFL);
    ::kill(::getpid(), std::stoi(number));
}

std::string readInput() {
    return {std::istreambuf_iterator<char>(std::cin), {}};
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> steps(argv + 1, argv + argc);
    const std::map<std::string, std::function<void(const std::string&)>> withValue{
        {"print", [](const std::string& text) { std::cout << text << std::flush; }},
        {"flood", flood},
        {"exit", [](const std::string& status) { std::exit(std::stoi(status)); }},
        {"signal", endBySignal},
        {"report", reportTo},
    };
    const std::map<std::string, std::function<void()>> plain{
        {"closeOutput", [] { ::close(STDOUT_FILENO); }},
        {"closeInput", [] { ::close(STDIN_FILENO); }},
        {"waitForEndOfInput", [] { readInput(); }},
        {"repeatInput", [] { std::cout << readInput(); }},
        {"surroundings", [] { std::cout << surroundings(); }},
    };
    for (std::size_t at = 0; at < steps.size(); ++at) {
        if (steps[at] == "arguments") { // all that follow, each ended by a zero byte
            while (++at < steps.size())
                std::cout << steps[at] << '\0';
        } else if (plain.count(steps[at]) > 0) {
            plain.at(steps[at])();
        } else if (at + 1 < steps.size() && withValue.count(steps[at]) > 0) {
            withValue.at(steps[at])(steps[at + 1]);
            ++at;
        } else {
            return 99;
        }
    }
    return 0;
}
