#pragma once

#include "platform/curl/WebTransfer.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace platform::curl {

// Where a thread waits for the body that another one fetches.
class FetchedBody {
public:
    // The first call counts.
    void set(std::optional<std::string> body);

    // Waits for it. Once.
    std::optional<std::string> wait();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool set_ = false;
    std::optional<std::string> body_;
};

// Fetches a whole body into memory. Given up, it leaves nothing.
class WebFetch final : public WebTransfer {
public:
    WebFetch(std::string url, const WebSettings& settings, std::shared_ptr<FetchedBody> result);
    ~WebFetch() override;
    WebFetch(const WebFetch&) = delete;
    WebFetch& operator=(const WebFetch&) = delete;

private:
    std::optional<TransferFailure> receive(std::string_view bytes) override;
    void succeeded() override;
    void failed(const TransferFailure& failure) override;

    std::string body_;
    std::shared_ptr<FetchedBody> result_;
};

} // namespace platform::curl
