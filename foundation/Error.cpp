#include "foundation/Error.h"

#include "foundation/Text.h"

namespace foundation {

Error Error::withDescription(std::string domain, std::int64_t code, std::string text) {
    return {std::move(domain), code, {{localizedDescriptionKey, Value(std::move(text))}}};
}

std::string Error::description() const {
    std::string quoted = absentText;
    for (const char* key : {debugDescriptionKey, localizedDescriptionKey}) {
        const Value* value = member(userInfo, key);
        if (value != nullptr && value->string() != nullptr) {
            quoted = *value->string();
            break;
        }
    }
    std::string text =
        "Error Domain=" + visible(domain) + " Code=" + std::to_string(code) + " \"" + visible(quoted) + "\"";
    if (userInfo.empty())
        return text;
    text += " UserInfo={";
    const char* separator = "";
    for (const auto& [key, value] : userInfo) {
        text += separator + visible(key) + "=" + visible(value.description());
        separator = ", ";
    }
    return text + "}";
}

} // namespace foundation
