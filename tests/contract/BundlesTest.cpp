#include "platform/qtcore/QtBundles.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <iostream>

#include <sys/stat.h>

namespace {

using foundation::Value;
using platform::QtBundles;
using tests::TestFolder;

std::string plist(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">" +
           content + "</plist>\n";
}

std::string repeated(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

TEST(Bundles, readsEveryKindOfValue) {
    const TestFolder folder;
    folder.write("X.app/Contents/Info.plist", plist(R"(<!-- a comment --><dict>
        <key>text</key><string>  R&amp;D &#233;<![CDATA[<x>]]> </string>
        <key>empty</key><string/>
        <key>number</key><integer> -12 </integer>
        <key>real</key><real>1.5</real>
        <key>yes</key><true/><key>no</key><false/>
        <key>date</key><date>2026-11-22T21:19:44Z</date>
        <key>data</key><data> AAEC </data>
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
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("text"), Value("  R&D é<x> "));
    EXPECT_EQ(bundles.objectForInfoDictionaryKey("missing"), std::nullopt);
}

TEST(Bundles, unreadableListsGiveNoInformation) {
    const std::vector<std::string> lists{
        "",
        "bplist00\xd1\x01\x02",
        "{ key = value; }",
        plist(""),
        plist("<string>no dictionary</string>"),
        plist("<dict><key>a</key><string>1</string>"),
        plist("<dict><key>a</key></dict>"),
        plist("<dict><string>1</string><key>a</key></dict>"),
        plist("<dict><key>a</key><integer>12x</integer></dict>"),
        plist("<dict><key>a</key><integer>99999999999999999999</integer></dict>"),
        plist("<dict><key>a</key><unknown/></dict>"),
        plist("<dict><key>a</key><string>caf\xE9</string></dict>"),
        plist("<dict><key>a</key><string>1</string></dict>") + "<more/>",
        plist("<dict><key>a</key>" + repeated("<array>", 100000) + repeated("</array>", 100000) + "</dict>"),
        plist("<dict><key>a</key><string>" + std::string(5 * 1024 * 1024, 'x') + "</string></dict>"),
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

TEST(Bundles, everyFolderIsABundleAndNothingElse) {
    const TestFolder folder;
    QtBundles bundles({"en"}, folder.path());
    const auto version = [&bundles](const std::string& path) {
        const auto information = bundles.bundleInformation(path);
        const Value* value = information ? foundation::member(*information, "v") : nullptr;
        return value != nullptr ? *value : Value("none");
    };
    std::filesystem::create_directory(folder.path("X"));
    EXPECT_EQ(bundles.bundleInformation(folder.path("X")), Value::Dictionary());
    EXPECT_EQ(bundles.bundleInformation(folder.path("missing")), std::nullopt);
    EXPECT_EQ(bundles.bundleInformation(""), std::nullopt);
    EXPECT_EQ(bundles.bundleInformation(folder.write("file", "")), std::nullopt);
    for (const char* place : {"Info.plist", "Resources/Info.plist", "Contents/Info.plist"}) {
        folder.write(std::string("X/") + place,
                     plist(std::string("<dict><key>v</key><string>") + place + "</string></dict>"));
        EXPECT_EQ(version(folder.path("X")), Value(place)) << "the later places win";
    }
    std::filesystem::create_directory_symlink("X", folder.path("link"));
    EXPECT_EQ(version(folder.path("link")), Value("Contents/Info.plist"));
    std::filesystem::create_directories(folder.path("Y/Contents"));
    ASSERT_EQ(::mkfifo(folder.path("Y/Contents/Info.plist").c_str(), 0600), 0);
    EXPECT_EQ(bundles.bundleInformation(folder.path("Y")), Value::Dictionary()) << "and does not wait for a writer";
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

TEST_F(LocalizedTexts, comeInTheBestLanguage) {
    EXPECT_EQ(text({"fr"}), "KEY") << "without any table";
    folder.write("Contents/Info.plist", plist("<dict><key>CFBundleDevelopmentRegion</key><string>de</string></dict>"));
    writeTable("en", "\"KEY\" = \"english\";");
    writeTable("fr", "\"KEY\" = \"français\";");
    writeTable("de", "\"KEY\" = \"deutsch\"; \"ONLY\" = \"nur\"; \"EMPTY\" = \"\";");
    EXPECT_EQ(text({"fr-CA", "en"}), "français");
    EXPECT_EQ(QtBundles({"fr-CA"}, folder.path()).localization(), "fr");
    EXPECT_EQ(text({"ja", "en"}), "english");
    EXPECT_EQ(text({"ja"}), "deutsch");
    EXPECT_EQ(text({"de"}, "ONLY"), "nur");
    EXPECT_EQ(text({"de"}, "EMPTY", "value"), "");
    EXPECT_EQ(text({"fr"}, "ONLY"), "ONLY") << "one language at a time";
    EXPECT_EQ(text({"fr"}, "ONLY", "value"), "value");
}

TEST_F(LocalizedTexts, skipTablesThatCannotBeRead) {
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

std::string output(const std::string& command) {
    FILE* const pipe = ::popen(command.c_str(), "r");
    std::string line(4096, '\0');
    if (pipe == nullptr || std::fgets(line.data(), static_cast<int>(line.size()), pipe) == nullptr) {
        line.clear();
    }
    ::pclose(pipe);
    return line.substr(0, line.find('\n'));
}

TEST(Bundles, theMainBundleIsWhereTheProgramLies) {
    const TestFolder folder;
    for (const auto& [program, bundle] : std::map<std::string, std::string>{
             {"My Installer.app/Contents/MacOS/run", "My Installer.app"}, {"plain/run", "plain"}}) {
        std::filesystem::create_directories(std::filesystem::path(folder.path(program)).parent_path());
        std::filesystem::copy_file("/proc/self/exe", folder.path(program));
        EXPECT_EQ(output("'" + folder.path(program) + "' --print-main-bundle"), folder.path(bundle));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--print-main-bundle") == 0) {
        std::cout << QtBundles({"en"}).mainBundlePath() << '\n';
        return 0;
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
