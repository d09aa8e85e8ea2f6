#include "platform/curl/CurlTransfers.h"

// What the program finds in the library. The result belongs to the caller.
extern "C" __attribute__((visibility("default"))) platform::Transfers* TXMakeTransfers(platform::Threads& threads) {
    return new platform::CurlTransfers(threads);
}
