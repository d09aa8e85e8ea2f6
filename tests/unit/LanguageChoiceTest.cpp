#include "foundation/LanguageChoice.h"

#include <gtest/gtest.h>

// Which table serves whom.

using Texts = std::vector<std::string>;

TEST(LanguageChoiceTest, ServesEachPersonBest) {
    const Texts available{"de", "en",    "es", "es-419", "fr",      "he",     "id",
                          "nb", "pt-BR", "sr", "pt-PT",  "zh-Hans", "zh-Hant"};
    const std::pair<const char*, const char*> rows[] = {
        {"FR_ca", "fr"},      {"es-ES", "es"},   {"es-MX", "es-419"},  {"pt", "pt-BR"},
        {"pt-AO", "pt-PT"},   {"zh", "zh-Hans"}, {"zh-TW", "zh-Hant"}, {"zh-Hans-HK", "zh-Hans"},
        {"no", "nb"},         {"nn-NO", "nb"},   {"iw", "he"},         {"in-ID", "id"},
        {"sr-Latn-RS", "sr"}, {"tlh", "de"},     {"", "de"},           {"-Hant", "de"}};
    for (const auto& [preferred, chosen] : rows)
        EXPECT_EQ(foundation::chooseLocalization(available, {preferred}, "de"), chosen) << preferred;
    EXPECT_EQ(foundation::chooseLocalization(available, {}, "de"), "de");
    EXPECT_EQ(foundation::chooseLocalization(available, {"xx", "fr-CH", "en"}, "de"), "fr")
        << "a worse match of a better language";
}

TEST(LanguageChoiceTest, EnglishIsTheLastResort) {
    EXPECT_EQ(foundation::chooseLocalization({"fr", "en"}, {"xx"}, "yy"), "en");
    EXPECT_EQ(foundation::chooseLocalization({"fr"}, {"xx"}, "yy"), std::nullopt);
    EXPECT_EQ(foundation::chooseLocalization({"zh"}, {"zh-TW"}, "yy"), std::nullopt)
        << "the wrong script serves nobody";
    EXPECT_EQ(foundation::chooseLocalization({"es"}, {"es-MX"}, "yy"), "es");
}
