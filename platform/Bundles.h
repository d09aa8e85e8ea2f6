#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

namespace platform {

// Application bundles: folders with an information dictionary and localized texts. Any thread.
class Bundles {
public:
    virtual ~Bundles() = default;

    // The folder of the running program's own bundle.
    virtual std::string mainBundlePath() = 0;

    // A value of the main bundle's information dictionary.
    virtual std::optional<foundation::Value> objectForInfoDictionaryKey(const std::string& key) = 0;

    // The information dictionary of the bundle at the path, empty when it has none that can be read. Nothing when the
    // path is no bundle; every folder is one.
    virtual std::optional<foundation::Value::Dictionary> bundleInformation(const std::string& path) = 0;

    // The text for the key in the main bundle's default table, in the person's language; without one, the given value,
    // and the key itself when that is empty.
    virtual std::string localizedString(const std::string& key, const std::string& value) = 0;
};

// A text of the main bundle's information dictionary; a value of another kind counts as absent.
inline std::optional<std::string> informationText(Bundles& bundles, const std::string& key) {
    const auto value = bundles.objectForInfoDictionaryKey(key);
    const std::string* text = value ? value->string() : nullptr;
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

} // namespace platform
