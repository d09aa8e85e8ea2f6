#pragma once

#include <cstddef>
#include <cstdint>

struct attrlist {
    std::uint16_t bitmapcount;
    std::uint16_t reserved;
    std::uint32_t commonattr;
    std::uint32_t volattr;
    std::uint32_t dirattr;
    std::uint32_t fileattr;
    std::uint32_t forkattr;
};

#define ATTR_BIT_MAP_COUNT 5
#define ATTR_DIR_MOUNTSTATUS 0x00000004
#define DIR_MNTSTATUS_MNTPOINT 0x00000001

extern "C" int fgetattrlist(int descriptor, void* list, void* buffer, std::size_t size, unsigned int options);
