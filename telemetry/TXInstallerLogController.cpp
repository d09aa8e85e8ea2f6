#include "telemetry/TXInstallerLogController.h"

#include "foundation/JSON.h"
#include "foundation/MessageText.h"
#include "platform/Platform.h"
#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerConfig.h"
#include "telemetry/TXInstallerTools.h"

namespace {

std::shared_ptr<TXInstallerLogController>& sharedInstance() {
    static std::shared_ptr<TXInstallerLogController> instance;
    return instance;
}

std::string contentText(const TXInstallerLogController::Precisions& content) {
    const auto json = foundation::serializeJSON(content);
    if (json)
        return *json;
    platform::current().console->log(
        foundation::format("JSON serialization failed with error: %@", {json.error().description()}));
    return "{}";
}

std::string descriptionOf(const std::map<std::string, std::string>& arguments) {
    foundation::Value::Dictionary dictionary;
    for (const auto& [key, value] : arguments)
        dictionary.emplace(key, foundation::Value(value));
    return foundation::Value(std::move(dictionary)).description();
}

} // namespace

TXInstallerLogController::TXInstallerLogController(std::shared_ptr<TXInstallerLogControllerDelegate> withDelegate)
    : delegate(std::move(withDelegate)) {
    setup();
}

std::shared_ptr<TXInstallerLogController> TXInstallerLogController::initSharedTXInstallerLogControllerWithDelegate(
    std::shared_ptr<TXInstallerLogControllerDelegate> delegate) {
    sharedInstance() = std::make_shared<TXInstallerLogController>(std::move(delegate));
    return sharedInstance();
}

std::shared_ptr<TXInstallerLogController> TXInstallerLogController::sharedTXInstallerLogController() {
    return sharedInstance();
}

TXInstallerLogController::Pairs TXInstallerLogController::installationArguments() {
    platform::Platform& system = platform::current();
    const auto country = system.locale->countryCode();
    const auto languages = system.locale->preferredLanguages();
    const auto language = languages.empty() ? std::nullopt : std::optional(languages.front());
    const bool installed = system.fileQueries->fileExists(Deployment::applicationPath());
    return {{"anonymouscomputerid", TXInstallerTools::installerId()},
            {"os", "launcher_macosx"},
            {"version", ""},
            {"osversion", TXInstallerTools::systemVersionString()},
            {"country", country},
            {"oscountry", country},
            {"lang", language},
            {"oslang", language},
            {"launcherVersion", TXInstallerConfig::shortVersionString()},
            {"buildVersion", TXInstallerConfig::bundleVersion()},
            {"freshInstall", installed ? "0" : "1"}};
}

void TXInstallerLogController::setup() {
    sharedArguments.clear();
    for (const auto& [key, value] : installationArguments()) {
        // Deliberate: the list ends at its first missing value. A locale without a country sends the first four alone.
        if (!value)
            break;
        sharedArguments[key] = *value;
    }
    sharedPrecisions.clear();
    const Pairs precisions{{"partnerName", TXInstallerConfig::partnerName()},
                           {"partnerId", TXInstallerConfig::partnerID()},
                           {"campaignId", TXInstallerConfig::campaignID()}};
    for (const auto& [key, value] : precisions)
        if (value)
            sharedPrecisions[key] = *value;
}

void TXInstallerLogController::setVersion(const std::optional<std::string>& version) {
    if (version)
        sharedArguments["version"] = *version;
}

const std::optional<foundation::URL>& TXInstallerLogController::installerLogURL() {
    static const auto url =
        foundation::URL::withString("https://" + Deployment::installerLogHost() + "/1/installerlog/create");
    return url;
}

bool TXInstallerLogController::showLogs() {
    return TXInstallerTools::showLogs();
}

void TXInstallerLogController::installerLogToServerWithCode(const std::optional<std::string>& code) {
    installerLogToServerWithCode(code, std::nullopt, true);
}

// Deliberate: `flush` is ignored; every event is sent at once.
void TXInstallerLogController::installerLogToServerWithCode(const std::optional<std::string>& code,
                                                            const std::optional<Precisions>& precisions,
                                                            bool /*flush*/) {
    delegate->installerLogRequestWillStart();
    auto arguments = sharedArguments;
    auto content = sharedPrecisions;
    for (const auto& [key, value] : precisions.value_or(Precisions()))
        content[key] = value;
    if (code)
        arguments["step"] = *code;
    arguments["content"] = contentText(content);
    if (showLogs()) {
        platform::current().console->log(
            foundation::format("[INSTALLER_LOG] %@\n%@\n", {foundation::textOf(code), descriptionOf(arguments)}));
    }
    std::make_shared<TXInstallerLogRequest>(shared_from_this())
        ->sendRequest(installerLogURL(), std::optional(arguments));
}

void TXInstallerLogController::requestDidFinish(const TXInstallerLogRequest& /*request*/) {
    delegate->installerLogRequestDidFinish();
}
