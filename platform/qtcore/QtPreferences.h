#pragma once

#include "platform/Preferences.h"
#include "platform/qtcore/PreferencesFile.h"

#include <map>
#include <string>
#include <utility>

namespace platform {

// Settings in one INI file per domain, "<domain>.conf", in the form of Qt programs. Values come back as texts. A file
// is read when its domain is first asked for, and again when it is written. What else stands in it stays as it is. A
// domain that could name a file outside the folder has no values and cannot be written.
class QtPreferences final : public Preferences {
public:
    // The folder need not exist.
    explicit QtPreferences(std::string folder) : folder_(std::move(folder)) {}

    // The folder where programs of this user keep their settings.
    static std::string userConfigurationFolder(const std::string& homeDirectory);

    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override;

    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override;

    // Where a key had no value and another program has stored one since, that one stays. What cannot be written counts
    // for this object alone.
    void synchronize(const std::string& domain) override;

private:
    struct Domain {
        // What the file held when it was last looked at.
        std::string bytes;
        // What is not in the file yet.
        PreferencesFile::Changes changes;
    };

    PreferencesFile fileOf(const std::string& domain) const;
    // Null for a domain that cannot be.
    Domain* read(const std::string& domain);

    const std::string folder_;
    std::map<std::string, Domain> domains_;
};

} // namespace platform
