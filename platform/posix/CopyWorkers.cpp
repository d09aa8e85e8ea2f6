#include "platform/posix/CopyWorkers.h"

#include "platform/posix/FileCopy.h"

#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t threadCount = 2;
constexpr std::size_t mostWaiting = 32;

} // namespace

CopyWorkers::CopyWorkers() {
    try {
        while (threads_.size() < threadCount)
            threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // With fewer threads, or none, submit() does the rest of the work.
    }
}

CopyWorkers::~CopyWorkers() {
    end(true);
}

void CopyWorkers::submit(CopyBatch batch) {
    if (!enqueue(batch))
        copy(batch);
    throwFirstFailure();
}

bool CopyWorkers::enqueue(CopyBatch& batch) {
    const std::lock_guard lock(mutex_);
    if (threads_.empty() || waiting_.size() >= mostWaiting)
        return false;
    waiting_.push_back(std::move(batch));
    changed_.notify_one();
    return true;
}

void CopyWorkers::finish() {
    end(false);
    throwFirstFailure();
}

void CopyWorkers::end(bool dropWaiting) {
    {
        const std::lock_guard lock(mutex_);
        if (dropWaiting) {
            waiting_.clear();
            failed_ = true;
        }
        closed_ = true;
        changed_.notify_all();
    }
    for (std::thread& thread : threads_)
        thread.join();
    threads_.clear();
}

void CopyWorkers::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        const CopyBatch batch = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        copy(batch);
        lock.lock();
    }
}

void CopyWorkers::copy(const CopyBatch& batch) {
    try {
        for (const std::string& name : batch.names) {
            if (failed_)
                return;
            copyRegularFile({batch.from->get(), name.c_str(), batch.fromPath + "/" + name},
                            {batch.to->get(), name.c_str(), batch.toPath + "/" + name});
        }
    } catch (const FileFailure& failure) {
        const std::lock_guard lock(mutex_);
        if (!failure_)
            failure_ = failure;
        failed_ = true;
    }
}

void CopyWorkers::throwFirstFailure() {
    const std::lock_guard lock(mutex_);
    if (failure_)
        throw FileFailure(*failure_);
}

} // namespace platform
