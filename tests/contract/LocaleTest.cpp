#include "platform/linux/LinuxLocale.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

struct Case {
    std::string language; // LANGUAGE
    std::string all;      // LC_ALL
    std::string messages; // LC_MESSAGES
    std::string lang;     // LANG
    std::optional<std::string> country;
    Names languages;
};

void PrintTo(const Case& variables, std::ostream* stream) {
    *stream << variables.language << ' ' << variables.all << ' ' << variables.messages << ' ' << variables.lang;
}

class LocaleOfEnvironment : public ::testing::TestWithParam<Case> {};

TEST_P(LocaleOfEnvironment, givesCountryAndLanguages) {
    const Case& expected = GetParam();
    const tests::TestEnvironment environment{{"LANGUAGE", expected.language},
                                             {"LC_ALL", expected.all},
                                             {"LC_MESSAGES", expected.messages},
                                             {"LANG", expected.lang}};
    platform::LinuxLocale locale;
    EXPECT_EQ(locale.countryCode(), expected.country);
    EXPECT_EQ(locale.preferredLanguages(), expected.languages);
}

INSTANTIATE_TEST_SUITE_P(
    Locale, LocaleOfEnvironment,
    ::testing::Values(
        // Which variable decides.
        Case{"", "", "", "", std::nullopt, {"en"}}, Case{"", "", "", "fr_CA.UTF-8", "CA", {"fr-CA"}},
        Case{"", "", "de_AT", "fr_FR", "AT", {"de-AT"}}, Case{"", "it_IT", "de_AT", "fr_FR", "IT", {"it-IT"}},
        Case{"", "C", "", "fr_FR", std::nullopt, {"en"}}, Case{"", "", "", "POSIX", std::nullopt, {"en"}},
        Case{"", "", "", "C.UTF-8", std::nullopt, {"en"}},
        // The list of languages, which the locale "C" switches off.
        Case{"pt_BR:es:pt_BR", "", "", "fr_FR", "FR", {"pt-BR", "es", "fr-FR"}},
        Case{"::en_GB:", "", "", "fr_FR", "FR", {"en-GB", "fr-FR"}}, Case{"C", "", "", "fr_FR", "FR", {"en", "fr-FR"}},
        Case{"fr", "C", "", "", std::nullopt, {"en"}},
        // Forms of names.
        Case{"", "", "", "fr", std::nullopt, {"fr"}}, Case{"", "", "", "es_419", "419", {"es-419"}},
        Case{"", "", "", "de_DE@euro", "DE", {"de-DE"}}, Case{"", "", "", "sr_latn_rs", "RS", {"sr-Latn-RS"}},
        Case{"", "", "", "FR_fr", "FR", {"fr-FR"}}, Case{"", "", "", "zh_CN.GB18030", "CN", {"zh-Hans"}},
        Case{"", "", "", "zh_TW", "TW", {"zh-Hant"}}, Case{"", "", "", "zh_HK", "HK", {"zh-HK"}},
        Case{"", "", "", "no_NO", "NO", {"nb-NO"}}, Case{"", "", "", "iw_IL", "IL", {"he-IL"}},
        Case{"", "", "", "in_ID", "ID", {"id-ID"}}, Case{"", "", "", "fr_", std::nullopt, {"fr"}},
        Case{"", "", "", "fr_FRA", std::nullopt, {"fr"}}, Case{"", "", "", "es_4190", std::nullopt, {"es"}},
        Case{"", "", "", "../etc", std::nullopt, {"en"}}));

} // namespace
