#pragma once

#include "platform/Preferences.h"

#include <map>

// Settings in maps, by domain and key. Only what was synchronized is read back.
class FakePreferences final : public platform::Preferences {
public:
    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override {
        const foundation::Value* value = member(stored[domain], key);
        return value == nullptr ? std::nullopt : std::optional(*value);
    }

    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override {
        pending_[domain][key] = value;
        ++writes;
    }

    bool synchronize(const std::string& domain) override {
        const auto changes = std::move(pending_[domain]);
        pending_.erase(domain);
        if (readOnly)
            return false;
        for (const auto& [key, value] : changes) {
            stored[domain].erase(key);
            if (value)
                stored[domain].emplace(key, *value);
        }
        return true;
    }

    std::map<std::string, foundation::Value::Dictionary> stored;
    int writes = 0;
    bool readOnly = false;

private:
    std::map<std::string, std::map<std::string, std::optional<foundation::Value>>> pending_;
};
