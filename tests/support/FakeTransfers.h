#pragma once

#include "tests/support/FakeDownload.h"

#include <map>

// The network as a test tells it. A fetch of an address without an answer fails.
class FakeTransfers final : public platform::Transfers {
public:
    struct Post {
        platform::PostRequest request;
        std::shared_ptr<platform::ConnectionDelegate> delegate; // null once the request has ended
    };

    explicit FakeTransfers(FakeFiles& files) : files_(files) {}
    FakeTransfers(const FakeTransfers&) = delete;
    FakeTransfers& operator=(const FakeTransfers&) = delete;
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
        for (std::size_t i = 0; i < posts.size(); ++i) {
            if (posts[i].delegate)
                finishPost(i);
        }
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
