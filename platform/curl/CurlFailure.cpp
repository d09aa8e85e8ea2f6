#include "platform/curl/CurlFailure.h"

#include "platform/Transfers.h"

#include <algorithm>
#include <iterator>

namespace platform::curl {

namespace {

struct Meaning {
    CURLcode result;
    std::int64_t code;
    const char* text;
};

constexpr const char* lost = "The network connection was lost.";
constexpr const char* noHost = "A server with this host name could not be found.";
constexpr const char* insecure = "A secure connection to the server could not be made.";

constexpr Meaning meanings[] = {
    {CURLE_URL_MALFORMAT, URLErrorCode::badURL, "The address is not valid."},
    {CURLE_OPERATION_TIMEDOUT, URLErrorCode::timedOut, "The request timed out."},
    {CURLE_COULDNT_RESOLVE_HOST, URLErrorCode::cannotFindHost, noHost},
    {CURLE_COULDNT_RESOLVE_PROXY, URLErrorCode::cannotFindHost, "The proxy server could not be found."},
    {CURLE_COULDNT_CONNECT, URLErrorCode::cannotConnectToHost, "Could not connect to the server."},
    {CURLE_PARTIAL_FILE, URLErrorCode::networkConnectionLost, lost},
    {CURLE_GOT_NOTHING, URLErrorCode::networkConnectionLost, lost},
    {CURLE_SEND_ERROR, URLErrorCode::networkConnectionLost, lost},
    {CURLE_RECV_ERROR, URLErrorCode::networkConnectionLost, lost},
    {CURLE_SSL_CONNECT_ERROR, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_ENGINE_NOTFOUND, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_ENGINE_SETFAILED, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_CERTPROBLEM, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_CIPHER, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_PEER_FAILED_VERIFICATION, URLErrorCode::secureConnectionFailed, "The server's certificate is not trusted."},
    {CURLE_USE_SSL_FAILED, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_ENGINE_INITFAILED, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_CACERT_BADFILE, URLErrorCode::secureConnectionFailed, "The trusted certificates could not be read."},
    {CURLE_SSL_SHUTDOWN_FAILED, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_CRL_BADFILE, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_ISSUER_ERROR, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_PINNEDPUBKEYNOTMATCH, URLErrorCode::secureConnectionFailed, insecure},
    {CURLE_SSL_INVALIDCERTSTATUS, URLErrorCode::secureConnectionFailed, insecure},
};

} // namespace

transfers::TransferFailure curlFailure(CURLcode result, long status, long redirects) {
    if (result == CURLE_HTTP_RETURNED_ERROR)
        return transfers::statusFailure(status);
    if (result == CURLE_TOO_MANY_REDIRECTS)
        return transfers::redirectCountFailure();
    // Sources of other kinds never reach libcurl, so that it was a redirect that led to one.
    if (result == CURLE_ABORTED_BY_CALLBACK || (result == CURLE_UNSUPPORTED_PROTOCOL && redirects > 0))
        return transfers::redirectFailure();
    const auto* meaning = std::find_if(std::begin(meanings), std::end(meanings),
                                       [result](const Meaning& each) { return each.result == result; });
    if (meaning != std::end(meanings))
        return {meaning->code, meaning->text, {}};
    return {URLErrorCode::unknown, "The server's answer could not be used.", {}};
}

} // namespace platform::curl
