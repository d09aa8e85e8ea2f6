#pragma once

#include "app/TXFlowInterfaces.h"
#include "platform/Transfers.h"

#include <cstdint>
#include <memory>
#include <optional>

// Fetches the disk image into a fresh private folder of the user's temporary folder. The folder stays after success,
// for the installation to remove, and is removed after a failure. Main thread, but for that removal.
class TXDownloadController final : public TXDownloadStage,
                                   public platform::DownloadDelegate,
                                   public std::enable_shared_from_this<TXDownloadController> {
public:
    explicit TXDownloadController(std::shared_ptr<TXDownloadControllerDelegate> withDelegate);

    void startDownloadArchiveAtURL(const foundation::URL& url) override;
    void abortDownloadArchive() override;
    bool downloadInProgress() const override;

    void downloadDidReceiveResponse(std::int64_t expectedContentLength) override;
    void downloadDidReceiveDataOfLength(std::uint64_t length) override;
    bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& type) override;
    void downloadDidFinish() override;
    void downloadDidFailWithError(const foundation::Error& error) override;

private:
    void startDownload();
    void downloadFinished();
    void downloadFailed(const std::optional<foundation::Error>& error);
    std::optional<foundation::URL> createTmpDirectoryForDownload() const;
    void endWithFailure(const std::optional<foundation::Error>& error);
    static void removeTmpDirectoryForDownload(const foundation::URL& url);

    bool _downloadInProgress = false;
    std::uint64_t _bytesReceived = 0;
    std::shared_ptr<TXDownloadControllerDelegate> delegate;
    // Made from the file's plain path, so its string form is that path: the stages after this one read it so.
    std::optional<foundation::URL> localURL;
    std::optional<foundation::URL> remoteURL;
    std::shared_ptr<platform::Download> URLDownload;
    // The announced length of the last response in bytes, -1 when unknown.
    std::optional<std::int64_t> URLResponse;
};
