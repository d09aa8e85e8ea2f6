#include "foundation/MessageText.h"
#include "platform/linux/hdiutil/Attach.h"
#include "platform/linux/hdiutil/CommandLine.h"
#include "platform/linux/hdiutil/Detach.h"
#include "platform/posix/ProcessStart.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>

namespace {

using namespace hdiutil;

const char* verbName(Command::Verb verb) {
    return verb == Command::Verb::Attach ? "attach" : "detach";
}

// Names in the reason can hold anything; the message stays one line and drives no terminal.
int fail(const std::string& reason) {
    std::fprintf(stderr, "hdiutil: %s\n", foundation::visible(reason).c_str());
    return 1;
}

int run(const std::vector<std::string>& words) {
    Command command;
    try {
        command = parseCommandLine(words);
    } catch (const UsageError& error) {
        fail(error.what());
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
    } catch (...) {
        return fail(std::string(verbName(command.verb)) + " failed - " + currentReason());
    }
}

} // namespace

int main(int argc, char** argv) {
    if (const auto complaint = platform::prepareProcess())
        return fail(*complaint);
    // Files come out with the permissions that they have on the volume.
    ::umask(0);
    return run(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
}
