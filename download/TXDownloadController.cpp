#include "download/TXDownloadController.h"

#include "foundation/PathString.h"
#include "platform/HandOver.h"

#include <array>
#include <cstdio>

namespace path = foundation::path;

namespace {

constexpr std::int64_t unknownLength = -1;

// A remote name decides the local one. What is no single plain name would leave the private folder, or be it.
bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

// Whole milliseconds since the reference date, and the product's name.
std::string privateFolderName(double secondsSinceReferenceDate) {
    std::array<char, 64> name{};
    const int length = std::snprintf(name.data(), name.size(), "%.0f.%s", secondsSinceReferenceDate * 1000, "tolvix");
    return {name.data(), static_cast<std::size_t>(length)};
}

} // namespace

TXDownloadController::TXDownloadController(std::shared_ptr<TXDownloadControllerDelegate> withDelegate)
    : delegate(std::move(withDelegate)) {}

void TXDownloadController::startDownloadArchiveAtURL(const foundation::URL& url) {
    if (_downloadInProgress)
        return;
    remoteURL = url;
    startDownload();
}

// Deliberate: a started transfer goes on and still reports its end.
void TXDownloadController::abortDownloadArchive() {}

bool TXDownloadController::downloadInProgress() const {
    return _downloadInProgress;
}

void TXDownloadController::startDownload() {
    _downloadInProgress = true;
    localURL.reset();
    URLDownload = platform::current().transfers->startDownload(*remoteURL, shared_from_this());
    if (!URLDownload) {
        downloadFailed(std::nullopt);
        return;
    }
    localURL = createTmpDirectoryForDownload();
    delegate->downloadWillStartAtURL(localURL);
    const auto destination = localURL ? std::optional(localURL->absoluteString()) : std::nullopt;
    URLDownload->setDestination(destination, true);
}

std::optional<foundation::URL> TXDownloadController::createTmpDirectoryForDownload() const {
    platform::ProcessInfo& process = *platform::current().processInfo;
    const std::string name = remoteURL->lastPathComponent();
    if (!isPlainFileName(name))
        return std::nullopt;
    const std::string folder = path::appendingPathComponent(process.temporaryDirectory(),
                                                            privateFolderName(process.secondsSinceReferenceDate()));
    const std::string file = path::appendingPathComponent(folder, name);
    auto url = foundation::URL::withString(file);
    // The later stages take the string form for the path; a path whose string form differs would lead them elsewhere.
    if (!url || url->absoluteString() != file)
        return std::nullopt;
    // A folder that is already there and is not this user's own is left alone, and nothing is written to it.
    if (!platform::current().fileChanges->createDirectory(folder))
        return std::nullopt;
    return url;
}

void TXDownloadController::downloadDidReceiveResponse(std::int64_t expectedContentLength) {
    _bytesReceived = 0;
    URLResponse = expectedContentLength;
}

void TXDownloadController::downloadDidReceiveDataOfLength(std::uint64_t length) {
    const std::int64_t expected = URLResponse.value_or(unknownLength);
    _bytesReceived += length;
    // Zero announced and more sent would be no number at all.
    if (expected == unknownLength || expected == 0)
        return;
    delegate->downloadProgress(static_cast<double>(_bytesReceived) / static_cast<double>(expected) * 100.0);
}

bool TXDownloadController::downloadShouldDecodeSourceDataOfMIMEType(const std::string& /*type*/) {
    return false;
}

void TXDownloadController::downloadDidFinish() {
    downloadFinished();
}

void TXDownloadController::downloadDidFailWithError(const foundation::Error& error) {
    downloadFailed(error);
}

void TXDownloadController::downloadFinished() {
    _downloadInProgress = false;
    URLResponse.reset();
    URLDownload.reset();
    delegate->downloadDidEndAtURL(*localURL);
}

void TXDownloadController::downloadFailed(const std::optional<foundation::Error>& error) {
    URLResponse.reset();
    URLDownload.reset();
    if (!localURL) {
        endWithFailure(error);
        return;
    }
    // Removing a large file takes its time on a busy disk, in which the window has to go on answering.
    platform::performInBackground(shared_from_this(), [error, url = *localURL](TXDownloadController& self) {
        removeTmpDirectoryForDownload(url);
        platform::performOnMain(self.shared_from_this(),
                                [error](TXDownloadController& failed) { failed.endWithFailure(error); });
    });
}

void TXDownloadController::endWithFailure(const std::optional<foundation::Error>& error) {
    _downloadInProgress = false;
    delegate->downloadDidFailWithError(error);
}

void TXDownloadController::removeTmpDirectoryForDownload(const foundation::URL& url) {
    platform::current().fileChanges->removePrivateFolder(path::deletingLastPathComponent(url.absoluteString()));
}
