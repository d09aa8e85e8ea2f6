#pragma once

#include "platform/curl/EasyHandle.h"
#include "platform/curl/Transfer.h"

#include <optional>
#include <string_view>

namespace platform::curl {

// A transfer over the web: one request that the multi handle drives and that ends when the server falls silent.
class WebTransfer : public Transfer {
public:
    // `settings` must outlive the transfer.
    WebTransfer(std::string url, const WebSettings& settings) : url_(std::move(url)), settings_(&settings) {}
    ~WebTransfer() override { leave(); }
    WebTransfer(const WebTransfer&) = delete;
    WebTransfer& operator=(const WebTransfer&) = delete;

    // The transfer that the handle belongs to.
    static WebTransfer& of(CURL* handle);

    void begin(CURLM* multi) override;
    std::optional<Clock::time_point> advance() override;
    void abandon() override { leave(); }

    // The request is over, as libcurl says.
    void end(CURLcode result);

protected:
    // Adds what this kind of transfer needs.
    virtual void configure(EasyHandle& /*handle*/) {}

    // A piece of the final response's body. A failure ends the transfer.
    virtual std::optional<TransferFailure> receive(std::string_view bytes) = 0;

    // The transfer has succeeded, once its body is complete, or failed.
    virtual void succeeded() = 0;
    virtual void failed(const TransferFailure& failure) = 0;

    const EasyHandle& handle() const { return *handle_; }
    const TransferLimits& limits() const { return settings_->limits; }
    // The error for a failure, which names the address that the request had got to.
    foundation::Error errorFor(const TransferFailure& failure) const;

private:
    void leave();
    static std::size_t receiveBody(char* bytes, std::size_t unit, std::size_t count, void* self);
    Clock::time_point silenceEnd();

    std::string url_;
    const WebSettings* settings_;
    CURLM* multi_ = nullptr;
    std::optional<EasyHandle> handle_;
    std::optional<TransferFailure> failure_;
    curl_off_t transferred_ = -1;
    Clock::time_point lastTransfer_;
    bool over_ = false;
};

} // namespace platform::curl
