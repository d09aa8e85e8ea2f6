#include "platform/curl/WebPost.h"

namespace platform::curl {

WebPost::WebPost(const PostRequest& request, const WebSettings& settings,
                 MainThreadMessenger<ConnectionDelegate> messenger)
    : WebTransfer(request.url.absoluteString(), settings), request_(request), messenger_(std::move(messenger)) {}

void WebPost::configure(EasyHandle& handle) {
    handle.setPost(request_);
}

void WebPost::announce() {
    if (announced_)
        return;
    announced_ = true;
    messenger_.send([](ConnectionDelegate& d) { d.connectionDidReceiveResponse(); });
}

std::optional<TransferFailure> WebPost::receive(std::string_view bytes) {
    announce();
    received_ += bytes.size();
    if (received_ > limits().answerBytes)
        return TransferFailure{URLErrorCode::dataLengthExceedsMaximum, "The server's answer is too long.", {}};
    messenger_.send([piece = std::string(bytes)](ConnectionDelegate& d) { d.connectionDidReceiveData(piece); });
    return std::nullopt;
}

void WebPost::succeeded() {
    announce();
    messenger_.sendLast([](ConnectionDelegate& d) { d.connectionDidFinishLoading(); });
}

void WebPost::failed(const TransferFailure& failure) {
    messenger_.sendLast([error = errorFor(failure)](ConnectionDelegate& d) { d.connectionDidFailWithError(error); });
}

} // namespace platform::curl
