#pragma once

#include "telemetry/TXInstallerConfig.h"
#include "tests/support/FakePlatform.h"

#include <gtest/gtest.h>

#include <map>

using Texts = std::vector<std::string>;

// The core on fakes alone, with an empty configuration. Tests that need it afresh make further ones.
class CoreWorld {
public:
    CoreWorld() {
        TXInstallerConfig::setPartnerName(std::nullopt);
        TXInstallerConfig::setPartnerID(std::nullopt);
        TXInstallerConfig::setCampaignID(std::nullopt);
        TXInstallerConfig::setAutoStart(false);
    }

    // The form fields of a posted event. Values with "&" in them are not told apart.
    std::map<std::string, std::string> fields(std::size_t post) const {
        std::map<std::string, std::string> result;
        const std::string body = system.transfers.posts.at(post).request.body + "&";
        for (std::size_t at = 0; at < body.size(); at = body.find('&', at) + 1) {
            const std::string pair = body.substr(at, body.find('&', at) - at);
            const auto equals = pair.find('=');
            if (equals != std::string::npos)
                result[pair.substr(0, equals)] = pair.substr(equals + 1);
        }
        return result;
    }

    // The step codes of the events that were posted since the last call, with blanks between.
    std::string newSteps() {
        std::string codes;
        for (; seen_ < system.transfers.posts.size(); ++seen_)
            codes += (codes.empty() ? "" : " ") + fields(seen_)["step"];
        return codes;
    }

    FakePlatform system;

private:
    std::size_t seen_ = 0;
};

class CoreTest : public testing::Test, public CoreWorld {};
