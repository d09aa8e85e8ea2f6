#pragma once

#include "platform/Transfers.h"
#include "tests/support/FakeFiles.h"

#include <map>

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

    // The whole course of a transfer that the server answers.
    void run(std::uint64_t length) {
        if (hasPlace()) {
            respond(static_cast<std::int64_t>(length));
            receive(length);
        }
        finish();
    }

    // The transfer has come to its end; without a place for the file that is a failure.
    void finish() {
        if (!hasPlace()) {
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
    bool hasPlace() {
        const auto folder = destination ? destination->substr(0, destination->rfind('/')) : "";
        return destination && files_.has(folder) && (overwrites || !files_.has(*destination));
    }

    std::shared_ptr<platform::DownloadDelegate> delegate_;
    FakeFiles& files_;
};

// The network as a test tells it. A fetch of an address without an answer fails.
class FakeTransfers final : public platform::Transfers {
public:
    struct Post {
        platform::PostRequest request;
        std::shared_ptr<platform::ConnectionDelegate> delegate; // null once the request has ended
    };

    explicit FakeTransfers(FakeFiles& files) : files_(files) {}
    ~FakeTransfers() override {
        for (const auto& download : downloads)
            download->forget();
    }

    std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) override {
        fetched.push_back(url.absoluteString());
        const auto found = answers.find(url.absoluteString());
        return found == answers.end() ? std::nullopt : std::optional(found->second);
    }

    std::shared_ptr<platform::Download> startDownload(const foundation::URL& url,
                                                      std::shared_ptr<platform::DownloadDelegate> delegate) override {
        if (refusesDownloads)
            return nullptr;
        downloads.push_back(std::make_shared<FakeDownload>(url, std::move(delegate), files_));
        return downloads.back();
    }

    bool startPost(const platform::PostRequest& request,
                   std::shared_ptr<platform::ConnectionDelegate> delegate) override {
        posts.push_back({request, refusesPosts ? nullptr : std::move(delegate)});
        return !refusesPosts;
    }

    // Ends a request with an answer of the server.
    void finishPost(std::size_t index) {
        const auto delegate = std::move(posts.at(index).delegate);
        delegate->connectionDidReceiveResponse();
        delegate->connectionDidReceiveData("ignored");
        delegate->connectionDidFinishLoading();
    }

    void failPost(std::size_t index, const foundation::Error& error) {
        const auto delegate = std::move(posts.at(index).delegate);
        delegate->connectionDidFailWithError(error);
    }

    // Ends every open request, and those that this leads to.
    void finishPosts() {
        for (std::size_t i = 0; i < posts.size(); ++i)
            if (posts[i].delegate)
                finishPost(i);
    }

    std::map<std::string, std::string> answers; // by address
    std::vector<std::string> fetched;
    std::vector<std::shared_ptr<FakeDownload>> downloads;
    std::vector<Post> posts;
    bool refusesDownloads = false;
    bool refusesPosts = false;

private:
    FakeFiles& files_;
};
