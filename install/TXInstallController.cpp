#include "install/TXInstallController.h"

#include "foundation/MessageText.h"
#include "foundation/PathString.h"
#include "install/NSFileManager+ExtendedAttributes.h"
#include "platform/HandOver.h"
#include "telemetry/Deployment.h"
#include "telemetry/TXInstallerConfig.h"

namespace path = foundation::path;

namespace {

using foundation::Error;

constexpr const char* bundleName = "Tolvix.app";

enum InstallErrorCode : std::int64_t {
    ExtractionMissing = 4001,
    // Deliberate: a missing bundle and a failed launch share their code; the message tells them apart.
    FileMissing = 4002,
    LaunchFailure = 4002,
};

Error installerError(std::int64_t code, std::string_view pattern, const std::string& argument) {
    return Error::withDescription("TXTolvixInstallerErrorDomain", code, foundation::format(pattern, {argument}));
}

} // namespace

TXInstallController::TXInstallController(std::shared_ptr<TXInstallControllerDelegate> withDelegate)
    : _delegate(std::move(withDelegate)) {}

void TXInstallController::startInstallArchiveAtURL(const foundation::URL& url) {
    if (_installInProgress)
        return;
    _localURL = url;
    startUnarchive();
}

// Deliberate: steps already running go on to their end and still call the delegate.
void TXInstallController::abortInstallArchive() {}

bool TXInstallController::installInProgress() const {
    return _installInProgress;
}

void TXInstallController::startUnarchive() {
    _installInProgress = true;
    const auto unarchiver = TXUnarchiver::unarchiverForPath(_localURL->absoluteString());
    if (unarchiver)
        unarchiver->setDelegate(shared_from_this());
    _delegate->installWillStart();
    // Deliberate: an archive that no unarchiver takes leaves the installation in progress, without a further message.
    if (unarchiver)
        unarchiver->start();
}

void TXInstallController::unarchiverDidCopyContentAtPath(const std::string& path) {
    _extractedPath = path;
}

void TXInstallController::unarchiverDidFinish(TXUnarchiver& /*unarchiver*/) {
    unarchiveFinished();
}

void TXInstallController::unarchiverDidFail(TXUnarchiver& /*unarchiver*/) {
    unarchiveFailed(std::nullopt);
}

void TXInstallController::unarchiveFinished() {
    if (!platform::performInBackground(shared_from_this(), [](TXInstallController& self) { self.startCopy(); }))
        copyFailed(platform::noThreadError());
}

void TXInstallController::startCopy() {
    platform::Platform& system = platform::current();
    if (!_extractedPath || !system.fileQueries->fileExists(*_extractedPath)) {
        return schedule(
            &TXInstallController::copyFailed,
            installerError(ExtractionMissing, "Couldn't extract file at path: %@", foundation::textOf(_extractedPath)));
    }
    closeRunningProduct();
    const std::string source = path::appendingPathComponent(*_extractedPath, bundleName);
    if (!system.fileQueries->fileExists(source)) {
        return schedule(&TXInstallController::copyFailed,
                        installerError(FileMissing, "Couldn't find file at path: %@", source));
    }
    const std::string destination = Deployment::applicationPath();
    // From the removal of the old product until the new one stands there, no quit may leave neither.
    const auto delay = system.application->delayEnd();
    // Deliberate: the old product goes first, so a copy that fails afterwards leaves none there. A dangling link in its
    // place is an item too.
    if (system.fileQueries->attributesOfItem(destination))
        system.fileChanges->removeItem(destination);
    std::optional<Error> error;
    // Deliberate: why the plain copy failed is dropped; the copy with authentication has its own reason to report.
    const bool copied =
        system.fileChanges->copyItem(source, destination) ||
        NSFileManager::ExtendedAttributes::copyPathWithForcedAuthenticationWithoutTmpFile(source, destination, &error);
    if (copied)
        return platform::performOnMain(shared_from_this(), [](TXInstallController& self) { self.copyFinished(); });
    schedule(&TXInstallController::copyFailed, std::move(error));
}

// Deliberate: nothing limits the rounds. A product that refuses to quit holds the installation.
void TXInstallController::closeRunningProduct() {
    platform::Workspace& workspace = *platform::current().workspace;
    const std::string identifier = Deployment::productBundleIdentifier();
    for (auto running = workspace.runningApplications(identifier); !running.empty();
         running = workspace.runningApplications(identifier))
        workspace.terminate(running.front());
}

void TXInstallController::copyFinished() {
    _launching = true;
    if (!platform::performInBackground(shared_from_this(), [](TXInstallController& self) { self.startLaunch(); }))
        launchFailed(platform::noThreadError());
}

void TXInstallController::startLaunch() {
    platform::Workspace& workspace = *platform::current().workspace;
    const std::string application = Deployment::applicationPath();
    if (TXInstallerConfig::autoStart()) {
        platform::current().console->log("Launching Tolvix...");
        // An application that is shown to the person instead counts as launched.
        if (!workspace.launchApplication(application) && !workspace.selectFile(application, "")) {
            return schedule(&TXInstallController::launchFailed,
                            installerError(LaunchFailure, "Couldn't open application at path: %@", application));
        }
    }
    platform::performOnMain(shared_from_this(), [](TXInstallController& self) { self.launchFinished(); });
}

void TXInstallController::unarchiveFailed(const std::optional<Error>& error) {
    endInstallation();
    _delegate->installDidFailWithError(error);
}

void TXInstallController::copyFailed(const std::optional<Error>& error) {
    endInstallation();
    _delegate->installDidFailWithError(error);
}

void TXInstallController::launchFailed(const std::optional<Error>& error) {
    endInstallation();
    _delegate->launchDidFailWithError(error.value());
}

void TXInstallController::launchFinished() {
    endInstallation();
    _delegate->installDidEnd();
}

void TXInstallController::endInstallation() {
    _installInProgress = false;
    _launching = false;
    removeTmpDirectoryForDownload();
}

void TXInstallController::removeTmpDirectoryForDownload() const {
    platform::current().fileChanges->removePrivateFolder(path::deletingLastPathComponent(_localURL->absoluteString()));
}

void TXInstallController::schedule(Handler handler, std::optional<Error> error) {
    platform::performOnMain(
        shared_from_this(), [handler, error = std::move(error)](TXInstallController& self) { (self.*handler)(error); });
}
