#include "platform/qtcore/QtPreferences.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/qtcore/PreferencesFile.h"

#include <QString>

#include <cstdlib>

namespace platform {
namespace {

PreferencesFile fileOf(const std::string& folder, const std::string& domain) {
    return PreferencesFile(foundation::path::appendingPathComponent(folder, domain + ".conf"));
}

// Flags are written the way Qt programs write them. Bytes that are no UTF-8 cannot be stored and become marks.
std::string storedText(const foundation::Value& value) {
    if (value == foundation::Value(true)) {
        return "true";
    }
    return value == foundation::Value(false) ? "false" : QString::fromStdString(value.description()).toStdString();
}

} // namespace

std::string QtPreferences::userConfigurationFolder(const std::string& homeDirectory) {
    const char* folder = std::getenv("XDG_CONFIG_HOME");
    return folder != nullptr && *folder == '/' ? folder
                                               : foundation::path::appendingPathComponent(homeDirectory, ".config");
}

std::optional<foundation::Value> QtPreferences::appValue(const std::string& key, const std::string& domain) {
    if (!isPlainName(domain)) {
        return std::nullopt;
    }
    const Changes& changes = pending_[domain];
    const auto changed = changes.find(key);
    const auto text = changed != changes.end() ? changed->second : fileOf(folder_, domain).value(key);
    return text ? std::optional(foundation::Value(*text)) : std::nullopt;
}

void QtPreferences::setValue(const std::optional<foundation::Value>& value, const std::string& key,
                             const std::string& domain) {
    if (isPlainName(domain)) {
        pending_[domain][key] = value ? std::optional(storedText(*value)) : std::nullopt;
    }
}

bool QtPreferences::synchronize(const std::string& domain) {
    if (!isPlainName(domain)) {
        return false;
    }
    Changes& changes = pending_[domain];
    if (!changes.empty() && !fileOf(folder_, domain).apply(changes)) {
        return false;
    }
    changes.clear();
    return true;
}

} // namespace platform
