#include "platform/linux/Elevation.h"

#include "platform/linux/Environment.h"
#include "platform/posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr const char* pkexecPath = "/usr/bin/pkexec";
constexpr const char* sudoPath = "/usr/bin/sudo";
constexpr const char* systemBusSocket = "/run/dbus/system_bus_socket";

// Without the bit and its owner the program can do no more than this user.
bool isSetUserIdRoot(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == 0 &&
           (status.st_mode & S_ISUID) != 0 && ::access(path, X_OK) == 0;
}

bool isSocket(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISSOCK(status.st_mode);
}

bool isSet(const char* name) {
    return !environment::value(name).empty();
}

} // namespace

ElevationFacts currentElevationFacts() {
    return {.isRoot = ::geteuid() == 0,
            .hasPkexec = isSetUserIdRoot(pkexecPath),
            .hasSystemBus = isSocket(systemBusSocket),
            .hasDisplay = isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"),
            .hasTerminal = FileDescriptor(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)).isOpen(),
            .hasSudo = isSetUserIdRoot(sudoPath),
            .hasAskpass = isSet("SUDO_ASKPASS")};
}

Elevation chooseElevation(const ElevationFacts& facts) {
    if (facts.isRoot)
        return Elevation::Direct;
    if (facts.hasPkexec && facts.hasSystemBus && (facts.hasDisplay || facts.hasTerminal))
        return Elevation::Pkexec;
    if (!facts.hasSudo)
        return Elevation::None;
    if (facts.hasAskpass)
        return Elevation::SudoAskpass;
    return facts.hasTerminal ? Elevation::SudoTerminal : Elevation::SudoWithoutAsk;
}

TaskDescription elevatedCommand(Elevation elevation, const std::string& tool,
                                const std::vector<std::string>& arguments) {
    TaskDescription command;
    command.path = sudoPath;
    switch (elevation) {
    case Elevation::None:
        return {};
    case Elevation::Direct:
        command.path = tool;
        break;
    case Elevation::Pkexec:
        // The first argument that is no option ends its own; an absolute path never is one.
        command.path = pkexecPath;
        break;
    case Elevation::SudoAskpass:
        command.arguments = {"-A", "--"};
        break;
    case Elevation::SudoTerminal:
        command.arguments = {"--"};
        break;
    case Elevation::SudoWithoutAsk:
        command.arguments = {"-n", "--"};
        break;
    }
    if (elevation != Elevation::Direct)
        command.arguments.push_back(tool);
    command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
    return command;
}

std::vector<std::string> elevatedEnvironment(Elevation elevation) {
    std::vector<std::string> environment{"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C"};
    if (elevation == Elevation::Direct)
        return environment;
    // What pkexec and sudo need to ask for a password; neither of them passes it on to the tool.
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS",
                             "SUDO_ASKPASS", "TERM", "HOME"})
        if (isSet(name))
            environment.push_back(std::string(name) + '=' + environment::value(name));
    return environment;
}

} // namespace platform
