#pragma once

#include "platform/ProcessInfo.h"

namespace platform {

// Language and region from the environment variables LANGUAGE, LC_ALL, LC_MESSAGES and LANG.
class LinuxLocale : public Locale {
public:
    std::optional<std::string> countryCode() override;

    // "en" where the environment names no language: the program's own texts then appear as they were written.
    std::vector<std::string> preferredLanguages() override;
};

} // namespace platform
