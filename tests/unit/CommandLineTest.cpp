#include "app/TXAppDelegate.h"
#include "tests/unit/CoreTest.h"

// The parser beyond its own check, and the usage text. What a launch makes of the options: FlowTest.

class CommandLineTest : public CoreTest {};

TEST_F(CommandLineTest, TheParsersOwnCheckRunsClean) {
    EXPECT_NO_THROW(TXAppDelegate::testParseArguments());
    EXPECT_TRUE(system.console.messages.empty());
}

TEST_F(CommandLineTest, Parses) {
    using Text = std::optional<std::string>;
    struct Row {
        const char* name;
        Texts arguments;
        Text partnerName;
        Text partnerID;
        Text campaignID;
        bool autoStart;
    };
    const Row rows[] = {
        {"no options", {"/app"}, {}, {}, {}, true},
        {"all texts", {"/app", "--partnerName", "a", "--partnerID", "b", "--campaignID", "c"}, "a", "b", "c", true},
        {"the executable is an argument too", {"--partnerName", "a"}, "a", {}, {}, true},
        {"value that looks like an option", {"--partnerName", "--style"}, "--style", {}, {}, true},
        {"option as a value", {"--partnerName", "--partnerID", "b"}, {}, "b", {}, true},
        {"help takes no value and ends a wait", {"--campaignID", "--help", "c"}, {}, {}, {}, true},
        {"one word for one option", {"--partnerName", "a", "b"}, "a", {}, {}, true},
        {"empty word", {"--partnerName", ""}, "", {}, {}, true},
        {"the last occurrence counts", {"--partnerID", "a", "--partnerID", "b"}, {}, "b", {}, true},
        {"value missing at the end", {"--campaignID"}, {}, {}, {}, true},
        {"names are exact", {"--partnername", "a", "--partnerName=b", "-partnerName", "c", "--"}, {}, {}, {}, true},
        {"auto start off", {"--auto-start", "NO"}, {}, {}, {}, false},
        {"auto start in another case", {"--auto-start", "yes"}, {}, {}, {}, false},
        {"auto start by number", {"--auto-start", "1"}, {}, {}, {}, true},
        {"auto start by another number", {"--auto-start", "2"}, {}, {}, {}, false},
        {"only the next word counts", {"--auto-start", "NO", "YES"}, {}, {}, {}, false},
        {"auto start again without a word", {"--auto-start", "NO", "--auto-start"}, {}, {}, {}, true},
        {"auto start loses its word to an option", {"--auto-start", "--partnerID", "NO", "NO"}, {}, "NO", {}, true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Text partnerName;
        Text partnerID;
        Text campaignID;
        bool autoStart = true;
        bool help = false;
        TXAppDelegate::parseArguments(row.arguments, partnerName, partnerID, campaignID, autoStart, help);
        EXPECT_EQ(partnerName, row.partnerName);
        EXPECT_EQ(partnerID, row.partnerID);
        EXPECT_EQ(campaignID, row.campaignID);
        EXPECT_EQ(autoStart, row.autoStart);
        EXPECT_EQ(help, std::count(row.arguments.begin(), row.arguments.end(), "--help") > 0);
    }
}

TEST_F(CommandLineTest, UsageTextShowsOptionsAndValues) {
    TXInstallerConfig::setPartnerName("acme %@");
    TXInstallerConfig::setCampaignID("spring");
    TXAppDelegate::showHelpSectionForDeveloper();
    EXPECT_EQ(system.console.messages,
              Texts{"Usage:\n"
                    "--auto-start [YES/NO]: Automatically start Tolvix after installation\n"
                    "--partnerName [string]: Overwrite the partner name for this installation\n"
                    "--partnerID [string]: Specify the partner ID for this installation\n"
                    "--campaignID [string]: Specify the campaign ID for this installation\n"
                    "\n"
                    "Options:\n"
                    "- PartnerName: acme %@\n"
                    "- PartnerID: (null)\n"
                    "- CampaignID: spring\n"
                    "- Auto start: 0\n"
                    "- Tolvix version: 2001\n"
                    "- Installer version: 2.0.1\n"});
}
