#include "platform/posix/ChildProcess.h"

#include "platform/posix/ArgumentVector.h"

#include <csignal>
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
        ::posix_spawnattr_setflags(&attributes_,
                                   POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
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

// What happens in the child before the program takes over.
class SpawnActions {
public:
    SpawnActions(const TaskDescription& task, int standardInput, int standardOutput) {
        const auto require = [this](int result) { complete_ = complete_ && result == 0; };
        require(::posix_spawn_file_actions_init(&actions_));
        require(::posix_spawn_file_actions_adddup2(&actions_, standardInput, STDIN_FILENO));
        require(::posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO));
        // All of ours close by themselves; those of libraries may not.
        require(::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
        if (task.directory)
            require(::posix_spawn_file_actions_addchdir_np(&actions_, task.directory->c_str()));
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
        ::posix_spawn(&child, task.path.c_str(), actions.get(), attributes.get(), arguments.get(), environ) != 0)
        return -1;
    return child;
}

} // namespace platform
