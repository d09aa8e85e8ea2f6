#pragma once

#include "platform/Bundles.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// Bundles with XML property lists. The main bundle's dictionary and texts are read once, when first asked for; those of
// other bundles each time.
class QtBundles : public Bundles {
public:
    // The person's languages, best first. The main bundle is the one that the running program lies in, wherever that
    // was put, unless a path is given.
    explicit QtBundles(std::vector<std::string> preferredLanguages, std::string mainBundlePath = {});

    // Texts in a language for which the condition does not hold count as missing. Before the first text is asked for.
    void offerOnly(std::function<bool(const std::string& language)> condition) { canShow_ = std::move(condition); }

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
    std::function<bool(const std::string& language)> canShow_;
    std::once_flag informationRead_;
    foundation::Value::Dictionary information_;
    std::once_flag tableRead_;
    Table table_;
    std::string localization_ = "en";
};

} // namespace platform
