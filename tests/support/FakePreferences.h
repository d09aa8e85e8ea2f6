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
        auto& changed = pending_.try_emplace(domain, stored[domain]).first->second;
        changed.erase(key);
        if (value)
            changed.emplace(key, *value);
        ++writes;
    }

    void synchronize(const std::string& domain) override {
        if (const auto changed = pending_.extract(domain))
            stored[domain] = changed.mapped();
    }

    std::map<std::string, foundation::Value::Dictionary> stored;
    int writes = 0;

private:
    std::map<std::string, foundation::Value::Dictionary> pending_;
};
