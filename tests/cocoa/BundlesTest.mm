#include "platform/cocoa/CocoaBundles.h"
#include "tests/cocoa/TestBundle.h"

#include <gtest/gtest.h>

using foundation::Value;
using platform::CocoaBundles;
using tests::TestFolder;

TEST(CocoaBundlesTest, readsTheMainBundle) {
    const TestBundle bundle("<key>Text</key><string>Gr\xC3\xBC\xC3\x9F</string><key>Flag</key><true/>");
    CocoaBundles bundles(bundle.path());
    EXPECT_EQ(bundles.mainBundlePath(), bundle.path());
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Text"), Value("Gr\xC3\xBC\xC3\x9F"));
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Flag"), Value(true));
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("Missing"), std::nullopt);
    EXPECT_EQ(bundles.localizedString("MAC_LAUNCHER_MENU_HELP", ""), "Tolvix Help");
    EXPECT_EQ(bundles.localizedString("MISSING", "instead"), "instead");
    EXPECT_EQ(bundles.localizedString("MISSING", ""), "MISSING");
}

TEST(CocoaBundlesTest, readsOtherBundlesAnewEachTime) {
    const TestFolder folder;
    CocoaBundles bundles(folder.path());
    const std::string path = folder.path("Product.app");
    EXPECT_EQ(bundles.bundleInformation(path), std::nullopt);
    std::filesystem::create_directories(path + "/Contents");
    EXPECT_EQ(bundles.bundleInformation(path), Value::Dictionary());
    for (const std::string version : {"1", "2"}) {
        std::ofstream(path + "/Contents/Info.plist") << "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist "
                                                        "version=\"1.0\"><dict><key>CFBundleVersion</key><string>"
                                                     << version << "</string></dict></plist>";
        EXPECT_EQ(bundles.bundleInformation(path), (Value::Dictionary{{"CFBundleVersion", Value(version)}}));
    }
    std::ofstream(path + "/Contents/Info.plist") << "no list";
    EXPECT_EQ(bundles.bundleInformation(path), Value::Dictionary());
    EXPECT_EQ(bundles.bundleInformation(path + "/Contents/Info.plist"), std::nullopt);
}

TEST(CocoaBundlesTest, doesNotWaitForAPipeInAListsPlace) {
    const TestFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("Info.plist").c_str(), 0600), 0);
    EXPECT_EQ(CocoaBundles(folder.path()).bundleInformation(folder.path()), Value::Dictionary());
}
