#include "app/TXAppDelegate.h"

#include "foundation/MessageText.h"
#include "foundation/PercentEscape.h"
#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerConfig.h"
#include "telemetry/TXInstallerTools.h"

namespace {

std::string queryValue(const std::string& value) {
    // Deliberate: "&" and "=" stay as they are, "#", "[" and "]" are escaped, and a text beyond ASCII is sent as
    // "(null)".
    std::string escaped = foundation::textOf(foundation::addingPercentEscapes(value));
    for (auto plus = escaped.find('+'); plus != std::string::npos; plus = escaped.find('+', plus))
        escaped.replace(plus, 1, "%2B"); // services read a bare plus as a blank
    return escaped;
}

} // namespace

std::string TXAppDelegate::feedURL() {
    const std::pair<const char*, std::string> pairs[] = {
        {"platform", "launcher_macosx"},
        {"target", "archive"},
        {"format", "json"},
        {"currentSoftwareVersion", TXInstallerConfig::bundleVersion().value_or("")},
        {"os", TXInstallerTools::systemVersionString()},
        {"partner", TXInstallerConfig::partnerName().value_or("")},
    };
    std::string query;
    for (const auto& [key, value] : pairs) {
        if (!query.empty())
            query += '&';
        query += foundation::format("%@=%@", {key, queryValue(value)});
    }
    return foundation::format("https://%@/5/binaries/query?%@", {Deployment::binariesHost(), query});
}
