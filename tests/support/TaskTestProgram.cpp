// A tool for tests of child processes. Its arguments are steps, carried out in order; what it finds out goes to
// standard output, or to a file where nobody reads that.

#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

std::string openDescriptors() {
    std::string list;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) >= 0)
            list += std::to_string(descriptor) + ' ';
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

void endBySignal(int number) {
    std::signal(number, SIG_DFL);
    ::kill(::getpid(), number);
}

std::string readInput() {
    return {std::istreambuf_iterator<char>(std::cin), {}};
}

} // namespace

int main(int argc, char** argv) {
    std::deque<std::string> words(argv + 1, argv + argc);
    const auto next = [&words] {
        const std::string word = words.at(0);
        words.pop_front();
        return word;
    };
    const std::map<std::string, std::function<void()>> steps{
        {"print", [&] { std::cout << next() << std::flush; }},
        {"flood", [&] { std::cout << std::string(std::stoul(next()), 'x'); }},
        {"exit", [&] { std::exit(std::stoi(next())); }},
        {"signal", [&] { endBySignal(std::stoi(next())); }},
        {"report", [&] { reportTo(next()); }},
        {"closeOutput", [] { ::close(STDOUT_FILENO); }},
        {"closeInput", [] { ::close(STDIN_FILENO); }},
        {"waitForEndOfInput", [] { readInput(); }},
        {"repeatInput", [] { std::cout << readInput(); }},
        {"surroundings", [] { std::cout << surroundings(); }},
        {"arguments", // all that follow, each ended by a zero byte
         [&] {
             while (!words.empty())
                 std::cout << next() << '\0';
         }},
    };
    while (!words.empty())
        steps.at(next())();
    return 0;
}
