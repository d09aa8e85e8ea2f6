#include "platform/qtcore/FileReplacement.h"

#include "platform/linux/PathFacts.h"
#include "platform/posix/FileDescriptor.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

using namespace std::chrono_literals;

// Plain system calls alone, for a child that was forked while other threads held their locks.
void replace(const char* path, const char* newPath, std::string_view bytes) {
    const int file = ::open(newPath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return;
    const bool written = writeAll(file, bytes);
    const bool complete = ::close(file) == 0 && written;
    if (!complete || ::rename(newPath, path) != 0)
        ::unlink(newPath);
}

// A file system that answers no more must not hold the program; what is under way there ends without it.
void awaitEnd(pid_t child) {
    const auto limit = std::chrono::steady_clock::now() + 10s;
    while (::waitpid(child, nullptr, WNOHANG) == 0 && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(100us);
}

} // namespace

bool replaceFile(const std::string& path, const std::string& bytes) {
    const std::string newPath = path + '.' + std::to_string(::getpid());
    // Nor does a signal end the child.
    sigset_t all{};
    sigset_t before{};
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = ::fork();
    if (child == 0)
        ::setsid();
    // Where there can be no child, this process must do.
    if (child <= 0)
        replace(path.c_str(), newPath.c_str(), bytes);
    if (child == 0)
        ::_exit(EXIT_SUCCESS);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (child > 0)
        awaitEnd(child);
    return readRegularFile(path, bytes.size() + 1) == bytes;
}

} // namespace platform
