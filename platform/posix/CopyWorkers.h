#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace platform {

// Some regular files of one folder that are to be copied to another one. Both stay open until the batch is dropped.
struct CopyBatch {
    std::shared_ptr<const FileDescriptor> from;
    std::shared_ptr<const FileDescriptor> to;
    std::string fromPath;
    std::string toPath;
    std::vector<std::string> names;
};

// Threads that copy files, because making files is what takes the time in a tree of small ones. The first failure ends
// the work of all. Used from one thread.
class CopyWorkers {
public:
    CopyWorkers();
    // Drops what is still waiting, and waits for what is being copied.
    ~CopyWorkers();
    CopyWorkers(const CopyWorkers&) = delete;
    CopyWorkers& operator=(const CopyWorkers&) = delete;

    // Hands a batch over, or copies it here and now when enough are waiting, which bounds memory and descriptors.
    // Throws the first failure of any batch so far.
    void submit(CopyBatch batch);

    // Waits until everything is copied. Throws the first failure of any batch.
    void finish();

private:
    bool enqueue(CopyBatch& batch);
    void work();
    void copy(const CopyBatch& batch);
    void end(bool dropWaiting);
    void throwFirstFailure();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<CopyBatch> waiting_;
    bool closed_ = false;
    std::optional<FileFailure> failure_;
    // Read between files without the lock.
    std::atomic<bool> failed_{false};
    std::vector<std::thread> threads_;
};

} // namespace platform
