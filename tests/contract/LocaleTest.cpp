#include "platform/linux/LinuxLocale.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(Locale, GivesCountryAndLanguages) {
    const struct {
        const char* language; // LANGUAGE
        const char* all;      // LC_ALL
        const char* messages; // LC_MESSAGES
        const char* lang;     // LANG
        std::optional<std::string> country;
        std::vector<std::string> languages;
    } rows[] = {
        // Which variable decides.
        {"", "", "", "", std::nullopt, {"en"}},
        {"", "", "de_AT", "fr_FR", "AT", {"de-AT"}},
        {"", "it_IT", "de_AT", "fr_FR", "IT", {"it-IT"}},
        {"", "C", "", "fr_FR", std::nullopt, {"en"}},
        {"", "", "", "C.UTF-8", std::nullopt, {"en"}},
        // The list of languages, which the locale "C" switches off.
        {":pt_BR:es:pt_BR:C", "", "", "fr_FR", "FR", {"pt-BR", "es", "en", "fr-FR"}},
        {"fr", "C", "", "", std::nullopt, {"en"}},
        // Forms of names.
        {"", "", "", "es_419", "419", {"es-419"}},
        {"", "", "", "de_DE@euro", "DE", {"de-DE"}},
        {"", "", "", "sr_latn_rs", "RS", {"sr-Latn-RS"}},
        {"", "", "", "sr_RS.UTF-8@Latin", "RS", {"sr-Latn-RS"}},
        {"", "", "", "sr@latin", std::nullopt, {"sr-Latn"}},
        {"", "", "", "sr_Cyrl_RS@latin", "RS", {"sr-Cyrl-RS"}},
        {"", "", "", "uz_UZ@cyrillic", "UZ", {"uz-Cyrl-UZ"}},
        {"", "", "", "yue_HK", "HK", {"yue-HK"}},
        {"", "", "", "zh_CN.GB18030", "CN", {"zh-Hans"}},
        {"", "", "", "zh_TW", "TW", {"zh-Hant"}},
        {"", "", "", "zh_HK", "HK", {"zh-HK"}},
        {"", "", "", "no_NO", "NO", {"nb-NO"}},
        {"", "", "", "fr_FRA", std::nullopt, {"fr"}},
        {"", "", "", "../etc", std::nullopt, {"en"}},
    };
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        const auto& [language, all, messages, lang, country, languages] = rows[row];
        const tests::TestEnvironment environment{
            {"LANGUAGE", language}, {"LC_ALL", all}, {"LC_MESSAGES", messages}, {"LANG", lang}};
        platform::LinuxLocale locale;
        EXPECT_EQ(locale.countryCode(), country) << "row " << row;
        EXPECT_EQ(locale.preferredLanguages(), languages) << "row " << row;
    }
}

} // namespace
