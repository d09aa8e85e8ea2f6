#include "platform/linux/hdiutil/Program.h"

#include "platform/linux/hdiutil/Failure.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/FileDescriptor.h"

#include <cstdlib>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace hdiutil {
namespace {

using platform::FileDescriptor;

constexpr int cannotStart = 127;

// The program writes into memory, not into a pipe: it never waits for a reader, and one wait serves for its end and for
// interruptions.
FileDescriptor makeTextFile() {
    FileDescriptor file(::memfd_create("output", MFD_CLOEXEC));
    if (!file.isOpen())
        throw systemFailure("could not make a file in memory");
    return file;
}

// The program's writing has moved the place where reading goes on.
std::string readText(const FileDescriptor& file) {
    if (::lseek(file.get(), 0, SEEK_SET) != 0)
        return {};
    return platform::readAll(file.get(), std::string::npos).value_or(std::string());
}

std::vector<std::string> childEnvironment() {
    std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C", "TZ=UTC"};
    if (const char* folder = std::getenv("TMPDIR"))
        environment.push_back(std::string("TMPDIR=") + folder);
    return environment;
}

} // namespace

ProgramResult Program::run(Interruption& interruption) const {
    interruption.check();
    const FileDescriptor output = makeTextFile();
    const FileDescriptor errors = makeTextFile();
    const pid_t child =
        platform::spawnChild({path, arguments, folder, nullptr, nullptr}, {.standardInput = input,
                                                                           .standardOutput = output.get(),
                                                                           .standardError = errors.get(),
                                                                           .environment = childEnvironment(),
                                                                           .endsWithStarter = true});
    if (child < 0)
        return {cannotStart, {}, {}};
    const int status = interruption.waitForChild(child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readText(output), readText(errors)};
}

} // namespace hdiutil
