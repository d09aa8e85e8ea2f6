#pragma once

#include "platform/ProcessInfo.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <string>

namespace tests {

// What every process knows of itself and of the person. A `World` has `info` and `locale`.
template <class World>
class SurroundingsContract : public testing::Test {
protected:
    World world_;
};
TYPED_TEST_SUITE_P(SurroundingsContract);

TYPED_TEST_P(SurroundingsContract, TextsAreUniqueAndFoldersAbsolute) {
    platform::ProcessInfo& info = this->world_.info;
    std::set<std::string> seen;
    for (int count = 0; count < 100; ++count) {
        EXPECT_TRUE(std::regex_match(*seen.insert(info.makeUUID().value()).first,
                                     std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")));
        EXPECT_EQ(seen.insert(info.globallyUniqueString()).first->find('/'), std::string::npos);
    }
    EXPECT_EQ(seen.size(), 200U);
    EXPECT_TRUE(std::regex_match(info.temporaryDirectory(), std::regex("/.*[^/]/")));
    EXPECT_EQ(info.homeDirectory().front(), '/');
    EXPECT_FALSE(info.arguments().empty());
}

TYPED_TEST_P(SurroundingsContract, ThereIsAlwaysALanguage) {
    for (const std::string& language : this->world_.locale.preferredLanguages())
        EXPECT_TRUE(std::regex_match(language, std::regex("[a-z]{2,3}(-[A-Za-z0-9]+)*"))) << language;
    EXPECT_FALSE(this->world_.locale.preferredLanguages().empty());
    const auto country = this->world_.locale.countryCode();
    EXPECT_TRUE(!country || std::regex_match(*country, std::regex("[A-Z]{2}|[0-9]{3}"))) << *country;
}

REGISTER_TYPED_TEST_SUITE_P(SurroundingsContract, TextsAreUniqueAndFoldersAbsolute, ThereIsAlwaysALanguage);

} // namespace tests
