#include "foundation/JSON.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

namespace {

// Texts that were read have to come back unchanged from what is written of them.
void writeAndReadAgain(const foundation::Value::Dictionary& dictionary) {
    std::map<std::string, std::string> texts;
    for (const auto& [key, value] : dictionary)
        if (const auto* text = value.string())
            texts.emplace(key, *text);
    const auto written = foundation::serializeJSON(texts);
    require(static_cast<bool>(written));
    const auto read = foundation::parseJSON(*written);
    require(static_cast<bool>(read) && read->dictionary() != nullptr);
    require(read->dictionary()->size() == texts.size());
    for (const auto& [key, text] : texts)
        require(*foundation::member(*read->dictionary(), key)->string() == text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = foundation::parseJSON({reinterpret_cast<const char*>(data), size});
    if (!value)
        return 0;
    require(value->array() != nullptr || value->dictionary() != nullptr);
    (void)value->description();
    if (value->dictionary() != nullptr)
        writeAndReadAgain(*value->dictionary());
    return 0;
}
