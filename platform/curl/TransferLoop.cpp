#include "platform/curl/TransferLoop.h"

#include "platform/curl/CurlLibrary.h"
#include "platform/curl/WebTransfer.h"

#include <algorithm>
#include <csignal>
#include <pthread.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform::curl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds longestWait{10'000};

// Signals belong to the main thread; and writing to a connection that the server has closed must be an ordinary error.
void prepareThread() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
    pthread_setname_np(pthread_self(), "transfers");
}

} // namespace

TransferLoop::~TransferLoop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        if (multi_ != nullptr)
            curl_multi_wakeup(multi_);
    }
    if (thread_.joinable())
        thread_.join();
}

bool TransferLoop::start() {
    const std::lock_guard lock(mutex_);
    if (thread_.joinable())
        return true;
    if (!CurlLibrary::initialize())
        return false;
    multi_ = curl_multi_init();
    if (multi_ == nullptr)
        return false;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        curl_multi_cleanup(std::exchange(multi_, nullptr));
        return false;
    }
    return true;
}

void TransferLoop::add(std::unique_ptr<Transfer> transfer) {
    const std::lock_guard lock(mutex_);
    added_.push_back(std::move(transfer));
    curl_multi_wakeup(multi_);
}

void TransferLoop::run() {
    prepareThread();
    while (turn()) {
        const auto wait = std::chrono::ceil<milliseconds>(wakeTime_ - Clock::now());
        const auto limited = std::clamp(wait, milliseconds::zero(), longestWait);
        curl_multi_poll(multi_, nullptr, 0, static_cast<int>(limited.count()), nullptr);
    }
    // The end of the thread would run the libraries' clean-up for it, which is no better than using them.
    while (!close())
        ::pause();
}

bool TransferLoop::close() {
    const CurlLibrary::Use use;
    if (!use.isGranted())
        return false;
    // Here and not in the destructor: closing a connection writes to it. Delegates are left to the destructor.
    for (const auto& transfer : running_)
        transfer->abandon();
    curl_multi_cleanup(multi_);
    return true;
}

bool TransferLoop::turn() {
    const CurlLibrary::Use use;
    if (!use.isGranted() || !beginAdded())
        return false;
    int count = 0;
    curl_multi_perform(multi_, &count);
    endFinished();
    advanceAll();
    return true;
}

bool TransferLoop::beginAdded() {
    TransferList added;
    {
        const std::lock_guard lock(mutex_);
        if (stopping_)
            return false;
        added.swap(added_);
    }
    for (auto& transfer : added) {
        transfer->begin(multi_);
        running_.push_back(std::move(transfer));
    }
    return true;
}

void TransferLoop::endFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left))
        if (message->msg == CURLMSG_DONE)
            WebTransfer::of(message->easy_handle).end(message->data.result);
}

void TransferLoop::advanceAll() {
    wakeTime_ = Clock::now() + longestWait;
    std::erase_if(running_, [this](const std::unique_ptr<Transfer>& transfer) {
        const auto next = transfer->advance();
        if (next)
            wakeTime_ = std::min(wakeTime_, *next);
        return !next;
    });
}

} // namespace platform::curl
