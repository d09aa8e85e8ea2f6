#include "app/TXAppDelegate.h"
#include "foundation/MessageText.h"
#include "telemetry/TXInstallerTools.h"
#include "tests/unit/CoreTest.h"

// Attribution from the command line and the preferences, and the installer id. What a launch
// makes of the options: FlowTest.

using foundation::textOf;
using foundation::Value;
using Text = std::optional<std::string>;

class InstallerConfigTest : public CoreTest {
protected:
    foundation::Value::Dictionary& stored() { return system.preferences.stored["example.tolvix.agent"]; }
};

TEST_F(InstallerConfigTest, ParsesCommandLines) {
    EXPECT_NO_THROW(TXAppDelegate::testParseArguments());
    EXPECT_TRUE(system.console.messages.empty()) << "the parser's own check complains";
    const auto parsed = [](const Texts& arguments) {
        Text name;
        Text identifier;
        Text campaign;
        bool autoStart = true;
        bool help = false;
        TXAppDelegate::parseArguments(arguments, name, identifier, campaign, autoStart, help);
        return textOf(name) + " " + textOf(identifier) + (autoStart ? "" : " no start") + (help ? " help" : "");
    };
    EXPECT_EQ(parsed({"--partnerName", "--style"}), "--style (null)");
    EXPECT_EQ(parsed({"--partnerName", "--partnerID", "b"}), "(null) b");
    EXPECT_EQ(parsed({"--partnerID", "--help", "c"}), "(null) (null) help");
    EXPECT_EQ(parsed({"--partnerName", "", "b", "--partnerID", "a", "--partnerID", "b"}), " b");
    EXPECT_EQ(parsed({"--partnername", "a", "--partnerName=b", "-partnerName", "c", "--"}), "(null) (null)");
    EXPECT_EQ(parsed({"--auto-start", "yes"}), "(null) (null) no start");
    EXPECT_EQ(parsed({"--auto-start", "1"}), "(null) (null)");
    EXPECT_EQ(parsed({"--auto-start", "NO", "YES"}), "(null) (null) no start");
    EXPECT_EQ(parsed({"--auto-start", "--partnerID", "NO", "NO"}), "(null) NO");
}

// Deliberate in the program: the first partner keeps the account.
TEST_F(InstallerConfigTest, TheFirstPartnerNameIsSticky) {
    const auto read = [this](const Text& commandLine, const Text& bundle, const Text& before) {
        TXInstallerConfig::setPartnerName(commandLine);
        system.bundles.information.erase("TXPartnerName");
        if (bundle)
            system.bundles.information.emplace("TXPartnerName", Value(*bundle));
        stored().clear();
        if (before)
            stored().emplace("TXPartnerName", Value(*before));
        system.preferences.writes = 0;
        const Text name = TXInstallerConfig::partnerName();
        EXPECT_EQ(TXInstallerConfig::partnerName(), name);
        return textOf(name) + ", writes " + std::to_string(system.preferences.writes);
    };
    EXPECT_EQ(read({}, {}, {}), "(null), writes 0");
    EXPECT_EQ(read("A", "C", {}), "A, writes 1");
    EXPECT_EQ(read({}, "C", {}), "C, writes 1");
    EXPECT_EQ(read("B", "C", "A"), "A, writes 0");
    EXPECT_EQ(read("", "C", {}), ", writes 1") << "an empty name is a name";
    EXPECT_EQ(read("B", {}, ""), ", writes 0");
}

TEST_F(InstallerConfigTest, WithoutADomainNothingIsStored) {
    system.bundles.information.erase("TXAgentPreferencesDomain");
    TXInstallerConfig::setPartnerName("A");
    EXPECT_EQ(TXInstallerConfig::partnerName(), "A");
    EXPECT_TRUE(TXInstallerTools::installerId());
    EXPECT_EQ(system.preferences.writes, 0);
}

TEST_F(InstallerConfigTest, TheInstallerIdIsMadeOnce) {
    const Text first = TXInstallerTools::installerId();
    EXPECT_EQ(first, "00000000-0000-4000-8000-000000000001");
    EXPECT_EQ(TXInstallerTools::installerId(), first);
    stored().insert_or_assign("TXUniqInstallerId", Value("an older one"));
    EXPECT_EQ(TXInstallerTools::installerId(), "an older one");
    stored().clear();
    system.processInfo.hasRandomNumbers = false;
    EXPECT_EQ(TXInstallerTools::installerId(), std::nullopt);
    EXPECT_TRUE(stored().empty());
}

TEST_F(InstallerConfigTest, AProductWithoutIdentifierHasNoStoreEdition) {
    system.files.addFolder("/Users/me/Library/Containers/example.tolvix.desktop");
    EXPECT_TRUE(TXInstallerTools::isInstalledMASTolvixAgent());
    for (const char* identifier : {"", "example.other"}) {
        system.bundles.information.insert_or_assign("TXProductBundleIdentifier", Value(identifier));
        EXPECT_FALSE(TXInstallerTools::isInstalledMASTolvixAgent()) << identifier;
    }
}
