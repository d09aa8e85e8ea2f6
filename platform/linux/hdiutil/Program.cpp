#include "Program.h"

#include "Failure.h"
#include "FileDescriptor.h"

#include <cstdlib>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace hdiutil {
namespace {

constexpr int cannotStart = 127;

// The program writes into memory, not into a pipe: it never waits for a reader, and one wait serves for its end and for
// interruptions.
FileDescriptor makeTextFile() {
    FileDescriptor file(::memfd_create("output", MFD_CLOEXEC));
    if (!file)
        throw systemFailure("could not make a file in memory");
    return file;
}

std::string readText(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        return {};
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t length = ::pread(file.get(), text.data(), text.size(), 0);
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return text;
}

std::vector<std::string> childEnvironment() {
    std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C", "TZ=UTC"};
    if (const char* folder = std::getenv("TMPDIR"))
        environment.push_back(std::string("TMPDIR=") + folder);
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

void resetSignals() {
    std::signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

} // namespace

ProgramResult Program::run(Interruption& interruption) const {
    interruption.check();
    const FileDescriptor output = makeTextFile();
    const FileDescriptor errors = makeTextFile();
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), path);
    std::vector<std::string> environment = childEnvironment();
    const std::vector<char*> argumentPointers = pointers(words);
    const std::vector<char*> environmentPointers = pointers(environment);

    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0)
        throw systemFailure("could not start " + path);
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() == parent && ::fchdir(folder) == 0 && ::dup2(input, STDIN_FILENO) >= 0 &&
            ::dup2(output.get(), STDOUT_FILENO) >= 0 && ::dup2(errors.get(), STDERR_FILENO) >= 0) {
            ::umask(0);
            resetSignals();
            ::execve(path.c_str(), argumentPointers.data(), environmentPointers.data());
        }
        ::_exit(cannotStart);
    }
    const int status = interruption.waitForChild(child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readText(output), readText(errors)};
}

} // namespace hdiutil
