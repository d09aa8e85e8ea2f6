#include "install/TXInstallController.h"

#include "foundation/PathString.h"
#include "foundation/Text.h"
#include "install/NSFileManager+ExtendedAttributes.h"
#include "platform/HandOver.h"
#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerConfig.h"

namespace path = foundation::path;

namespace {

using foundation::Error;

constexpr const char* bundleName = "Tolvix.app";

enum InstallErrorCode : std::int64_t {
    extractionMissing = 4001,
    // Deliberate: a missing bundle and a failed launch share their code; the message tells them apart.
    fileMissing = 4002,
    launchFailure = 4002,
};

Error installerError(std::int64_t code, std::string_view pattern, const std::string& argument) {
    return Error::withDescription("TXTolvixInstallerErrorDomain", code, foundation::format(pattern, {argument}));
}

} // namespace

TXInstallController::TXInstallController(std::shared_ptr<TXInstallControllerDelegate> withDelegate)
    : delegate(std::move(withDelegate)) {}

void TXInstallController::startInstallArchiveAtURL(const foundation::URL& url) {
    if (_installInProgress)
        return;
    localURL = url;
    startUnarchive();
}

// Deliberate: steps already running go on to their end and still call the delegate.
void TXInstallController::abortInstallArchive() {}

bool TXInstallController::installInProgress() const {
    return _installInProgress;
}

void TXInstallController::startUnarchive() {
    _installInProgress = true;
    const auto unarchiver = TXUnarchiver::unarchiverForPath(localURL->absoluteString());
    if (unarchiver)
        unarchiver->setDelegate(shared_from_this());
    delegate->installWillStart();
    // Deliberate: an archive that no unarchiver takes leaves the installation in progress, without a further message.
    if (unarchiver)
        unarchiver->start();
}

void TXInstallController::unarchiverDidCopyContentAtPath(const std::string& path) {
    extractedPath = path;
}

void TXInstallController::unarchiverDidFinish(TXUnarchiver& /*unarchiver*/) {
    unarchiveFinished();
}

void TXInstallController::unarchiverDidFail(TXUnarchiver& /*unarchiver*/) {
    unarchiveFailed(std::nullopt);
}

void TXInstallController::unarchiveFinished() {
    platform::performInBackground(shared_from_this(), [](TXInstallController& self) { self.startCopy(); });
}

void TXInstallController::startCopy() {
    platform::Platform& system = platform::current();
    if (!extractedPath || !system.fileQueries->fileExists(*extractedPath)) {
        return schedule(
            &TXInstallController::copyFailed,
            installerError(extractionMissing, "Couldn't extract file at path: %@", foundation::textOf(extractedPath)));
    }
    closeRunningProduct();
    const std::string source = path::appendingPathComponent(*extractedPath, bundleName);
    if (!system.fileQueries->fileExists(source)) {
        return schedule(&TXInstallController::copyFailed,
                        installerError(fileMissing, "Couldn't find file at path: %@", source));
    }
    const std::string destination = Deployment::applicationPath();
    // Deliberate: the old product goes first, so a copy that fails afterwards leaves none there.
    if (system.fileQueries->attributesOfItem(destination))
        system.fileChanges->removeItem(destination);
    const bool vacant = !system.fileQueries->attributesOfItem(destination);
    std::optional<Error> error;
    const bool copied =
        system.fileChanges->copyItem(source, destination) ||
        NSFileManager::ExtendedAttributes::copyPathWithForcedAuthenticationWithoutTmpFile(source, destination, &error);
    if (copied) {
        return platform::performOnMain(shared_from_this(), [](TXInstallController& self) { self.copyFinished(); });
    }
    // Half a product is worse than none; an old one that could not be removed stays.
    if (vacant)
        system.fileChanges->removeItem(destination);
    schedule(&TXInstallController::copyFailed, std::move(error));
}

// Deliberate: nothing limits the rounds. A product that refuses to quit holds the installation.
void TXInstallController::closeRunningProduct() {
    platform::Workspace& workspace = *platform::current().workspace;
    const std::string identifier = Deployment::productBundleIdentifier();
    for (auto running = workspace.runningApplications(identifier); !running.empty();
         running = workspace.runningApplications(identifier)) {
        workspace.terminate(running.front());
    }
}

void TXInstallController::copyFinished() {
    platform::performInBackground(shared_from_this(), [](TXInstallController& self) { self.startLaunch(); });
}

void TXInstallController::startLaunch() {
    platform::Workspace& workspace = *platform::current().workspace;
    const std::string application = Deployment::applicationPath();
    if (TXInstallerConfig::autoStart()) {
        platform::current().console->log("Launching Tolvix...");
        // An application that is shown to the person instead counts as launched.
        if (!workspace.launchApplication(application) && !workspace.selectFile(application, "")) {
            return schedule(&TXInstallController::launchFailed,
                            installerError(launchFailure, "Couldn't open application at path: %@", application));
        }
    }
    platform::performOnMain(shared_from_this(), [](TXInstallController& self) { self.launchFinished(); });
}

void TXInstallController::unarchiveFailed(const std::optional<Error>& error) {
    endInstallation([error](auto& d) { d.installDidFailWithError(error); });
}

void TXInstallController::copyFailed(const std::optional<Error>& error) {
    endInstallation([error](auto& d) { d.installDidFailWithError(error); });
}

void TXInstallController::launchFailed(const std::optional<Error>& error) {
    endInstallation([error](auto& d) { d.launchDidFailWithError(error.value()); });
}

void TXInstallController::launchFinished() {
    endInstallation([](auto& d) { d.installDidEnd(); });
}

// Removing what a large product left behind takes its time on a busy disk, in which the window has to go on answering.
void TXInstallController::endInstallation(Report report) {
    platform::performInBackground(
        shared_from_this(), [report = std::move(report), url = *localURL](TXInstallController& self) {
            removeTmpDirectoryForDownload(url);
            platform::performOnMain(self.shared_from_this(), [report](TXInstallController& ended) {
                ended._installInProgress = false;
                report(*ended.delegate);
            });
        });
}

void TXInstallController::removeTmpDirectoryForDownload(const foundation::URL& url) {
    platform::current().fileChanges->removePrivateFolder(path::deletingLastPathComponent(url.absoluteString()));
}

void TXInstallController::schedule(Handler handler, std::optional<Error> error) {
    platform::performOnMain(shared_from_this(),
                            [handler, error = std::move(error)](TXInstallController& self) { (self.*handler)(error); });
}
