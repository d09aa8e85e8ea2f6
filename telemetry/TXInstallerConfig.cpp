#include "telemetry/TXInstallerConfig.h"

#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerTools.h"

namespace {

constexpr const char* partnerNameKey = "TXPartnerName";

struct Settings {
    std::optional<std::string> partnerName;
    std::optional<std::string> partnerID;
    std::optional<std::string> campaignID;
    bool autoStart = false;
};

Settings& settings() {
    static Settings settings;
    return settings;
}

} // namespace

std::optional<std::string> TXInstallerConfig::partnerName() {
    std::optional<std::string> name = settings().partnerName;
    if (!name)
        name = Deployment::informationText(partnerNameKey);
    const auto stored = TXInstallerTools::objectForUserDefaultsKey(partnerNameKey);
    // Deliberate: the first partner keeps the account; a later command line or bundle with another name changes
    // nothing.
    if (stored)
        return stored->description();
    if (name)
        TXInstallerTools::setObject(foundation::Value(*name), partnerNameKey);
    return name;
}

void TXInstallerConfig::setPartnerName(std::optional<std::string> name) {
    settings().partnerName = std::move(name);
}

std::optional<std::string> TXInstallerConfig::partnerID() {
    return settings().partnerID;
}

void TXInstallerConfig::setPartnerID(std::optional<std::string> identifier) {
    settings().partnerID = std::move(identifier);
}

std::optional<std::string> TXInstallerConfig::campaignID() {
    return settings().campaignID;
}

void TXInstallerConfig::setCampaignID(std::optional<std::string> identifier) {
    settings().campaignID = std::move(identifier);
}

bool TXInstallerConfig::autoStart() {
    return settings().autoStart;
}

void TXInstallerConfig::setAutoStart(bool autoStart) {
    settings().autoStart = autoStart;
}

std::optional<std::string> TXInstallerConfig::shortVersionString() {
    return Deployment::informationText("CFBundleShortVersionString");
}

std::optional<std::string> TXInstallerConfig::bundleVersion() {
    return Deployment::informationText("CFBundleVersion");
}
