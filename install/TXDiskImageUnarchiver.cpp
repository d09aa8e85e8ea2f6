#include "install/TXDiskImageUnarchiver.h"

#include "foundation/PathString.h"
#include "install/NTSynchronousTask.h"
#include "platform/HandOver.h"

namespace path = foundation::path;

const bool TXDiskImageUnarchiver::loaded = TXDiskImageUnarchiver::load();

bool TXDiskImageUnarchiver::load() {
    _registerImplementation({&TXDiskImageUnarchiver::_canUnarchivePath, [](const std::string& archive) {
                                 return std::make_shared<TXDiskImageUnarchiver>(archive);
                             }});
    return true;
}

TXDiskImageUnarchiver::TXDiskImageUnarchiver(std::string path) : TXUnarchiver(std::move(path)) {}

bool TXDiskImageUnarchiver::_canUnarchivePath(const std::string& path) {
    return path::pathExtension(path) == "dmg";
}

std::string TXDiskImageUnarchiver::className() const {
    return "TXDiskImageUnarchiver";
}

void TXDiskImageUnarchiver::start() {
    const auto self = std::static_pointer_cast<TXDiskImageUnarchiver>(shared_from_this());
    if (!platform::performInBackground(self, [](TXDiskImageUnarchiver& worker) { worker._extractDMG(); }))
        postFailure();
}

void TXDiskImageUnarchiver::_extractDMG() {
    platform::Platform& system = platform::current();
    const std::string mountPoint = path::appendingPathComponent(system.processInfo->temporaryDirectory(),
                                                                system.processInfo->globallyUniqueString());
    // Deliberate: a link is something there, wherever it leads.
    if (system.fileQueries->attributesOfItem(mountPoint))
        return giveUp(mountPoint);
    system.fileChanges->createDirectory(mountPoint);
    if (!system.fileQueries->fileExists(mountPoint))
        return giveUp(mountPoint);
    if (!attach(mountPoint))
        return giveUp(mountPoint);
    copyVolume(mountPoint);
    detach(mountPoint);
}

void TXDiskImageUnarchiver::giveUp(const std::string& mountPoint) {
    postFailure();
    platform::current().fileChanges->removeItem(mountPoint);
}

bool TXDiskImageUnarchiver::attach(const std::string& mountPoint) {
    // A tool that asks whether to agree to a licence is told yes.
    return NTSynchronousTask::task(
               platform::current().diskImages->toolPath(), "/",
               {"attach", archivePath, "-mountpoint", mountPoint, "-noverify", "-nobrowse", "-noautoopen"}, "yes\n")
        .has_value();
}

void TXDiskImageUnarchiver::copyVolume(const std::string& mountPoint) {
    const std::string extractionFolder =
        path::appendingPathComponent(path::deletingLastPathComponent(archivePath), path::lastPathComponent(mountPoint));
    if (!platform::current().fileChanges->createDirectory(extractionFolder))
        return postFailure();
    if (!copyEntries(mountPoint, extractionFolder))
        return;
    if (delegate)
        delegate->unarchiverDidCopyContentAtPath(extractionFolder);
    platform::performOnMain(shared_from_this(), [](TXUnarchiver& self) {
        static_cast<TXDiskImageUnarchiver&>(self)._notifyDelegateOfSuccess();
    });
}

bool TXDiskImageUnarchiver::copyEntries(const std::string& mountPoint, const std::string& extractionFolder) {
    platform::Platform& system = platform::current();
    bool allCopied = true;
    // A volume that cannot be listed counts as an empty one; the missing application is noticed later.
    for (const std::string& name :
         system.fileQueries->contentsOfDirectory(mountPoint).value_or(std::vector<std::string>())) {
        const std::string entry = path::appendingPathComponent(mountPoint, name);
        if (!system.fileQueries->isReadableFile(entry))
            continue;
        if (!system.fileChanges->copyItem(entry, path::appendingPathComponent(extractionFolder, name))) {
            // Deliberate: one failure notice for each entry that fails.
            postFailure();
            allCopied = false;
        }
    }
    return allCopied;
}

// Not waited for: nothing depends on it, and the mount point is of no further use.
void TXDiskImageUnarchiver::detach(const std::string& mountPoint) {
    platform::current().tasks->launchDetached(
        {platform::current().diskImages->toolPath(), {"detach", mountPoint, "-force"}, std::nullopt, nullptr, nullptr});
}

void TXDiskImageUnarchiver::postFailure() {
    platform::performOnMain(
        shared_from_this(),
        [](TXUnarchiver& self) { static_cast<TXDiskImageUnarchiver&>(self)._notifyDelegateOfFailure(); });
}
