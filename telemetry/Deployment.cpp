#include "telemetry/Deployment.h"

#include "platform/Platform.h"

namespace Deployment {

std::optional<std::string> informationText(const std::string& key) {
    return platform::informationText(*platform::current().bundles, key);
}

std::string binariesHost() {
    return informationText("TXBinariesHost").value_or("");
}

std::string installerLogHost() {
    return informationText("TXInstallerLogHost").value_or("");
}

std::string supportHost() {
    return informationText("TXSupportHost").value_or("");
}

std::string storeHost() {
    return informationText("TXStoreHost").value_or("");
}

std::string storeIdentifier() {
    return informationText("TXStoreIdentifier").value_or("");
}

std::string productBundleIdentifier() {
    return informationText("TXProductBundleIdentifier").value_or("");
}

std::optional<std::string> agentPreferencesDomain() {
    return informationText("TXAgentPreferencesDomain");
}

std::string applicationPath() {
    return platform::current().processInfo->systemPath("/Applications/Tolvix.app");
}

} // namespace Deployment
