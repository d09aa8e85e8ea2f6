#include "platform/curl/CurlTransfers.h"

#include "platform/curl/CurlLibrary.h"
#include "platform/curl/CurlLoader.h"

namespace platform {

namespace {

// A loader that stays when the process is ending: then its thread may be anywhere, and goes with everything else.
std::shared_ptr<curl::CurlLoader> makeLoader(const transfers::TransferLimits& limits) {
    return {new curl::CurlLoader(limits),
            [](curl::CurlLoader* loader) {
                if (!curl::CurlLibrary::isEnding())
                    delete loader;
            }};
}

} // namespace

CurlTransfers::CurlTransfers(Threads& threads, const transfers::TransferLimits& limits)
    : LoaderTransfers(threads, limits, makeLoader(limits)) {}

} // namespace platform
