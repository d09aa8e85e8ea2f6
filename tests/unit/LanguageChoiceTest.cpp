#include "foundation/LanguageChoice.h"

#include <gtest/gtest.h>

// Which table serves whom.

using Texts = std::vector<std::string>;

TEST(LanguageChoiceTest, ServesEachPersonBest) {
    const Texts available{"de", "en",      "es", "es-419", "fr",    "he",      "hr",     "id",
                          "nb", "sr-Latn", "sr", "pt-BR",  "pt-PT", "zh-Hans", "zh-Hant"};
    const std::pair<const char*, Texts> rows[] = {
        {"fr", {"FR_ca"}},
        {"es", {"es-ES"}},
        {"es-419", {"es-MX"}},
        {"pt-BR", {"pt"}},
        {"pt-PT", {"pt-AO"}},
        {"nb", {"no", "nn-NO"}},
        {"he", {"iw"}},
        {"id", {"in-ID"}},
        {"de", {"tlh", "", "-Hant"}},
        {"hr", {"bs", "bs-BA", "bs-Latn-BA"}},
        {"sr", {"sr", "sr-RS", "sr-Cyrl-RS", "sh-Cyrl"}},
        {"sr-Latn", {"sr-Latn", "sr-Latn-RS", "sh", "sh-RS"}},
        {"zh-Hans", {"zh", "zh-SG", "zh-Hans-HK", "cmn-Hans", "yue-CN"}},
        {"zh-Hant", {"zh-TW", "yue", "yue-HK", "nan-TW", "nan-Latn-TW", "hak-TW", "cmn", "cmn-TW"}},
    };
    for (const auto& [chosen, people] : rows)
        for (const std::string& preferred : people)
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
