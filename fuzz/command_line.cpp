#include "app/TXAppDelegate.h"
#include "fuzz/Require.h"
#include "fuzz/Words.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto arguments = words(data, size);
    std::optional<std::string> partnerName;
    std::optional<std::string> partnerID;
    std::optional<std::string> campaignID;
    bool autoStart = true;
    bool help = false;
    TXAppDelegate::parseArguments(arguments, partnerName, partnerID, campaignID, autoStart, help);
    const auto given = [&](const std::string& word) {
        return std::find(arguments.begin(), arguments.end(), word) != arguments.end();
    };
    require(help == given("--help"));
    require(autoStart || given("--auto-start"));
    for (const auto& [value, option] : {std::pair(partnerName, "--partnerName"), std::pair(partnerID, "--partnerID"),
                                        std::pair(campaignID, "--campaignID")}) {
        require(!value || (given(option) && given(*value)));
        require(value != "--partnerName" && value != "--partnerID" && value != "--campaignID" && value != "--help" &&
                value != "--auto-start");
    }
    return 0;
}
