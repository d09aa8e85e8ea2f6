#include "foundation/LanguageChoice.h"

#include <gtest/gtest.h>

// Which table serves whom.

using Texts = std::vector<std::string>;

TEST(LanguageChoiceTest, ServesEachPersonBest) {
    const Texts available{"de", "en",      "es", "es-419", "fr",    "he",      "hr",     "id",
                          "nb", "sr-Latn", "sr", "pt-BR",  "pt-PT", "zh-Hans", "zh-Hant"};
    const std::pair<const char*, const char*> rows[] = {{"FR_ca", "fr"},
                                                        {"es-ES", "es"},
                                                        {"es-MX", "es-419"},
                                                        {"pt", "pt-BR"},
                                                        {"pt-AO", "pt-PT"},
                                                        {"no", "nb"},
                                                        {"nn-NO", "nb"},
                                                        {"iw", "he"},
                                                        {"in-ID", "id"},
                                                        {"tlh", "de"},
                                                        {"", "de"},
                                                        {"-Hant", "de"},
                                                        {"bs", "hr"},
                                                        {"bs-BA", "hr"},
                                                        {"bs-Latn-BA", "hr"},
                                                        {"sr", "sr"},
                                                        {"sr-RS", "sr"},
                                                        {"sr-Cyrl-RS", "sr"},
                                                        {"sr-Latn", "sr-Latn"},
                                                        {"sr-Latn-RS", "sr-Latn"},
                                                        {"sh", "sr-Latn"},
                                                        {"sh-RS", "sr-Latn"},
                                                        {"sh-Cyrl", "sr"},
                                                        {"zh", "zh-Hans"},
                                                        {"zh-TW", "zh-Hant"},
                                                        {"zh-SG", "zh-Hans"},
                                                        {"zh-Hans-HK", "zh-Hans"},
                                                        {"yue", "zh-Hant"},
                                                        {"yue-HK", "zh-Hant"},
                                                        {"nan-TW", "zh-Hant"},
                                                        {"nan-Latn-TW", "zh-Hant"},
                                                        {"hak-TW", "zh-Hant"},
                                                        {"cmn", "zh-Hant"},
                                                        {"cmn-TW", "zh-Hant"},
                                                        {"cmn-Hans", "zh-Hans"},
                                                        {"yue-CN", "zh-Hans"}};
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
    EXPECT_EQ(foundation::chooseLocalization({"en", "sr"}, {"sr-Latn"}, "en"), "sr");
}
