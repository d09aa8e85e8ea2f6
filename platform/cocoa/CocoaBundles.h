#pragma once

#include "platform/Bundles.h"
#include "platform/cocoa/Retained.h"

#import <Foundation/Foundation.h>

#include <string>

namespace platform {

// Bundles as the system reads them. It chooses the language of the main bundle's texts, so that they fit those that
// come from the system itself. Other bundles are read anew each time, because the system remembers what it has once
// seen at a path.
class CocoaBundles : public Bundles {
public:
    // The main bundle is the running program's, unless a path is given.
    explicit CocoaBundles(const std::string& mainBundlePath = {});

    std::string mainBundlePath() override;
    std::optional<foundation::Value> objectForInfoDictionaryKey(const std::string& key) override;
    std::optional<foundation::Value::Dictionary> bundleInformation(const std::string& path) override;
    std::string localizedString(const std::string& key, const std::string& value) override;

private:
    Retained<NSBundle> main_;
};

} // namespace platform
