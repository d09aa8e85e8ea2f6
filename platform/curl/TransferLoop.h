#pragma once

#include "platform/curl/Transfer.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace platform::curl {

// The thread that all transfers run on.
class TransferLoop {
public:
    TransferLoop() = default;

    // Gives up all transfers and ends the thread.
    ~TransferLoop();
    TransferLoop(const TransferLoop&) = delete;
    TransferLoop& operator=(const TransferLoop&) = delete;

    // Starts the thread unless it runs. Whether it runs. From any thread.
    bool start();

    // Hands over a transfer; after a successful start. From any thread.
    void add(std::unique_ptr<Transfer> transfer);

private:
    using TransferList = std::vector<std::unique_ptr<Transfer>>;

    void run();
    bool turn();
    bool close();
    bool beginAdded();
    void endFinished();
    void advanceAll();

    std::mutex mutex_;
    TransferList added_;
    bool stopping_ = false;
    CURLM* multi_ = nullptr;
    std::thread thread_;

    // Of the thread alone.
    TransferList running_;
    Clock::time_point wakeTime_;
};

} // namespace platform::curl
