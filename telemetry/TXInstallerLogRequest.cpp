#include "telemetry/TXInstallerLogRequest.h"

#include "foundation/MessageText.h"
#include "foundation/Unicode.h"
#include "platform/HandOver.h"

TXInstallerLogRequest::TXInstallerLogRequest(std::shared_ptr<TXInstallerLogRequestDelegate> withDelegate)
    : delegate(std::move(withDelegate)) {}

void TXInstallerLogRequest::sendRequest(const std::optional<foundation::URL>& url,
                                        const std::optional<Arguments>& withArguments) {
    std::string body;
    for (const auto& [key, value] : withArguments.value_or(Arguments())) {
        if (!body.empty())
            body += '&';
        // Deliberate: keys and values go out raw. The service reads them so, and the content is JSON text.
        body += key;
        body += '=';
        body += value;
    }
    sendRequest(url, body);
}

void TXInstallerLogRequest::sendRequest(const std::optional<foundation::URL>& url, const std::string& withBody) {
    if (!url) {
        platform::performOnMain(shared_from_this(), [](TXInstallerLogRequest& self) {
            self.connectionDidFailWithError({foundation::urlErrorDomain, platform::URLErrorCode::badURL, {}});
        });
        return;
    }
    // Deliberate: as many bytes go out as the text has UTF-16 units, so a body beyond ASCII loses its tail.
    const std::size_t length = foundation::utf16Length(withBody);
    platform::current().transfers->startPost(
        {*url, "content-type", "application/x-www-form-urlencoded", withBody.substr(0, length)}, shared_from_this());
}

void TXInstallerLogRequest::connectionDidReceiveResponse() {
    httpResponse.clear();
}

void TXInstallerLogRequest::connectionDidReceiveData(std::string_view data) {
    httpResponse += data;
}

void TXInstallerLogRequest::connectionDidFinishLoading() {
    delegate->requestDidFinish(*this);
}

void TXInstallerLogRequest::connectionDidFailWithError(const foundation::Error& error) {
    platform::current().console->log(foundation::format("Request did fail with error: %@", {error.description()}));
    delegate->requestDidFinish(*this);
}
