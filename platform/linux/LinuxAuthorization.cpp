#include "platform/linux/LinuxAuthorization.h"

#include "platform/linux/Elevation.h"
#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildSignal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <memory>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {
namespace {

class LinuxAuthorizationRef : public AuthorizationRef {
public:
    LinuxAuthorizationRef(Elevation elevation, std::shared_ptr<PathsInUse> paths)
        : elevation_(elevation), paths_(std::move(paths)) {}
    ~LinuxAuthorizationRef() override { paths_->release(this); }
    LinuxAuthorizationRef(const LinuxAuthorizationRef&) = delete;
    LinuxAuthorizationRef& operator=(const LinuxAuthorizationRef&) = delete;

    Elevation elevation() const { return elevation_; }

private:
    const Elevation elevation_;
    const std::shared_ptr<PathsInUse> paths_;
};

// Where the tool of that name lies on systems that do not keep it at its usual path.
std::string presentTool(const std::string& tool) {
    struct Place {
        const char* usual;
        const char* other;
    };
    static constexpr std::array<Place, 1> places{{{"/usr/sbin/chown", "/usr/bin/chown"}}};
    for (const Place& place : places)
        if (tool == place.usual && ::access(place.usual, X_OK) != 0)
            return place.other;
    return tool;
}

// How the child starts: nothing inherited but standard error and the session, whose terminal sudo may ask on.
class SpawnSettings {
public:
    explicit SpawnSettings(Elevation elevation) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addchdir_np(&actions_, "/");
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int changedByThisProgram : {SIGPIPE, SIGCHLD, SIGXFSZ})
            ::sigaddset(&signals, changedByThisProgram);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        // A tool that asks nothing needs no terminal; in a group of its own, Ctrl-C does not cut its work short.
        const int group = elevation == Elevation::Direct ? POSIX_SPAWN_SETPGROUP : 0;
        ::posix_spawnattr_setflags(&attributes_,
                                   static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
    }
    ~SpawnSettings() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

std::int32_t LinuxAuthorization::create(std::shared_ptr<AuthorizationRef>& authorization) {
    const Elevation elevation = chooseElevation(currentElevationFacts());
    if (elevation == Elevation::None)
        return toolExecuteFailure;
    authorization = std::make_shared<LinuxAuthorizationRef>(elevation, paths_);
    return success;
}

bool LinuxAuthorization::executeWithPrivileges(AuthorizationRef& authorization, const std::string& tool,
                                               const std::vector<std::string>& arguments) {
    const auto* ref = dynamic_cast<const LinuxAuthorizationRef*>(&authorization);
    if (ref == nullptr || tool.rfind('/', 0) != 0)
        return false;
    const TaskDescription command = elevatedCommand(ref->elevation(), presentTool(tool), arguments);
    if (!isExpressible(command))
        return false;
    const ArgumentVector words(command);
    std::vector<std::string> environment = elevatedEnvironment(ref->elevation());
    std::vector<char*> variables;
    variables.reserve(environment.size() + 1);
    for (std::string& variable : environment)
        variables.push_back(variable.data());
    variables.push_back(nullptr);
    paths_->add(ref, arguments);
    const SpawnSettings settings(ref->elevation());
    pid_t child = 0;
    return ::posix_spawn(&child, command.path.c_str(), settings.actions(), settings.attributes(), words.get(),
                         variables.data()) == 0;
}

// Any child, but of this thread alone: another thread may be waiting for a child of its own at the same time.
std::optional<int> LinuxAuthorization::wait() {
    int status = 0;
    while (::waitpid(-1, &status, __WNOTHREAD) < 0)
        if (errno != EINTR)
            return std::nullopt;
    return status;
}

std::vector<std::string> LinuxAuthorization::pathsInUse() const {
    return paths_->all();
}

std::shared_ptr<void> LinuxAuthorization::useDefaultChildSignal() {
    return std::make_shared<DefaultChildSignal>();
}

} // namespace platform
