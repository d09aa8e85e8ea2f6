#pragma once

#include "platform/Preferences.h"

#include <map>
#include <utility>

// Settings in maps, by domain and key. What is changed is seen at once, and stored by synchronize.
class FakePreferences final : public platform::Preferences {
public:
    std::optional<foundation::Value> appValue(const std::string& key, const std::string& domain) override {
        const Changes& changes = pending_[domain];
        if (const auto changed = changes.find(key); changed != changes.end())
            return changed->second;
        const foundation::Value* value = member(stored[domain], key);
        return value == nullptr ? std::nullopt : std::optional(*value);
    }

    void setValue(const std::optional<foundation::Value>& value, const std::string& key,
                  const std::string& domain) override {
        pending_[domain][key] = value;
        ++writes;
    }

    void synchronize(const std::string& domain) override {
        for (const auto& [key, value] : std::exchange(pending_[domain], {})) {
            stored[domain].erase(key);
            if (value)
                stored[domain].emplace(key, *value);
        }
    }

    std::map<std::string, foundation::Value::Dictionary> stored;
    int writes = 0;

private:
    using Changes = std::map<std::string, std::optional<foundation::Value>>;

    std::map<std::string, Changes> pending_;
};
