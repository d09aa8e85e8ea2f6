#pragma once

#include "platform/ProcessInfo.h"

class FakeLocale final : public platform::Locale {
public:
    std::optional<std::string> countryCode() override { return country; }
    std::vector<std::string> preferredLanguages() override { return languages; }

    std::optional<std::string> country = "CH";
    std::vector<std::string> languages{"fr-CH", "de"};
};
