#pragma once

#include "flow/TXFlowInterfaces.h"
#include "platform/Transfers.h"

#include <cstdint>
#include <memory>
#include <optional>

// Fetches the disk image into a fresh private folder of the user's temporary folder. The folder stays after success,
// for the installation to remove, and is removed after a failure. Main thread.
class TXDownloadController final : public TXDownloadStage,
                                   public platform::DownloadDelegate,
                                   public std::enable_shared_from_this<TXDownloadController> {
public:
    explicit TXDownloadController(std::shared_ptr<TXDownloadControllerDelegate> withDelegate);

    void startDownloadArchiveAtURL(const foundation::URL& url) override;
    void abortDownloadArchive() override;
    bool downloadInProgress() const override;

    const std::shared_ptr<TXDownloadControllerDelegate>& delegate() const { return _delegate; }

    // Where the file is written; kept after the end. Made from the file's plain path, so its string form is that path:
    // the stages after this one read it so.
    const std::optional<foundation::URL>& localURL() const { return _localURL; }

    // The source of the last start.
    const std::optional<foundation::URL>& remoteURL() const { return _remoteURL; }

    void downloadDidReceiveResponse(std::int64_t expectedContentLength) override;
    void downloadDidReceiveDataOfLength(std::uint64_t length) override;
    bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& type) override;
    void downloadDidFinish() override;
    void downloadDidFailWithError(const foundation::Error& error) override;

private:
    void startDownload();
    void downloadFinished();
    void downloadFailed(const std::optional<foundation::Error>& error);
    std::optional<foundation::URL> createTmpDirectoryForDownload();
    void removeTmpDirectoryForDownload() const;

    bool _downloadInProgress = false;
    std::uint64_t _bytesReceived = 0;
    std::shared_ptr<TXDownloadControllerDelegate> _delegate;
    std::optional<foundation::URL> _localURL;
    std::optional<foundation::URL> _remoteURL;
    std::shared_ptr<platform::Download> URLDownload;
    // The announced length of the last response in bytes, -1 when unknown.
    std::optional<std::int64_t> URLResponse;
    // Why the private folder could not be made.
    std::optional<foundation::Error> _folderError;
};
