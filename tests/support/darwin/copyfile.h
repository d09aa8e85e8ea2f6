#pragma once

#include <cstdint>

using copyfile_state_t = struct CopyfileState*;
using copyfile_flags_t = std::uint32_t;

#define COPYFILE_ACL (1 << 0)
#define COPYFILE_XATTR (1 << 2)
#define COPYFILE_DATA (1 << 3)
#define COPYFILE_STATE_COPIED 8

extern "C" {
copyfile_state_t copyfile_state_alloc();
int copyfile_state_free(copyfile_state_t state);
int copyfile_state_get(copyfile_state_t state, std::uint32_t flag, void* destination);
int fcopyfile(int from, int to, copyfile_state_t state, copyfile_flags_t flags);
}
