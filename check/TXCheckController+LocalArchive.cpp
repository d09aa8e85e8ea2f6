#include "check/TXCheckController.h"

#include "foundation/PathString.h"
#include "platform/Platform.h"
#include "telemetry/TXInstallerConfig.h"

#include <algorithm>

namespace path = foundation::path;

foundation::URL TXCheckController::localArchivePath() {
    const std::string folder = path::deletingLastPathComponent(platform::current().bundles->mainBundlePath());
    return foundation::URL::fileURLWithPath(path::appendingPathComponent(folder, "Tolvix.dmg"));
}

bool TXCheckController::isLocalArchiveAt(const foundation::URL& url, const std::optional<std::string>& inFolderNamed) {
    const std::string archive = url.path().value_or("");
    if (!platform::current().fileQueries->fileExists(archive))
        return false;
    return inFolderNamed == path::lastPathComponent(path::deletingLastPathComponent(archive));
}

std::optional<TXCheckController::Outcome> TXCheckController::checkIfLocalArchiveExists() {
    const auto version = TXInstallerConfig::bundleVersion();
    const foundation::URL archive = localArchivePath();
    if (!isLocalArchiveAt(archive, version))
        return std::nullopt;
    return Outcome{archive, version, {}};
}

std::optional<std::string> TXCheckController::guessVersionFromURL(const std::optional<foundation::URL>& url) {
    if (!url)
        return std::nullopt;
    const auto components = path::pathComponents(url->path().value_or(""));
    const auto found = std::find_if(components.rbegin(), components.rend(), [](const std::string& component) {
        return component.find_first_not_of("0123456789.") == std::string::npos;
    });
    return found == components.rend() ? std::nullopt : std::optional(*found);
}
