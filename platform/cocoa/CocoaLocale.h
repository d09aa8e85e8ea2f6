#pragma once

#include "platform/ProcessInfo.h"

namespace platform {

// Language and region of the system's settings.
class CocoaLocale : public Locale {
public:
    std::optional<std::string> countryCode() override;
    std::vector<std::string> preferredLanguages() override;
};

} // namespace platform
