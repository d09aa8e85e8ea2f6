#pragma once

#include "foundation/Error.h"
#include "foundation/URL.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Receives a download's progress, on the main thread, never before the call that started it has returned. Exactly one
// of the last two comes, as the last message.
class DownloadDelegate {
public:
    virtual ~DownloadDelegate() = default;
    // A response has begun; its announced length in bytes, -1 when unknown. Redirects send none.
    virtual void downloadDidReceiveResponse(std::int64_t expectedContentLength) = 0;
    // That many further bytes have been written to the file.
    virtual void downloadDidReceiveDataOfLength(std::uint64_t length) = 0;
    // Asked before a transfer would unpack what the server sent; transfers that never unpack do not ask.
    virtual bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& type) = 0;
    virtual void downloadDidFinish() = 0;
    virtual void downloadDidFailWithError(const foundation::Error& error) = 0;
};

// A running download. It goes on when dropped; it keeps its delegate alive until its last message.
class Download {
public:
    virtual ~Download() = default;
    // Where the bytes go; once, in the call that made the download. Absent: the download fails. The folder must exist.
    virtual void setDestination(const std::optional<std::string>& path, bool allowOverwrite) = 0;
};

// Receives the course of a request, on the main thread, never before the call that started it has returned. Exactly one
// of the last two comes, as the last message. Any HTTP status is a finished request.
class ConnectionDelegate {
public:
    virtual ~ConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse() = 0;
    virtual void connectionDidReceiveData(std::string_view data) = 0;
    virtual void connectionDidFinishLoading() = 0;
    virtual void connectionDidFailWithError(const foundation::Error& error) = 0;
};

// One request with a body.
struct PostRequest {
    foundation::URL url;
    std::string headerName;
    std::string headerValue;
    std::string body;
};

// Web transfers: http, https and file sources; certificates are always checked; at most 20 redirects, none from https
// to http; a transfer fails after 60 s without a connection or without a byte.
class Transfers {
public:
    virtual ~Transfers() = default;

    // The whole body at the URL, whatever the HTTP status. Blocks; for background threads. Nothing when the transfer
    // fails or the body is larger than any honest answer.
    virtual std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) = 0;

    // Starts a download to a file; an HTTP status of 400 or more is a failure. Null when it cannot be made. Main
    // thread.
    virtual std::shared_ptr<Download> startDownload(const foundation::URL& url,
                                                    std::shared_ptr<DownloadDelegate> delegate) = 0;

    // Posts the request; the delegate is kept alive until its last message. False, and no message, when no connection
    // can be made at all. Main thread.
    virtual bool startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) = 0;
};

// Codes of foundation::urlErrorDomain.
namespace URLErrorCode {
inline constexpr std::int64_t badURL = -1000;
inline constexpr std::int64_t timedOut = -1001;
inline constexpr std::int64_t unsupportedURL = -1002;
inline constexpr std::int64_t cannotFindHost = -1003;
inline constexpr std::int64_t cannotConnectToHost = -1004;
inline constexpr std::int64_t networkConnectionLost = -1005;
inline constexpr std::int64_t tooManyRedirects = -1007;
inline constexpr std::int64_t fileDoesNotExist = -1100;
inline constexpr std::int64_t fileIsDirectory = -1101;
inline constexpr std::int64_t noPermissionsToReadFile = -1102;
inline constexpr std::int64_t dataLengthExceedsMaximum = -1103;
inline constexpr std::int64_t secureConnectionFailed = -1200;
inline constexpr std::int64_t cannotCreateFile = -3000;
inline constexpr std::int64_t cannotWriteToFile = -3003;
inline constexpr std::int64_t unknown = -1;
} // namespace URLErrorCode

} // namespace platform
