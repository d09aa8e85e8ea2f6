#pragma once

#include "platform/Preferences.h"

namespace platform {

// The settings that the system keeps for this user, on all machines.
class CocoaPreferences : public Preferences {
public:
    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override;
    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override;
    void synchronize(const std::string& domain) override;
};

} // namespace platform
