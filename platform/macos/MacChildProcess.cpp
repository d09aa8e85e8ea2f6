#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/SystemCalls.h"

#include <csignal>
#include <dlfcn.h>
#include <spawn.h>
#include <unistd.h>

namespace platform {

namespace {

class SpawnAttributes {
public:
    SpawnAttributes() {
        sigset_t all{};
        sigset_t none{};
        sigfillset(&all);
        sigemptyset(&none);
        ::posix_spawnattr_init(&attributes_);
        // What is not named in the actions closes, also what libraries have left open.
        constexpr int flags =
            POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_CLOEXEC_DEFAULT;
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

// Systems before 10.15 lack the call. There the child begins in this program's own folder, which is "/" for a program
// that a person has opened.
int changeFolder(posix_spawn_file_actions_t& actions, const char* folder) {
    using Call = int (*)(posix_spawn_file_actions_t*, const char*);
    static const auto call = reinterpret_cast<Call>(::dlsym(RTLD_DEFAULT, "posix_spawn_file_actions_addchdir_np"));
    return call == nullptr ? 0 : call(&actions, folder);
}

// What happens in the child before the program takes over.
class SpawnActions {
public:
    SpawnActions(const TaskDescription& task, int standardInput, int standardOutput) {
        const auto require = [this](int result) { complete_ = complete_ && result == 0; };
        require(::posix_spawn_file_actions_init(&actions_));
        require(::posix_spawn_file_actions_adddup2(&actions_, standardInput, STDIN_FILENO));
        require(::posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO));
        require(::posix_spawn_file_actions_addinherit_np(&actions_, STDERR_FILENO));
        if (task.directory)
            require(changeFolder(actions_, task.directory->c_str()));
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return complete_ ? &actions_ : nullptr; }

private:
    posix_spawn_file_actions_t actions_{};
    bool complete_ = true;
};

} // namespace

pid_t spawnChild(const TaskDescription& task, int standardInput, int standardOutput) {
    const ArgumentVector arguments(task);
    const SpawnAttributes attributes;
    const SpawnActions actions(task, standardInput, standardOutput);
    pid_t child = -1;
    if (actions.get() == nullptr ||
        ::posix_spawn(&child, task.path.c_str(), actions.get(), attributes.get(), arguments.get(), environment()) != 0)
        return -1;
    return child;
}

} // namespace platform
