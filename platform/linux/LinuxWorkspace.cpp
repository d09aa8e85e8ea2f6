#include "platform/linux/LinuxWorkspace.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/linux/ProcessTable.h"
#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {
namespace {

using foundation::path::appendingPathComponent;
using foundation::path::deletingLastPathComponent;

constexpr const char* informationFile = "Contents/Info.plist";
constexpr int quitWaitMilliseconds = 50;

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
        if (candidate.front() == '/' && isExecutableFile(candidate)) {
            return candidate;
        }
        entries.remove_prefix(std::min(end + 1, entries.size()));
    }
    return {};
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
        if (known != found_.end()) {
            return known->second;
        }
        std::string bundle;
        struct stat status {};
        if (::stat(appendingPathComponent(folder, informationFile).c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            bundle = folder;
        } else if (folder.size() > 1) {
            bundle = ofFolder(deletingLastPathComponent(folder));
        }
        return found_.emplace(folder, std::move(bundle)).first->second;
    }

    std::map<std::string, std::string> found_;
};

bool isSameFolder(const std::string& first, const std::string& second) {
    struct stat one {};
    struct stat other {};
    return ::stat(first.c_str(), &one) == 0 && ::stat(second.c_str(), &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

bool runsAlready(const std::string& bundle) {
    EnclosingBundles bundles;
    for (const UserProcess& process : processesOfThisUser()) {
        for (const std::string& program : process.programs) {
            const std::string& enclosing = bundles.of(program);
            if (!enclosing.empty() && isSameFolder(enclosing, bundle)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

LinuxWorkspace::LinuxWorkspace(Bundles& bundles, Tasks& tasks, FileChanges& fileChanges, ShowItem showItem)
    : bundles_(bundles), tasks_(tasks), fileChanges_(fileChanges), showItem_(std::move(showItem)) {}

bool LinuxWorkspace::openURL(const foundation::URL& url) {
    return openWithDesktop(url.absoluteString());
}

// A target that looks like an option would be taken for one.
bool LinuxWorkspace::openWithDesktop(const std::string& target) {
    if (target.empty() || target.front() == '-') {
        return false;
    }
    const std::string opener = programInSearchPath("xdg-open");
    return !opener.empty() && tasks_.launchDetached({opener, {target}, "/", nullptr, nullptr});
}

bool LinuxWorkspace::launchApplication(const std::string& path) {
    const auto name = textValue(bundles_, path, "CFBundleExecutable");
    if (path.empty() || path.front() != '/' || !name || !isPlainName(*name)) {
        return false;
    }
    const std::string executable = appendingPathComponent(path, "Contents/MacOS/" + *name);
    if (!isExecutableFile(executable)) {
        return false;
    }
    return runsAlready(path) || tasks_.launchDetached({executable, {}, "/", nullptr, nullptr});
}

bool LinuxWorkspace::selectFile(const std::string& path, const std::string& /*root*/) {
    if (path.empty() || path.front() != '/' || !exists(path)) {
        return false;
    }
    if (showItem_ && showItem_(foundation::URL::fileURLWithPath(path).absoluteString())) {
        return true;
    }
    return openWithDesktop(deletingLastPathComponent(path));
}

bool LinuxWorkspace::destroyFiles(const std::string& folder, const std::vector<std::string>& names) {
    if (folder.empty() || !std::all_of(names.begin(), names.end(), isPlainName)) {
        return false;
    }
    bool allGone = true;
    for (const std::string& name : names) {
        const std::string path = appendingPathComponent(folder, name);
        allGone = exists(path) && fileChanges_.removeItem(path) && allGone;
    }
    return allGone;
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(const std::string& bundleIdentifier) {
    EnclosingBundles enclosing;
    std::map<std::string, bool> isWanted;
    const auto runsWantedBundle = [&](const std::string& program) {
        const std::string& bundle = enclosing.of(program);
        if (!bundle.empty() && !isWanted.contains(bundle)) {
            isWanted[bundle] = textValue(bundles_, bundle, "CFBundleIdentifier") == bundleIdentifier;
        }
        return !bundle.empty() && isWanted[bundle];
    };
    std::vector<RunningApplication> applications;
    for (const UserProcess& process : processesOfThisUser()) {
        if (std::any_of(process.programs.begin(), process.programs.end(), runsWantedBundle)) {
            applications.push_back(process.identity);
        }
    }
    return applications;
}

void LinuxWorkspace::terminate(const RunningApplication& application) {
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, application.processId, 0)));
    // Checked once the process is held: only then does its number belong to it for good.
    if (!process.isOpen() || !isRunning(application)) {
        return;
    }
    ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
    struct pollfd ended {
        process.get(), POLLIN, 0
    };
    ::poll(&ended, 1, quitWaitMilliseconds);
}

} // namespace platform
