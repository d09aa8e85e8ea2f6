#include "foundation/Error.h"

#include "foundation/MessageText.h"

namespace foundation {

namespace {

// Domain, texts and information can be a server's whole answer.
constexpr std::size_t longestDescription = 4096;

} // namespace

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
    std::string text = "Error Domain=" + visible(clipped(domain, longestDescription)) +
                       " Code=" + std::to_string(code) + " \"" + visible(clipped(quoted, longestDescription)) + "\"";
    const char* separator = " UserInfo={";
    for (const auto& [key, value] : userInfo) {
        if (text.size() > longestDescription)
            break;
        text += separator + visible(clipped(key, longestDescription)) + "=";
        text += value.oneLineDescription(longestDescription);
        separator = ", ";
    }
    return clipped(userInfo.empty() ? text : text + "}", longestDescription);
}

} // namespace foundation
