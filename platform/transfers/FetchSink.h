#pragma once

#include "platform/transfers/Sink.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace platform::transfers {

// Where a thread waits for the body that another one fetches.
class FetchedBody {
public:
    // The first call counts.
    void set(std::optional<std::string> body);

    // Waits for it. Once.
    std::optional<std::string> wait();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool set_ = false;
    std::optional<std::string> body_;
};

// Gathers a whole body in memory, whatever the status; a longer one than the limit is a failure. Given up, it leaves
// nothing.
class FetchSink final : public Sink {
public:
    FetchSink(std::size_t limit, std::shared_ptr<FetchedBody> result) : limit_(limit), result_(std::move(result)) {}
    ~FetchSink() override { result_->set(std::nullopt); }
    FetchSink(const FetchSink&) = delete;
    FetchSink& operator=(const FetchSink&) = delete;

private:
    std::optional<TransferFailure> takeResponse(long status, std::int64_t expectedLength) override;
    std::optional<TransferFailure> take(std::string_view bytes) override;
    std::optional<TransferFailure> succeed() override;
    void fail(const foundation::Error& error) override;

    std::size_t limit_;
    std::string body_;
    std::shared_ptr<FetchedBody> result_;
};

} // namespace platform::transfers
