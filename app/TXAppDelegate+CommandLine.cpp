#include "app/TXAppDelegate.h"

#include "foundation/MessageText.h"
#include "platform/Platform.h"
#include "telemetry/TXInstallerConfig.h"

#include <stdexcept>

using foundation::format;
using foundation::textOf;

void TXAppDelegate::parseArguments(const std::vector<std::string>& arguments, std::optional<std::string>& partnerName,
                                   std::optional<std::string>& partnerID, std::optional<std::string>& campaignID,
                                   bool& autoStart, bool& help) {
    std::optional<std::string>* pending = nullptr; // the option that waits for its value
    bool expectsAutoStart = false;
    for (const std::string& argument : arguments) {
        std::optional<std::string>* option = nullptr;
        if (argument == "--partnerName")
            option = &partnerName;
        if (argument == "--partnerID")
            option = &partnerID;
        if (argument == "--campaignID")
            option = &campaignID;
        const bool isAutoStart = argument == "--auto-start";
        const bool isHelp = argument == "--help";
        if (option != nullptr || isAutoStart || isHelp) {
            pending = option;
            expectsAutoStart = isAutoStart;
            if (isAutoStart)
                autoStart = true;
            if (isHelp)
                help = true;
        } else if (pending != nullptr) {
            *pending = argument;
            pending = nullptr;
        } else if (expectsAutoStart) {
            autoStart = argument == "YES" || argument == "true" || argument == "1";
            expectsAutoStart = false;
        }
    }
}

void TXAppDelegate::showHelpSectionForDeveloper() {
    const std::string usage = "--auto-start [YES/NO]: Automatically start Tolvix after installation\n"
                              "--partnerName [string]: Overwrite the partner name for this installation\n"
                              "--partnerID [string]: Specify the partner ID for this installation\n"
                              "--campaignID [string]: Specify the campaign ID for this installation";
    const std::string options =
        format("- PartnerName: %@\n"
               "- PartnerID: %@\n"
               "- CampaignID: %@\n"
               "- Auto start: %@\n"
               "- Tolvix version: %@\n"
               "- Installer version: %@",
               {textOf(TXInstallerConfig::partnerName()), textOf(TXInstallerConfig::partnerID()),
                textOf(TXInstallerConfig::campaignID()), TXInstallerConfig::autoStart() ? "1" : "0",
                textOf(TXInstallerConfig::bundleVersion()), textOf(TXInstallerConfig::shortVersionString())});
    platform::current().console->log(format("Usage:\n%@\n\nOptions:\n%@\n", {usage, options}));
}

namespace {

[[noreturn]] void assertionFailed(const char* field, int line) {
    platform::current().console->log(format("*** Assertion failure in -[TXAppDelegate testParseArguments], %@:%@",
                                            {__FILE__, std::to_string(line)}));
    throw std::logic_error(field);
}

} // namespace

void TXAppDelegate::testParseArguments() {
    using Text = std::optional<std::string>;
    using OptionalText = std::optional<Text>; // absent: not checked
    struct Case {
        std::vector<std::string> arguments;
        bool help;
        bool autoStart;
        Text partnerName;
        OptionalText partnerID;
        OptionalText campaignID;
    };
    const Text null;
    const Case cases[] = {
        {{}, false, false, null, {}, {}},
        {{"--auto-start", "--partnerName"}, false, true, null, {}, {}},
        {{"--partnerName", "test", "--campaignID", "test2"}, false, false, "test", null, "test2"},
        {{"--help", "--auto-start", "--partnerID", "test2", "--partnerName", "test"},
         true,
         true,
         "test",
         "test2",
         null},
        {{"--auto-start", "true"}, false, true, null, {}, {}},
        {{"--auto-start", "false"}, false, false, null, {}, {}},
        {{"--partnerName", "--auto-start"}, false, true, null, {}, {}},
        {{"--partnerName", "--auto-start", "true", "--help"}, true, true, null, {}, {}},
    };
    for (const Case& one : cases) {
        Text partnerName;
        Text partnerID;
        Text campaignID;
        bool autoStart = false;
        bool help = false;
        parseArguments(one.arguments, partnerName, partnerID, campaignID, autoStart, help);
        if (help != one.help)
            assertionFailed("help", __LINE__);
        if (autoStart != one.autoStart)
            assertionFailed("autoStart", __LINE__);
        if (partnerName != one.partnerName)
            assertionFailed("partnerName", __LINE__);
        if (one.partnerID && partnerID != *one.partnerID)
            assertionFailed("partnerID", __LINE__);
        if (one.campaignID && campaignID != *one.campaignID)
            assertionFailed("campaignID", __LINE__);
    }
}
