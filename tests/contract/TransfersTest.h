#pragma once

#include "platform/Threads.h"
#include "platform/Transfers.h"
#include "platform/transfers/LoaderTransfers.h"
#include "tests/contract/TestFolder.h"
#include "tests/contract/TransferNotes.h"
#include "tests/support/LoopbackServer.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace tests {

// A main thread that runs what it was handed only when a test says so.
class MainQueue final : public platform::Threads {
public:
    void performOnMain(std::function<void()> step) override {
        const std::lock_guard lock(mutex_);
        steps_.push_back(std::move(step));
        added_.notify_one();
    }
    bool performInBackground(std::function<void()> step) override {
        background = std::move(step);
        return true;
    }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return nullptr; }

    // Runs the steps as they come until the condition holds; false after a time that no test needs.
    bool runUntil(const std::function<bool()>& condition) {
        while (!condition()) {
            std::unique_lock lock(mutex_);
            if (!added_.wait_for(lock, std::chrono::seconds(60), [this] { return !steps_.empty(); }))
                return false;
            const auto step = std::move(steps_.front());
            steps_.pop_front();
            lock.unlock();
            step();
        }
        return true;
    }

    std::function<void()> background; // waits for the test

private:
    std::mutex mutex_;
    std::condition_variable added_;
    std::deque<std::function<void()>> steps_;
};

// No proxies, and the system's certificates alone.
inline TestEnvironment plainEnvironment() {
    return {{"http_proxy", std::nullopt}, {"https_proxy", std::nullopt}, {"HTTPS_PROXY", std::nullopt},
            {"all_proxy", std::nullopt},  {"ALL_PROXY", std::nullopt},   {"SSL_CERT_FILE", std::nullopt}};
}

// The transfers that the test program is about.
std::unique_ptr<platform::Transfers> makeTransfers(platform::Threads& threads,
                                                   const platform::transfers::TransferLimits& limits);

// The real transfers with a manual main thread and an empty folder.
class TransfersTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(main_.background, nullptr) << "transfers have a thread of their own"; }

    // The transfers, made at the first call with the limits set by then.
    platform::Transfers& transfers() {
        if (!transfers_)
            transfers_ = makeTransfers(main_, limits_);
        return *transfers_;
    }
    void forgetTransfers() { transfers_.reset(); }
    void use(std::unique_ptr<platform::Transfers> transfers) { transfers_ = std::move(transfers); }

    // Begins a download to "file" in the folder.
    std::shared_ptr<TransferNotes> startDownload(const std::string& url) {
        auto notes = std::make_shared<TransferNotes>();
        transfers().startDownload(*foundation::URL::withString(url), notes)->setDestination(folder_.path("file"), true);
        return notes;
    }

    // A whole download.
    std::shared_ptr<TransferNotes> download(const std::string& url) {
        auto notes = startDownload(url);
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
        return notes;
    }

    std::shared_ptr<TransferNotes> startPost(const std::string& url, const std::string& body = "a=b") {
        auto notes = std::make_shared<TransferNotes>();
        const platform::PostRequest request{*foundation::URL::withString(url), "content-type", "text/x-test", body};
        EXPECT_TRUE(transfers().startPost(request, notes));
        return notes;
    }

    // A whole request.
    std::shared_ptr<TransferNotes> post(const std::string& url, const std::string& body = "a=b") {
        auto notes = startPost(url, body);
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
        return notes;
    }

    std::optional<std::string> fetch(const std::string& url) {
        return transfers().dataWithContentsOfURL(*foundation::URL::withString(url));
    }

    // The names in the folder, in order, each followed by a blank.
    std::string filesInFolder() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.insert(entry.path().filename());
        std::string text;
        for (const auto& name : names)
            text += name + ' ';
        return text;
    }

    TestEnvironment environment_ = plainEnvironment();
    TestFolder folder_;
    platform::transfers::TransferLimits limits_;
    MainQueue main_;

private:
    std::unique_ptr<platform::Transfers> transfers_;
};

} // namespace tests
