#pragma once

#include "platform/curl/EasyHandle.h"
#include "platform/curl/Transfer.h"
#include "platform/transfers/Loader.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace platform::curl {

// One request over the web, which the multi handle drives and which ends when the server falls silent.
class WebTransfer final : public Transfer {
public:
    // `settings` must outlive the transfer.
    WebTransfer(transfers::WebRequest request, const WebSettings& settings, std::unique_ptr<transfers::Sink> sink)
        : request_(std::move(request)), settings_(&settings), sink_(std::move(sink)) {}
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

private:
    void configure();
    void leave();
    std::optional<transfers::TransferFailure> failure(CURLcode result) const;
    bool respond();
    bool receive(std::string_view bytes);
    bool receiveHeader(std::string_view line);
    bool mayFollow(std::string_view headerLine);
    static std::size_t bodyCame(char* bytes, std::size_t unit, std::size_t count, void* self);
    static std::size_t headerCame(char* bytes, std::size_t unit, std::size_t count, void* self);
    Clock::time_point silenceEnd();

    const transfers::WebRequest request_;
    const WebSettings* settings_;
    std::unique_ptr<transfers::Sink> sink_;
    CURLM* multi_ = nullptr;
    std::optional<EasyHandle> handle_;
    std::size_t headerBytes_ = 0;
    bool responded_ = false;
    // Why a redirect is not followed.
    std::optional<transfers::TransferFailure> refusal_;
    // The sink wants no more.
    bool stopped_ = false;
    curl_off_t transferred_ = -1;
    Clock::time_point lastTransfer_;
    bool over_ = false;
};

} // namespace platform::curl
