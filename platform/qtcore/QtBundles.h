#pragma once

#include "platform/Bundles.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

// Bundles with XML property lists. The main bundle's dictionary and texts are read once, when first asked for; those of
// other bundles each time.
class QtBundles : public Bundles {
public:
    // The person's languages, best first. The main bundle is the one that the running program lies in, wherever that
    // was put, unless a path is given.
    explicit QtBundles(std::vector<std::string> preferredLanguages, std::string mainBundlePath = {});

    std::string mainBundlePath() override { return mainBundlePath_; }
    std::optional<foundation::Value> objectForInfoDictionaryKey(const std::string& key) override;
    std::optional<foundation::Value::Dictionary> bundleInformation(const std::string& path) override;
    std::string localizedString(const std::string& key, const std::string& value) override;

    // The language of the main bundle's texts, such as "pt-BR"; "en" where there are none.
    std::string localization();

private:
    using Table = std::map<std::string, std::string>;

    const foundation::Value::Dictionary& mainInformation();
    void readTable();
    void findTable();

    const std::vector<std::string> preferredLanguages_;
    const std::string mainBundlePath_;
    std::once_flag informationRead_;
    foundation::Value::Dictionary information_;
    std::once_flag tableRead_;
    Table table_;
    std::string localization_ = "en";
};

} // namespace platform
