#pragma once

#include "platform/Bundles.h"

#include <gtest/gtest.h>
#include <string>

namespace tests {

// What all bundles do. A `World` has `bundles`, whose main one has the flag "Flag", the text "Text" and the localized
// text "KEY", all saying yes, and lies at `mainPath()`; a `folder()`; `addFile(path)`; and `setVersion(path, version)`,
// which makes a folder with that version and nothing else in its information.
template <class World>
class BundlesContract : public testing::Test {
protected:
    World world_;
};
TYPED_TEST_SUITE_P(BundlesContract);

TYPED_TEST_P(BundlesContract, ReadsTheMainBundle) {
    platform::Bundles& bundles = this->world_.bundles;
    EXPECT_EQ(bundles.mainBundlePath(), this->world_.mainPath());
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Text"), foundation::Value("y\xC3\xA9s"));
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Flag"), foundation::Value(true));
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Missing"), std::nullopt);
    EXPECT_EQ(platform::informationText(bundles, "Flag"), std::nullopt) << "another kind";
    EXPECT_EQ(bundles.localizedString("KEY", ""), "y\xC3\xA9s");
    EXPECT_EQ(bundles.localizedString("MISSING", "instead"), "instead");
    EXPECT_EQ(bundles.localizedString("MISSING", ""), "MISSING");
}

TYPED_TEST_P(BundlesContract, EveryFolderIsABundleAndReadAnewEachTime) {
    using Dictionary = foundation::Value::Dictionary;
    platform::Bundles& bundles = this->world_.bundles;
    const std::string path = this->world_.folder() + "/Product.app";
    EXPECT_EQ(bundles.bundleInformation(path), std::nullopt);
    this->world_.addFile(path + "/Contents/file");
    EXPECT_EQ(bundles.bundleInformation(path), Dictionary());
    EXPECT_EQ(bundles.bundleInformation(path + "/Contents/file"), std::nullopt);
    for (const std::string version : {"1", "2"}) {
        this->world_.setVersion(path, version);
        EXPECT_EQ(bundles.bundleInformation(path), (Dictionary{{"CFBundleVersion", foundation::Value(version)}}));
    }
}

REGISTER_TYPED_TEST_SUITE_P(BundlesContract, ReadsTheMainBundle, EveryFolderIsABundleAndReadAnewEachTime);

} // namespace tests
