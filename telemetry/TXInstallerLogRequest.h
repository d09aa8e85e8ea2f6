#pragma once

#include "foundation/URL.h"
#include "platform/Transfers.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

class TXInstallerLogRequest;

class TXInstallerLogRequestDelegate {
public:
    virtual ~TXInstallerLogRequestDelegate() = default;
    // The exchange is over, whether it succeeded or failed; once per request. Main thread.
    virtual void requestDidFinish(const TXInstallerLogRequest& request) = 0;
};

// Posts one event to the log service. Used for one exchange only; the exchange keeps it alive until its end. Main
// thread.
class TXInstallerLogRequest final : public platform::ConnectionDelegate,
                                    public std::enable_shared_from_this<TXInstallerLogRequest> {
public:
    using Arguments = std::map<std::string, std::string>;

    explicit TXInstallerLogRequest(std::shared_ptr<TXInstallerLogRequestDelegate> withDelegate);

    // Posts the arguments as a form; absent ones make an empty body.
    void sendRequest(const std::optional<foundation::URL>& url, const std::optional<Arguments>& withArguments);

    // Posts the text. Without a URL the request fails, later; when no connection can be made at all, the delegate is
    // never told.
    void sendRequest(const std::optional<foundation::URL>& url, const std::string& withBody);

    void connectionDidReceiveResponse() override;
    void connectionDidReceiveData(std::string_view data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFailWithError(const foundation::Error& error) override;

private:
    std::string httpResponse;
    std::shared_ptr<TXInstallerLogRequestDelegate> delegate;
};
