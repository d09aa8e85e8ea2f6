#include "platform/linux/LinuxWorkspace.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/linux/ProcessTable.h"
#include "platform/posix/DestroyFiles.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/WatchedChild.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {
namespace {

using foundation::path::appendingPathComponent;
using foundation::path::deletingLastPathComponent;

constexpr const char* informationFile = "Contents/Info.plist";
constexpr std::chrono::milliseconds quitWait(50);
constexpr std::chrono::seconds openerWait(3);

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

// The first such program in the search path. Relative entries are skipped: what lies there depends on where the
// installer was started.
std::string programInSearchPath(const std::string& name) {
    const char* variable = std::getenv("PATH");
    std::string_view entries = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
    while (!entries.empty()) {
        const std::size_t end = std::min(entries.find(':'), entries.size());
        std::string candidate = appendingPathComponent(entries.substr(0, end), name);
        if (candidate.front() == '/' && isExecutableFile(candidate))
            return candidate;
        entries.remove_prefix(std::min(end + 1, entries.size()));
    }
    return {};
}

// What opens the target in the person's own program for it. A target that looks like an option would be taken for one.
std::optional<TaskDescription> openingTask(const std::string& target) {
    const std::string opener = programInSearchPath("xdg-open");
    if (opener.empty() || target.empty() || target.front() == '-')
        return std::nullopt;
    return TaskDescription{opener, {target}, "/", nullptr, nullptr};
}

// Whether the task has ended with status 0 within a few seconds; one that needs longer is left alone.
bool endsWell(const TaskDescription& task) {
    std::optional<int> status;
    PosixRunLoop loop;
    if (startWatchedChild(task, {}, loop, [&status](int ended) { status = ended; }))
        loop.runOnce(openerWait);
    return status == 0;
}

std::optional<std::string> textValue(Bundles& bundles, const std::string& bundle, const std::string& key) {
    const auto information = bundles.bundleInformation(bundle);
    const foundation::Value* value = information ? foundation::member(*information, key) : nullptr;
    return value != nullptr && value->string() != nullptr ? std::optional(*value->string()) : std::nullopt;
}

// Finds the innermost bundles that programs lie in. It remembers what it saw, since most processes run from few
// folders.
class EnclosingBundles {
public:
    // The bundle's folder, or empty.
    const std::string& of(const std::string& program) { return ofFolder(deletingLastPathComponent(program)); }

private:
    const std::string& ofFolder(const std::string& folder) {
        const auto known = found_.find(folder);
        if (known != found_.end())
            return known->second;
        std::string bundle;
        struct stat status {};
        if (::stat(appendingPathComponent(folder, informationFile).c_str(), &status) == 0 && S_ISREG(status.st_mode))
            bundle = folder;
        else if (folder.size() > 1)
            bundle = ofFolder(deletingLastPathComponent(folder));
        return found_.emplace(folder, std::move(bundle)).first->second;
    }

    std::map<std::string, std::string> found_;
};

bool isSameFolder(const std::string& first, const std::string& second) {
    std::error_code error;
    return std::filesystem::equivalent(first, second, error);
}

bool runsAlready(const std::string& bundle) {
    EnclosingBundles bundles;
    for (const UserProcess& process : processesOfThisUser()) {
        for (const std::string& program : process.programs) {
            const std::string& enclosing = bundles.of(program);
            if (!enclosing.empty() && isSameFolder(enclosing, bundle))
                return true;
        }
    }
    return false;
}

} // namespace

LinuxWorkspace::LinuxWorkspace(Bundles& bundles, Tasks& tasks, FileChanges& fileChanges, ShowItem showItem)
    : bundles_(bundles), tasks_(tasks), fileChanges_(fileChanges), showItem_(std::move(showItem)) {}

bool LinuxWorkspace::openURL(const foundation::URL& url) {
    const auto task = openingTask(url.absoluteString());
    return task && tasks_.launchDetached(*task);
}

bool LinuxWorkspace::launchApplication(const std::string& path) {
    const auto name = textValue(bundles_, path, "CFBundleExecutable");
    if (path.empty() || path.front() != '/' || !name || !foundation::path::isPlainName(*name))
        return false;
    const std::string executable = appendingPathComponent(path, "Contents/MacOS/" + *name);
    if (!isExecutableFile(executable))
        return false;
    return runsAlready(path) || tasks_.launchDetached({executable, {}, "/", nullptr, nullptr});
}

bool LinuxWorkspace::selectFile(const std::string& path, const std::string& /*root*/) {
    if (path.empty() || path.front() != '/' || !exists(path))
        return false;
    if (showItem_ && showItem_(foundation::URL::fileURLWithPath(path).absoluteString()))
        return true;
    const auto task = openingTask(deletingLastPathComponent(path));
    return task && endsWell(*task);
}

bool LinuxWorkspace::destroyFiles(const std::string& folder, const std::vector<std::string>& names) {
    return platform::destroyFiles(fileChanges_, folder, names);
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(const std::string& bundleIdentifier) {
    EnclosingBundles enclosing;
    std::map<std::string, bool> isWanted;
    const auto runsWantedBundle = [&](const std::string& program) {
        const std::string& bundle = enclosing.of(program);
        if (!bundle.empty() && !isWanted.contains(bundle))
            isWanted[bundle] = textValue(bundles_, bundle, "CFBundleIdentifier") == bundleIdentifier;
        return !bundle.empty() && isWanted[bundle];
    };
    std::vector<RunningApplication> applications;
    for (const UserProcess& process : processesOfThisUser())
        if (std::any_of(process.programs.begin(), process.programs.end(), runsWantedBundle))
            applications.push_back(process.identity);
    return applications;
}

void LinuxWorkspace::terminate(const RunningApplication& application) {
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, application.processId, 0)));
    // Checked once the process is held: only then does its number belong to it for good.
    if (!isRunning(application))
        return;
    // Old kernels and some containers know no process descriptors. The number is as good but for a moment.
    if (!process.isOpen() || ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0) != 0)
        ::kill(application.processId, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + quitWait;
    while (isRunning(application) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(quitWait / 10);
}

} // namespace platform
