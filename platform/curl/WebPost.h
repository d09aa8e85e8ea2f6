#pragma once

#include "platform/curl/MainThreadMessenger.h"
#include "platform/curl/WebTransfer.h"

#include <cstddef>

namespace platform::curl {

// A request with a body, whose answer is handed on piece by piece.
class WebPost final : public WebTransfer {
public:
    WebPost(const PostRequest& request, const WebSettings& settings, MainThreadMessenger<ConnectionDelegate> messenger);

private:
    void configure(EasyHandle& handle) override;
    std::optional<TransferFailure> receive(std::string_view bytes) override;
    void succeeded() override;
    void failed(const TransferFailure& failure) override;
    void announce();

    PostRequest request_;
    MainThreadMessenger<ConnectionDelegate> messenger_;
    std::size_t received_ = 0;
    bool announced_ = false;
};

} // namespace platform::curl
