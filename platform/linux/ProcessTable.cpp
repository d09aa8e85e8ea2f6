#include "platform/linux/ProcessTable.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace platform {
namespace {

// A file of /proc, whose size nobody knows beforehand.
std::string readProcFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return readAll(file.get(), std::string::npos).value_or(std::string());
}

// Absent when the process has ended, even if nobody has waited for it yet.
std::optional<std::uint64_t> startTimeOf(int processId) {
    const std::string text = readProcFile("/proc/" + std::to_string(processId) + "/stat");
    // The name in the second field may itself hold blanks and parentheses.
    const std::size_t nameEnd = text.rfind(')');
    if (nameEnd == std::string::npos)
        return std::nullopt;
    std::istringstream fields(text.substr(nameEnd + 1));
    std::string state;
    fields >> state;
    std::string field;
    for (int number = 4; number <= 22; ++number)
        fields >> field;
    if (!fields || state == "Z" || state == "X")
        return std::nullopt;
    return std::strtoull(field.c_str(), nullptr, 10);
}

bool belongsToThisUser(const std::string& folder) {
    const std::string text = readProcFile(folder + "/status");
    const std::size_t line = text.find("\nUid:");
    return line != std::string::npos && std::strtoul(text.c_str() + line + 5, nullptr, 10) == ::getuid();
}

// The first argument that is no option.
std::string firstOperand(const std::string& commandLine) {
    std::size_t start = commandLine.find('\0');
    while (start != std::string::npos && start + 1 < commandLine.size()) {
        std::string argument(commandLine.c_str() + start + 1);
        if (!argument.empty() && argument.front() != '-')
            return argument;
        start = commandLine.find('\0', start + 1);
    }
    return {};
}

// Whether the executable is what the script's first line asks for: by path, or by name through env, where the name may
// lack the version ("python3" for "python3.11").
bool interprets(const std::string& executable, const std::string& firstLine) {
    std::istringstream words(firstLine.substr(2));
    std::string interpreter;
    words >> interpreter;
    if (foundation::path::lastPathComponent(interpreter) != "env")
        return resolvedPath(interpreter) == executable;
    std::string name;
    while (words >> name && (name.front() == '-' || name.find('=') != std::string::npos)) {
    }
    return !name.empty() && (resolvedPath("/usr/bin/" + name) == executable ||
                             foundation::path::lastPathComponent(executable).rfind(name, 0) == 0);
}

// The script that an interpreter runs, or nothing. An editor that merely shows a script is no interpreter of it.
std::string scriptOf(const std::string& folder, const std::string& executable) {
    std::string script = firstOperand(readProcFile(folder + "/cmdline"));
    if (script.empty())
        return {};
    if (script.front() != '/')
        script = foundation::path::appendingPathComponent(linkTarget(folder + "/cwd"), script);
    // Other arguments are not worth a look at a disk that may be slow.
    if (script.find("/Contents/") == std::string::npos)
        return {};
    const auto head = readRegularFile(script, 256);
    if (!head || head->rfind("#!", 0) != 0 || !interprets(executable, head->substr(0, head->find('\n'))))
        return {};
    return resolvedPath(script);
}

std::optional<UserProcess> userProcess(int processId) {
    const std::string folder = "/proc/" + std::to_string(processId);
    if (processId == ::getpid() || !belongsToThisUser(folder))
        return std::nullopt;
    const std::optional<std::uint64_t> startTime = startTimeOf(processId);
    const std::string executable = executableOfProcess(folder);
    if (!startTime || executable.empty())
        return std::nullopt;
    UserProcess process{{processId, *startTime}, {executable}};
    if (std::string script = scriptOf(folder, executable); !script.empty())
        process.programs.push_back(std::move(script));
    return process;
}

std::vector<int> processIds() {
    std::vector<int> processes;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), &::closedir);
    while (const struct dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        const std::string_view name(&entry->d_name[0]);
        if (name.find_first_not_of("0123456789") == std::string_view::npos)
            processes.push_back(std::atoi(name.data()));
    }
    return processes;
}

} // namespace

std::vector<UserProcess> processesOfThisUser() {
    std::vector<UserProcess> processes;
    for (const int processId : processIds())
        if (auto process = userProcess(processId))
            processes.push_back(std::move(*process));
    return processes;
}

bool isNamedByAProcess(const std::string& path) {
    const std::vector<int> processes = processIds();
    return std::any_of(processes.begin(), processes.end(), [&path](int processId) {
        return readProcFile("/proc/" + std::to_string(processId) + "/cmdline").find(path) != std::string::npos;
    });
}

bool isRunning(const RunningApplication& process) {
    return startTimeOf(process.processId) == process.startTime;
}

} // namespace platform
