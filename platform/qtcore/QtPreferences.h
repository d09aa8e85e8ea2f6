#pragma once

#include "platform/Preferences.h"

#include <map>
#include <string>

namespace platform {

// Settings in one INI file per domain, "<domain>.conf", readable by other Qt programs. Values come back as texts. A
// domain that could name a file outside the folder has no values and cannot be written.
class QtPreferences : public Preferences {
public:
    // The folder need not exist.
    explicit QtPreferences(std::string folder) : folder_(std::move(folder)) {}

    // The folder where programs of this user keep their settings.
    static std::string userConfigurationFolder(const std::string& homeDirectory);

    // A change of this object that is not written yet counts as stored.
    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override;

    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override;

    // A file that is no settings file is kept as "<domain>.conf.broken", or with a number after that, before it is
    // replaced. On failure nothing has changed, and the next call tries again.
    bool synchronize(const std::string& domain) override;

private:
    using Changes = std::map<std::string, std::optional<std::string>>;

    const std::string folder_;
    std::map<std::string, Changes> pending_;
};

} // namespace platform
