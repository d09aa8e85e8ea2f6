#pragma once

#include <cstdint>

extern "C" int fclonefileat(int from, int toFolder, const char* to, std::uint32_t flags);
