#include "telemetry/TXInstallerTools.h"
#include "tests/unit/CoreTest.h"

// Attribution, the preferences behind it, the installer id, and facts about the computer.

using foundation::Value;

class InstallerConfigTest : public CoreTest {
protected:
    static constexpr const char* domain = "example.tolvix.agent";
};

// Deliberate in the program: the first partner keeps the account.
TEST_F(InstallerConfigTest, TheFirstPartnerNameIsSticky) {
    using Text = std::optional<std::string>;
    struct Row {
        const char* name;
        Text commandLine;
        Text bundle;
        Text stored;
        Text expected;
        int writes;
    };
    const Row rows[] = {{"nothing anywhere", {}, {}, {}, {}, 0},
                        {"command line", "A", {}, {}, "A", 1},
                        {"bundle", {}, "C", {}, "C", 1},
                        {"command line before bundle", "A", "C", {}, "A", 1},
                        {"stored before all", "B", "C", "A", "A", 0},
                        {"stored alone", {}, {}, "A", "A", 0},
                        {"an empty name is a name", "", "C", {}, "", 1},
                        {"an empty stored name is a name", "B", {}, "", "", 0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TXInstallerConfig::setPartnerName(row.commandLine);
        system.bundles.information.erase("TXPartnerName");
        if (row.bundle)
            system.bundles.information.emplace("TXPartnerName", Value(*row.bundle));
        system.preferences.stored.clear();
        if (row.stored)
            system.preferences.stored[domain].emplace("TXPartnerName", Value(*row.stored));
        system.preferences.writes = 0;
        EXPECT_EQ(TXInstallerConfig::partnerName(), row.expected);
        EXPECT_EQ(TXInstallerConfig::partnerName(), row.expected);
        EXPECT_EQ(system.preferences.writes, row.writes);
        const Value* stored = member(system.preferences.stored[domain], "TXPartnerName");
        EXPECT_EQ(stored == nullptr ? Text() : stored->description(), row.expected);
    }
}

TEST_F(InstallerConfigTest, APartnerThatCannotBeStoredIsTriedAgainByEveryReading) {
    system.preferences.readOnly = true;
    TXInstallerConfig::setPartnerName("A");
    EXPECT_EQ(TXInstallerConfig::partnerName(), "A");
    EXPECT_EQ(TXInstallerConfig::partnerName(), "A");
    EXPECT_EQ(system.preferences.writes, 2);
}

TEST_F(InstallerConfigTest, WithoutADomainNothingIsStored) {
    system.bundles.information.erase("TXAgentPreferencesDomain");
    TXInstallerConfig::setPartnerName("A");
    EXPECT_EQ(TXInstallerConfig::partnerName(), "A");
    EXPECT_FALSE(TXInstallerTools::installerId().empty());
    EXPECT_EQ(system.preferences.writes, 0);
}

TEST_F(InstallerConfigTest, ValuesAreStoredAtOnceAndAbsentOnesRemoved) {
    TXInstallerTools::setObject(Value("text"), "key");
    EXPECT_EQ(TXInstallerTools::objectForUserDefaultsKey("key"), Value("text"));
    TXInstallerTools::setObject(std::nullopt, "key");
    EXPECT_EQ(TXInstallerTools::objectForUserDefaultsKey("key"), std::nullopt);
    TXInstallerTools::setBool(true, "key");
    EXPECT_EQ(system.preferences.stored[domain].at("key"), Value(true));
}

TEST_F(InstallerConfigTest, FlagsAreReadFromAnyKind) {
    EXPECT_FALSE(TXInstallerTools::showLogs());
    const std::pair<Value, bool> rows[] = {
        {Value(true), true}, {Value(false), false}, {Value(std::int64_t{1}), true}, {Value("YES"), true},
        {Value("0"), false}, {Value(0.0), false},   {Value(Value::Array()), false}};
    for (const auto& [value, expected] : rows) {
        SCOPED_TRACE(value.description());
        system.preferences.stored[domain].insert_or_assign("TXDumpUsageLogs", value);
        EXPECT_EQ(TXInstallerTools::showLogs(), expected);
    }
}

TEST_F(InstallerConfigTest, TheInstallerIdIsMadeOnce) {
    const std::string first = TXInstallerTools::installerId();
    EXPECT_EQ(first, "00000000-0000-4000-8000-000000000001");
    EXPECT_EQ(TXInstallerTools::installerId(), first);
    EXPECT_EQ(system.preferences.stored[domain].at("TXUniqInstallerId"), Value(first));
    EXPECT_EQ(system.preferences.writes, 1);
    system.preferences.stored[domain].insert_or_assign("TXUniqInstallerId", Value("an older one"));
    EXPECT_EQ(TXInstallerTools::installerId(), "an older one");
}

TEST_F(InstallerConfigTest, TheSystemVersionKeepsItsZeros) {
    EXPECT_EQ(TXInstallerTools::systemVersionString(), "OS_X_10_9_5");
    system.processInfo.version = {10, 10, 0};
    EXPECT_EQ(TXInstallerTools::systemVersionString(), "OS_X_10_10_0");
}

TEST_F(InstallerConfigTest, TheStoreEditionIsKnownByItsContainer) {
    const std::string container = "/Users/me/Library/Containers/example.tolvix.desktop";
    EXPECT_FALSE(TXInstallerTools::isInstalledMASTolvixAgent());
    system.files.addFile(container);
    EXPECT_TRUE(TXInstallerTools::isInstalledMASTolvixAgent()) << "a plain file counts";
    ASSERT_TRUE(system.files.removeItem(container));
    system.files.addFolder(container);
    EXPECT_TRUE(TXInstallerTools::isInstalledMASTolvixAgent());
}
