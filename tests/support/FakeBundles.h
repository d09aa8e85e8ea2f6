#pragma once

#include "platform/Bundles.h"
#include "tests/support/FakeFiles.h"

// A main bundle and other bundles made of maps. Every folder is a bundle.
class FakeBundles final : public platform::Bundles {
public:
    explicit FakeBundles(FakeFiles& files) : files_(files) {}

    std::string mainBundlePath() override { return path; }

    std::optional<foundation::Value> objectForInfoDictionaryKey(const std::string& key) override {
        const foundation::Value* value = member(information, key);
        return value == nullptr ? std::nullopt : std::optional(*value);
    }

    std::optional<foundation::Value::Dictionary> bundleInformation(const std::string& bundlePath) override {
        if (!files_.contentsOfDirectory(bundlePath))
            return std::nullopt;
        return others[bundlePath];
    }

    std::string localizedString(const std::string& key, const std::string& value) override {
        const auto found = table.find(key);
        if (found != table.end())
            return found->second;
        return value.empty() ? key : value;
    }

    std::string path = "/Downloads/Tolvix Installer.app";
    foundation::Value::Dictionary information{
        {"TXBinariesHost", foundation::Value("binaries.example")},
        {"TXInstallerLogHost", foundation::Value("log.example")},
        {"TXSupportHost", foundation::Value("support.example")},
        {"TXStoreHost", foundation::Value("store.example")},
        {"TXStoreIdentifier", foundation::Value("42")},
        {"TXProductBundleIdentifier", foundation::Value("example.tolvix.desktop")},
        {"TXAgentPreferencesDomain", foundation::Value("example.tolvix.agent")},
        {"CFBundleShortVersionString", foundation::Value("2.0.1")},
        {"CFBundleVersion", foundation::Value("2001")}};
    std::map<std::string, foundation::Value::Dictionary> others; // by path
    std::map<std::string, std::string> table;

private:
    FakeFiles& files_;
};
