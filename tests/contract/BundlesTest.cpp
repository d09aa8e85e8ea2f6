#include "platform/qtcore/QtBundles.h"

#include "tests/contract/BundlesContract.h"
#include "tests/contract/FolderWorld.h"
#include "tests/support/FakeBundles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using foundation::Value;
using platform::QtBundles;
using tests::TestFolder;

std::string plist(const std::string& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">)" +
           content + "</plist>\n";
}

std::string repeated(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(Bundles, ReadsEveryKindOfValue) {
    const TestFolder folder;
    folder.write("X.app/Contents/Info.plist", plist(R"(<!-- a comment --><dict>
        <key>text</key><string>  R&amp;D &#233;<![CDATA[<x>]]> </string>
        <key>empty</key><string/><key>number</key><integer> -12 </integer><key>real</key><real>1.5</real>
        <key>yes</key><true/><key>no</key><false/>
        <key>date</key><date>2026-11-22T21:19:44Z</date><key>data</key><data> AAEC </data>
        <key>list</key><array><string>a</string><dict><key>k</key><string>v</string></dict><array/></array>
        <key>twice</key><string>1</string><key>twice</key><string>2</string>
    </dict>)"));
    QtBundles bundles({"en"}, folder.path("X.app"));
    const Value::Dictionary expected{
        {"text", Value("  R&D é<x> ")},
        {"empty", Value("")},
        {"number", Value(std::int64_t{-12})},
        {"real", Value(1.5)},
        {"yes", Value(true)},
        {"no", Value(false)},
        {"date", Value("2026-11-22T21:19:44Z")},
        {"data", Value("AAEC")},
        {"list", Value(Value::Array{Value("a"), Value(Value::Dictionary{{"k", Value("v")}}), Value(Value::Array{})})},
        {"twice", Value("2")}};
    EXPECT_EQ(bundles.bundleInformation(folder.path("X.app")), expected);
}

TEST(Bundles, UnreadableListsGiveNoInformation) {
    const auto entry = [](const std::string& value) { return plist("<dict><key>a</key>" + value + "</dict>"); };
    const std::vector<std::string> lists{
        "",
        "bplist00\xd1\x01\x02",
        plist("<string>no dictionary</string>"),
        plist("<dict><key>a</key><string>1</string>"),
        plist("<dict><string>1</string><key>a</key></dict>"),
        entry(""),
        entry("<integer>12x</integer>"),
        entry("<integer>99999999999999999999</integer>"),
        entry("<unknown/>"),
        entry("<string>caf\xE9</string>"),
        entry("<string>1</string>") + "<more/>",
        entry(repeated("<array>", 100000) + repeated("</array>", 100000)),
        entry("<string>" + std::string(5 * 1024 * 1024, 'x') + "</string>"),
        "<!DOCTYPE x [<!ENTITY a \"" + std::string(1000, 'a') + "\"><!ENTITY b \"" + repeated("&a;", 1000) +
            "\">]><plist><dict><key>k</key><string>" + repeated("&b;", 1000) + "</string></dict></plist>",
    };
    const TestFolder folder;
    QtBundles bundles({"en"}, folder.path());
    for (std::size_t index = 0; index < lists.size(); ++index) {
        folder.write("X.app/Contents/Info.plist", lists[index]);
        EXPECT_EQ(bundles.bundleInformation(folder.path("X.app")), Value::Dictionary()) << index;
    }
}

TEST(Bundles, ListsAreFoundInThreePlacesAndNeverWaitedFor) {
    const TestFolder folder;
    QtBundles bundles({"en"}, folder.path());
    std::filesystem::create_directories(folder.path("X/Contents"));
    std::filesystem::create_directory_symlink("X", folder.path("link"));
    ASSERT_EQ(::mkfifo(folder.path("X/Contents/Info.plist").c_str(), 0600), 0);
    EXPECT_EQ(bundles.bundleInformation(folder.path("X")), Value::Dictionary()) << "and does not wait for a writer";
    std::filesystem::remove(folder.path("X/Contents/Info.plist"));
    for (const std::string place : {"Info.plist", "Resources/Info.plist", "Contents/Info.plist"}) {
        folder.write("X/" + place, plist("<dict><key>v</key><string>" + place + "</string></dict>"));
        EXPECT_EQ(bundles.bundleInformation(folder.path("link")), (Value::Dictionary{{"v", Value(place)}}))
            << "the later places win";
    }
}

class LocalizedTexts : public ::testing::Test {
protected:
    void writeTable(const std::string& language, const std::string& bytes) {
        folder.write("Contents/Resources/" + language + ".lproj/Localizable.strings", bytes);
    }
    std::string text(const std::vector<std::string>& languages, const std::string& key = "KEY",
                     const std::string& value = "") {
        return QtBundles(languages, folder.path()).localizedString(key, value);
    }

    TestFolder folder;
};

TEST_F(LocalizedTexts, ComeInTheBestLanguage) {
    EXPECT_EQ(text({"fr"}), "KEY") << "without any table";
    folder.write("Contents/Info.plist", plist("<dict><key>CFBundleDevelopmentRegion</key><string>de</string></dict>"));
    writeTable("en", "\"KEY\" = \"english\";");
    writeTable("fr", "\"KEY\" = \"français\";");
    writeTable("de", "\"KEY\" = \"deutsch\"; \"ONLY\" = \"nur\"; \"EMPTY\" = \"\";");
    EXPECT_EQ(text({"fr-CA", "en"}), "français");
    EXPECT_EQ(QtBundles({"fr-CA"}, folder.path()).localization(), "fr");
    EXPECT_EQ(text({"ja"}), "deutsch");
    EXPECT_EQ(text({"de"}, "EMPTY", "value"), "");
    EXPECT_EQ(text({"fr"}, "ONLY"), "ONLY") << "one language at a time";
    EXPECT_EQ(text({"fr"}, "ONLY", "value"), "value");
}

TEST_F(LocalizedTexts, SkipTablesThatCannotBeRead) {
    writeTable("en", "\"KEY\" = \"english\";");
    writeTable("fr", "\"KEY\" = \"half a table");
    std::filesystem::create_directories(folder.path("Contents/Resources/es.lproj"));
    std::filesystem::create_directories(folder.path("Contents/Resources/it.lproj"));
    ASSERT_EQ(::mkfifo(folder.path("Contents/Resources/it.lproj/Localizable.strings").c_str(), 0600), 0);
    writeTable("pt-BR", "/*" + std::string(5 * 1024 * 1024, 'x') + "*/ \"KEY\" = \"grande\";");
    writeTable("de", "\"KEY\" = \"deutsch\";");
    for (const char* language : {"fr", "es", "it", "pt-BR"}) {
        EXPECT_EQ(text({language, "de"}), "deutsch") << language;
        EXPECT_EQ(text({language}), "english") << language;
    }
}

} // namespace

namespace tests {

namespace {

struct QtWorld : FolderWorld {
    QtWorld() {
        addFile(mainPath() + "/Contents/Info.plist",
                plist("<dict><key>Text</key><string>y\xC3\xA9s</string><key>Flag</key><true/></dict>"));
        addFile(mainPath() + "/Contents/Resources/en.lproj/Localizable.strings", "\"KEY\" = \"y\xC3\xA9s\";");
    }

    std::string mainPath() const { return place.path("Main.app"); }
    void setVersion(const std::string& path, const std::string& version) const {
        addFile(path + "/Contents/Info.plist",
                plist("<dict><key>CFBundleVersion</key><string>" + version + "</string></dict>"));
    }

    QtBundles bundles{{"en"}, mainPath()};
};

struct FakeWorld : FakeFolderWorld {
    FakeWorld() {
        bundles.information = {{"Text", Value("y\xC3\xA9s")}, {"Flag", Value(true)}};
        bundles.table = {{"KEY", "y\xC3\xA9s"}};
    }

    std::string mainPath() const { return bundles.path; }
    void setVersion(const std::string& path, const std::string& version) {
        bundles.others[path] = {{"CFBundleVersion", Value(version)}};
    }

    FakeBundles bundles{files};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, BundlesContract, QtWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, BundlesContract, FakeWorld);

} // namespace

} // namespace tests
