#include "Attach.h"
#include "CommandLine.h"
#include "Detach.h"
#include "StatusHolder.h"

#include "foundation/MessageText.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace hdiutil;

void prepareProcess() {
    // Standard streams that are closed would be taken by the next files to be opened.
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR);
    ::closefrom(STDERR_FILENO + 1);
    std::signal(SIGPIPE, SIG_IGN);
    // A walk through a tree holds one descriptor for each level.
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
}

const char* verbName(Command::Verb verb) {
    return verb == Command::Verb::Attach ? "attach" : "detach";
}

// Names in the reason can hold anything; the message stays one line and drives no terminal.
void report(const std::string& text) {
    std::fprintf(stderr, "hdiutil: %s\n", foundation::visible(text).c_str());
}

int run(const std::vector<std::string>& words) {
    Command command;
    try {
        command = parseCommandLine(words);
    } catch (const UsageError& error) {
        report(error.what());
        std::fputs(usageText(), stderr);
        return 1;
    }
    try {
        if (command.verb == Command::Verb::Attach)
            attach(command.image, command.mountPoint);
        else
            detach(command.mountPoint);
        std::fflush(stdout);
        return 0;
    } catch (const std::exception& error) {
        report(std::string(verbName(command.verb)) + " failed - " + error.what());
        return 1;
    }
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const int status = run(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
    if (status != 0)
        holdOutputUntilExit();
    return status;
}
