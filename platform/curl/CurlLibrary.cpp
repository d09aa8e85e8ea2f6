#include "platform/curl/CurlLibrary.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <curl/curl.h>
#include <thread>

namespace platform::curl {

namespace {

using namespace std::chrono_literals;

// Without destructors, so that threads may look at them until the process is gone.
constinit std::atomic<int> uses{0};
constinit std::atomic<bool> ending{false};

void refuseUses() {
    ending = true;
    const auto limit = std::chrono::steady_clock::now() + 1s;
    while (uses.load() > 0 && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(200us);
}

} // namespace

bool CurlLibrary::initialize() {
    // Registered after the libraries have registered their own ends, and therefore run before them.
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK && std::atexit(refuseUses) == 0;
    return ready;
}

bool CurlLibrary::isEnding() {
    return ending;
}

CurlLibrary::Use::Use() {
    ++uses;
    granted_ = !ending;
}

CurlLibrary::Use::~Use() {
    --uses;
}

} // namespace platform::curl
