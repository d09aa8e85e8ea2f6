#include "platform/qtcore/QtPreferences.h"

#include "foundation/PathString.h"
#include "platform/linux/Environment.h"
#include "platform/qtcore/SettingsText.h"

namespace platform {

namespace {

// Flags are written the way Qt programs write them.
std::string storedText(const foundation::Value& value) {
    if (value == foundation::Value(true))
        return "true";
    return value == foundation::Value(false) ? "false" : value.description();
}

} // namespace

std::string QtPreferences::userConfigurationFolder(const std::string& homeDirectory) {
    std::string folder = environment::value("XDG_CONFIG_HOME");
    return folder.starts_with('/') ? folder : foundation::path::appendingPathComponent(homeDirectory, ".config");
}

PreferencesFile QtPreferences::fileOf(const std::string& domain) const {
    return PreferencesFile(foundation::path::appendingPathComponent(folder_, domain + ".conf"));
}

QtPreferences::Domain* QtPreferences::read(const std::string& domain) {
    if (!foundation::path::isPlainName(domain))
        return nullptr;
    const auto [place, isNew] = domains_.try_emplace(domain);
    if (isNew)
        place->second.bytes = fileOf(domain).read().value_or("");
    return &place->second;
}

std::optional<foundation::Value> QtPreferences::appValue(const std::string& key, const std::string& domain) {
    const Domain* known = read(domain);
    if (known == nullptr)
        return std::nullopt;
    const auto changed = known->changes.find(key);
    const auto text = changed != known->changes.end() ? changed->second.value : SettingsText(known->bytes).value(key);
    return text ? std::optional(foundation::Value(*text)) : std::nullopt;
}

void QtPreferences::setValue(const std::optional<foundation::Value>& value, const std::string& key,
                             const std::string& domain) {
    Domain* known = read(domain);
    if (known != nullptr)
        known->changes[key] = {value ? std::optional(storedText(*value)) : std::nullopt,
                               !SettingsText(known->bytes).value(key)};
}

void QtPreferences::synchronize(const std::string& domain) {
    Domain* known = read(domain);
    if (known == nullptr || known->changes.empty())
        return;
    auto bytes = fileOf(domain).apply(known->changes);
    if (!bytes)
        return;
    known->bytes = *std::move(bytes);
    known->changes.clear();
}

} // namespace platform
