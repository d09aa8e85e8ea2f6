#include "telemetry/TXInstallerTools.h"

#include "foundation/PathString.h"
#include "platform/Platform.h"
#include "telemetry/Deployment.h"

namespace {

constexpr const char* showLogsKey = "TXDumpUsageLogs";
constexpr const char* installerIdKey = "TXUniqInstallerId";

} // namespace

std::optional<foundation::Value> TXInstallerTools::objectForUserDefaultsKey(const std::string& key) {
    const auto domain = Deployment::agentPreferencesDomain();
    return domain ? platform::current().preferences->appValue(key, *domain) : std::nullopt;
}

void TXInstallerTools::setObject(const std::optional<foundation::Value>& value, const std::string& forUserDefaultsKey) {
    const auto domain = Deployment::agentPreferencesDomain();
    if (!domain)
        return;
    platform::current().preferences->setValue(value, forUserDefaultsKey, *domain);
    platform::current().preferences->synchronize(*domain);
}

bool TXInstallerTools::boolForUserDefaultsKey(const std::string& key) {
    const auto value = objectForUserDefaultsKey(key);
    return value && value->boolValue();
}

void TXInstallerTools::setBool(bool flag, const std::string& forUserDefaultsKey) {
    setObject(foundation::Value(flag), forUserDefaultsKey);
}

bool TXInstallerTools::showLogs() {
    return boolForUserDefaultsKey(showLogsKey);
}

std::optional<std::string> TXInstallerTools::installerId() {
    if (const auto stored = objectForUserDefaultsKey(installerIdKey))
        return stored->description();
    auto identifier = platform::current().processInfo->makeUUID();
    if (!identifier)
        return std::nullopt;
    setObject(foundation::Value(*identifier), installerIdKey);
    // Another first run may have stored one a moment before; all go on with the same.
    const auto stored = objectForUserDefaultsKey(installerIdKey);
    return stored ? stored->description() : identifier;
}

std::string TXInstallerTools::systemVersionString() {
    const auto version = platform::current().processInfo->operatingSystemVersion();
    return "OS_X_" + std::to_string(version.major) + "_" + std::to_string(version.minor) + "_" +
           std::to_string(version.patch);
}

bool TXInstallerTools::isInstalledMASTolvixAgent() {
    const std::string identifier = Deployment::productBundleIdentifier();
    if (identifier.empty())
        return false; // the folder of all containers is no container
    const auto container = foundation::path::expandingTilde("~/Library/Containers/" + identifier,
                                                            platform::current().processInfo->homeDirectory());
    return platform::current().fileQueries->fileExists(container);
}
