#include "platform/cocoa/CocoaBundles.h"
#include "tests/cocoa/TestBundle.h"
#include "tests/contract/BundlesContract.h"
#include "tests/contract/FolderWorld.h"

#include <sys/stat.h>

namespace tests {

namespace {

struct CocoaWorld : FolderWorld {
    std::string mainPath() const { return main.path(); }
    void setVersion(const std::string& path, const std::string& version) const {
        addFile(path + "/Contents/Info.plist", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                                               "<key>CFBundleVersion</key><string>" +
                                                   version + "</string></dict></plist>");
    }

    const TestBundle main{
        "<key>Text</key><string>y\xC3\xA9s</string><key>Flag</key><true/>", {"en"}, "\"KEY\" = \"y\xC3\xA9s\";"};
    platform::CocoaBundles bundles{main.path()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, BundlesContract, CocoaWorld);

} // namespace

TEST(CocoaBundlesTest, ListsThatCannotBeReadGiveNoInformationAndAreNeverWaitedFor) {
    const TestFolder folder;
    platform::CocoaBundles bundles(folder.path());
    folder.write("X.app/Contents/Info.plist", "no list");
    ASSERT_EQ(::mkfifo(folder.path("Info.plist").c_str(), 0600), 0);
    for (const std::string& path : {folder.path("X.app"), folder.path()})
        EXPECT_EQ(bundles.bundleInformation(path), foundation::Value::Dictionary()) << path;
}

} // namespace tests
