#pragma once

#include <optional>
#include <string>

// Process-wide attribution and version settings. The fields are set once at launch, on the main thread, before any
// other thread exists, and only read afterwards.
class TXInstallerConfig {
public:
    TXInstallerConfig() = delete;

    // The partner this installation is attributed to: the first name ever seen on this account, else the one set here,
    // else the bundle's own. Stores the first name it finds, so later runs return that one whatever they are given.
    static std::optional<std::string> partnerName();
    static void setPartnerName(std::optional<std::string> name);

    static std::optional<std::string> partnerID();
    static void setPartnerID(std::optional<std::string> identifier);

    static std::optional<std::string> campaignID();
    static void setCampaignID(std::optional<std::string> identifier);

    // Whether the installed product is launched at the end.
    static bool autoStart();
    static void setAutoStart(bool autoStart);

    // The installer's marketing version and build version, from its bundle. Any thread.
    static std::optional<std::string> shortVersionString();
    static std::optional<std::string> bundleVersion();
};
