#include "platform/qtcore/QtPreferences.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/qtcore/PreferencesFile.h"

#include <QString>

#include <cstdlib>
#include <memory>
#include <utility>

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

void QtPreferences::synchronize(const std::string& domain) {
    if (isPlainName(domain) && !pending_[domain].empty()) {
        due_.insert(domain);
        writeNext();
    }
}

void QtPreferences::writeNext() {
    if (writing_ || due_.empty()) {
        return;
    }
    writing_ = true;
    const std::string domain = due_.extract(due_.begin()).value();
    const Changes changes = pending_[domain];
    const auto result = std::make_shared<std::promise<void>>();
    lastWrite_ = result->get_future();
    threads_.performInBackground([this, domain, changes, result] {
        const bool success = fileOf(folder_, domain).apply(changes);
        result->set_value();
        threads_.performOnMain([this, domain, changes, success] {
            writing_ = false;
            if (success) {
                written(domain, changes);
            }
            writeNext();
        });
    });
}

// From here on the file counts again, but for what has been changed in the meantime.
void QtPreferences::written(const std::string& domain, const Changes& changes) {
    Changes& pending = pending_[domain];
    for (const auto& [key, value] : changes) {
        const auto found = pending.find(key);
        if (found != pending.end() && found->second == value) {
            pending.erase(found);
        }
    }
}

void QtPreferences::finishWriting(std::chrono::milliseconds limit) {
    if (writing_ && lastWrite_.wait_for(limit) != std::future_status::ready) {
        return;
    }
    for (const std::string& domain : std::exchange(due_, {})) {
        fileOf(folder_, domain).apply(pending_[domain]);
    }
}

} // namespace platform
