#pragma once

#include_next <sys/stat.h>

#define st_atimespec st_atim
#define st_mtimespec st_mtim
// Files have no flags here; this is 0 for a regular file.
#define st_flags st_rdev
#define UF_IMMUTABLE 0x00000002
#define UF_APPEND 0x00000004
#define SF_IMMUTABLE 0x00020000
#define SF_APPEND 0x00040000
