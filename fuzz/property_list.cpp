#include "platform/qtcore/PropertyList.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto value = platform::parsePropertyList(std::string(reinterpret_cast<const char*>(data), size)))
        (void)value->description();
    return 0;
}
