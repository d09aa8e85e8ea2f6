#pragma once

#include "foundation/URL.h"
#include "platform/transfers/FileCopy.h"
#include "platform/transfers/Sink.h"

#include <cstdint>
#include <memory>
#include <string>

namespace platform::transfers {

// What each kind of web request needs: Fetch is a GET whose body may be sent compressed, and is decoded; Download is a
// GET of a long body as it is stored, never decoded; Post is sent at most once, whatever the connection does.
enum class RequestKind : std::uint8_t { Fetch, Download, Post };

struct WebRequest {
    RequestKind kind = RequestKind::Fetch;
    foundation::URL url;
    // These are a Post's.
    std::string headerName;
    std::string headerValue;
    std::string body;
};

// The system's way to the web: http and https, redirects within TransferLimits and never from https to http,
// certificates always checked.
class Loader {
public:
    Loader() = default;
    virtual ~Loader() = default;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    // Makes ready for transfers. False when the system has no means for any. Any thread.
    virtual bool start() = 0;

    // Sends the request; its answer goes to the sink. After a successful start. Any thread.
    virtual void load(WebRequest request, std::unique_ptr<Sink> sink) = 0;

    // Runs the copy, not on the main thread. After a successful start. Main thread.
    virtual void copy(std::unique_ptr<FileCopy> copy) = 0;
};

} // namespace platform::transfers
