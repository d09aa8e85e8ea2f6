#include "platform/linux/LinuxAuthorization.h"

#include "platform/linux/Elevation.h"
#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/ChildSignal.h"

#include <array>
#include <cerrno>
#include <memory>

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
    TaskDescription command = elevatedCommand(ref->elevation(), presentTool(tool), arguments);
    command.directory = "/";
    if (!isExpressible(command))
        return false;
    paths_->add(ref, arguments);
    // A tool that asks nothing needs no terminal; as a job of its own, Ctrl-C does not cut its work short.
    const bool asks = ref->elevation() != Elevation::Direct;
    return spawnChild(command, {.environment = elevatedEnvironment(ref->elevation()), .isOwnJob = !asks}) > 0;
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
