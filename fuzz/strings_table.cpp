#include "foundation/StringsTable.h"
#include "foundation/Unicode.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto table = foundation::parseStringsTable({reinterpret_cast<const char*>(data), size});
    if (!table)
        return 0;
    for (const auto& [key, text] : *table)
        require(foundation::isValidUtf8(key) && foundation::isValidUtf8(text));
    return 0;
}
