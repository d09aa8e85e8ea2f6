#pragma once

#include "platform/Transfers.h"
#include "tests/support/FakeFiles.h"

// A download that a test drives. Its delegate lives until the last message.
class FakeDownload final : public platform::Download {
public:
    FakeDownload(foundation::URL from, std::shared_ptr<platform::DownloadDelegate> to, FakeFiles& files)
        : url(std::move(from)), delegate_(std::move(to)), files_(files) {}

    void setDestination(const std::optional<std::string>& path, bool allowOverwrite) override {
        destination = path;
        overwrites = allowOverwrite;
    }

    void respond(std::int64_t expectedContentLength) { delegate_->downloadDidReceiveResponse(expectedContentLength); }
    void receive(std::uint64_t length) { delegate_->downloadDidReceiveDataOfLength(length); }
    bool unpacks() { return delegate_->downloadShouldDecodeSourceDataOfMIMEType("application/gzip"); }

    // The transfer has come to its end; without a folder for the file that is a failure.
    void finish() {
        const auto folder = destination ? destination->substr(0, destination->rfind('/')) : "";
        if (!destination || !files_.has(folder)) {
            fail({foundation::urlErrorDomain, platform::URLErrorCode::cannotCreateFile, {}});
            return;
        }
        files_.addFile(*destination, "disk image");
        const auto delegate = std::move(delegate_);
        delegate->downloadDidFinish();
    }

    void fail(const foundation::Error& error) {
        const auto delegate = std::move(delegate_);
        delegate->downloadDidFailWithError(error);
    }

    // Drops a delegate that will hear no more; the two hold each other until the last message.
    void forget() { delegate_.reset(); }

    const foundation::URL url;
    std::optional<std::string> destination;
    bool overwrites = false;

private:
    std::shared_ptr<platform::DownloadDelegate> delegate_;
    FakeFiles& files_;
};
