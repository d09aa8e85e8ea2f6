#pragma once

#include_next <spawn.h>

// Here the action closes what the flag would: everything above the one descriptor that is inherited.
#define POSIX_SPAWN_CLOEXEC_DEFAULT 0

// The system's own disk image tool is where TOLVIX_TEST_HDIUTIL says.
extern "C" int darwin_posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                                  const posix_spawnattr_t* attributes, char* const* arguments,
                                  char* const* environment);
#define posix_spawn darwin_posix_spawn

extern "C" int posix_spawn_file_actions_addinherit_np(posix_spawn_file_actions_t* actions, int descriptor);
