#include "foundation/LanguageChoice.h"

#include <gtest/gtest.h>

// Which table serves whom.

using Texts = std::vector<std::string>;

TEST(LanguageChoiceTest, ServesEachPersonBest) {
    const Texts available{"de", "en",    "es", "es-419", "fr",      "he",     "id",
                          "nb", "pt-BR", "sr", "pt-PT",  "zh-Hans", "zh-Hant"};
    struct Row {
        const char* name;
        Texts preferred;
        const char* chosen;
    };
    const Row rows[] = {{"same language", {"fr"}, "fr"},
                        {"a region decides nothing", {"fr-CH"}, "fr"},
                        {"underscore and case", {"FR_ca"}, "fr"},
                        {"first that is there", {"xx", "de-AT", "fr"}, "de"},
                        {"a worse match of a better language", {"de-CH", "en"}, "de"},
                        {"Spanish of Spain", {"es-ES"}, "es"},
                        {"Spanish of the Americas", {"es-MX"}, "es-419"},
                        {"Portuguese without a region", {"pt"}, "pt-BR"},
                        {"Portuguese of Angola", {"pt-AO"}, "pt-PT"},
                        {"Chinese without a script", {"zh"}, "zh-Hans"},
                        {"Chinese of Taiwan", {"zh-TW"}, "zh-Hant"},
                        {"Chinese of Hong Kong in simplified script", {"zh-Hans-HK"}, "zh-Hans"},
                        {"Norwegian by its old name", {"no"}, "nb"},
                        {"the other Norwegian", {"nn-NO"}, "nb"},
                        {"Hebrew by its old name", {"iw"}, "he"},
                        {"Indonesian by its old name", {"in-ID"}, "id"},
                        {"Serbian in another script", {"sr-Latn-RS"}, "sr"},
                        {"nobody's language", {"tlh"}, "de"},
                        {"no language at all", {}, "de"},
                        {"no language but an empty name", {""}, "de"},
                        {"a script without a language", {"-Hant"}, "de"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(foundation::chooseLocalization(available, row.preferred, "de"), row.chosen);
    }
}

TEST(LanguageChoiceTest, EnglishIsTheLastResort) {
    EXPECT_EQ(foundation::chooseLocalization({"fr", "en"}, {"xx"}, "yy"), "en");
    EXPECT_EQ(foundation::chooseLocalization({"fr"}, {"xx"}, "yy"), std::nullopt);
    EXPECT_EQ(foundation::chooseLocalization({"zh"}, {"zh-TW"}, "yy"), std::nullopt)
        << "the wrong script serves nobody";
    EXPECT_EQ(foundation::chooseLocalization({"es"}, {"es-MX"}, "yy"), "es");
}
