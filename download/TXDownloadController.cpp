#include "download/TXDownloadController.h"

#include "foundation/PathString.h"
#include "platform/Platform.h"

#include <array>
#include <cstdio>

namespace path = foundation::path;

namespace {

constexpr std::int64_t unknownLength = -1;

// Whole milliseconds since the reference date, and the product's name.
std::string privateFolderName(double secondsSinceReferenceDate) {
    std::array<char, 64> name{};
    const int length = std::snprintf(name.data(), name.size(), "%.0f.%s", secondsSinceReferenceDate * 1000, "tolvix");
    return {name.data(), static_cast<std::size_t>(length)};
}

} // namespace

TXDownloadController::TXDownloadController(std::shared_ptr<TXDownloadControllerDelegate> withDelegate)
    : _delegate(std::move(withDelegate)) {}

void TXDownloadController::startDownloadArchiveAtURL(const foundation::URL& url) {
    if (_downloadInProgress)
        return;
    _remoteURL = url;
    startDownload();
}

// Deliberate: a started transfer goes on and still reports its end.
void TXDownloadController::abortDownloadArchive() {}

bool TXDownloadController::downloadInProgress() const {
    return _downloadInProgress;
}

void TXDownloadController::startDownload() {
    _downloadInProgress = true;
    _localURL.reset();
    _folderError.reset();
    URLDownload = platform::current().transfers->startDownload(*_remoteURL, shared_from_this());
    if (!URLDownload) {
        downloadFailed(std::nullopt);
        return;
    }
    _localURL = createTmpDirectoryForDownload();
    _delegate->downloadWillStartAtURL(_localURL);
    // Deliberate: without a place for the file the transfer ends before it asks the server, as a failure.
    const auto destination = _localURL ? std::optional(_localURL->absoluteString()) : std::nullopt;
    URLDownload->setDestination(destination, true);
}

std::optional<foundation::URL> TXDownloadController::createTmpDirectoryForDownload() {
    platform::ProcessInfo& process = *platform::current().processInfo;
    const std::string name = _remoteURL->lastPathComponent();
    if (!path::isPlainName(name))
        return std::nullopt;
    const std::string folder = path::appendingPathComponent(process.temporaryDirectory(),
                                                            privateFolderName(process.secondsSinceReferenceDate()));
    const std::string file = path::appendingPathComponent(folder, name);
    auto url = foundation::URL::withString(file);
    // The later stages take the string form for the path; a path whose string form differs would lead them elsewhere.
    if (!url || url->absoluteString() != file)
        return std::nullopt;
    // A folder that is already there and is not this user's own is left alone, and nothing is written to it.
    if (!platform::current().fileChanges->createDirectory(folder, &_folderError))
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
    _delegate->downloadProgress(static_cast<double>(_bytesReceived) / static_cast<double>(expected) * 100.0);
}

bool TXDownloadController::downloadShouldDecodeSourceDataOfMIMEType(const std::string& /*type*/) {
    return false;
}

void TXDownloadController::downloadDidFinish() {
    downloadFinished();
}

// Where there was no folder to write to, the reason for that says more than the transfer's own failure.
void TXDownloadController::downloadDidFailWithError(const foundation::Error& error) {
    downloadFailed(_folderError.value_or(error));
}

void TXDownloadController::downloadFinished() {
    _downloadInProgress = false;
    URLResponse.reset();
    URLDownload.reset();
    _delegate->downloadDidEndAtURL(*_localURL);
}

void TXDownloadController::downloadFailed(const std::optional<foundation::Error>& error) {
    _downloadInProgress = false;
    URLResponse.reset();
    URLDownload.reset();
    removeTmpDirectoryForDownload();
    _delegate->downloadDidFailWithError(error);
}

void TXDownloadController::removeTmpDirectoryForDownload() const {
    if (_localURL) {
        platform::current().fileChanges->removePrivateFolder(
            path::deletingLastPathComponent(_localURL->absoluteString()));
    }
}
