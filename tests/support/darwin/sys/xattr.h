#pragma once

#define XATTR_NOFOLLOW 0x0001

// The system here has a call of that name with other arguments.
extern "C" int removexattr(const char* path, const char* name, int options) __asm__("darwin_removexattr");
