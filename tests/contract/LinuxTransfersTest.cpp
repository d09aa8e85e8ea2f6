// The transfers that come from a library, before, while and after it is loaded.

#include "platform/linux/LinuxTransfers.h"
#include "tests/contract/TransfersTest.h"
#include "tests/support/FakeSystem.h"

#include <thread>

namespace tests {

namespace {

// Keeps the loading until the test lets it begin.
class HeldLoading final : public MainQueue {
public:
    void performInBackground(std::function<void()> step) override {
        EXPECT_EQ(step_, nullptr) << "the library is loaded once";
        step_ = std::move(step);
    }
    void load() { std::thread(step_).join(); }

private:
    std::function<void()> step_;
};

struct Program {
    explicit Program(const std::string& library) : transfers(library, threads, console) {}

    HeldLoading threads;
    FakeConsole console;
    platform::LinuxTransfers transfers;
};

class LinuxTransfersTest : public TransfersTest {
protected:
    static std::shared_ptr<TransferNotes> startPost(Program& program, const std::string& url) {
        auto notes = std::make_shared<TransferNotes>();
        EXPECT_TRUE(program.transfers.startPost({*foundation::URL::withString(url), "a", "b", "body"}, notes));
        EXPECT_EQ(notes->text, "");
        return notes;
    }

    std::shared_ptr<TransferNotes> startDownload(Program& program, const std::string& url) {
        auto notes = std::make_shared<TransferNotes>();
        const auto download = program.transfers.startDownload(*foundation::URL::withString(url), notes);
        if (!download)
            return nullptr;
        download->setDestination(folder_.path("file"), true);
        EXPECT_EQ(notes->text, "");
        return notes;
    }

    static std::string messages(Program& program, const std::shared_ptr<TransferNotes>& notes) {
        EXPECT_TRUE(program.threads.runUntil([&] { return notes->ended; }));
        return notes->text;
    }
};

} // namespace

TEST_F(LinuxTransfersTest, WhatIsAskedForEarlyWaitsForTheLibrary) {
    LoopbackServer server;
    server.answer("/log", answerOf("200 OK", "fine"));
    server.answer("/file", answerOf("200 OK", "12345"));
    // Never destroyed, as in the program: the library's thread goes on until the process ends.
    static Program& program = *new Program(TRANSFERS_LIBRARY);
    const auto post = startPost(program, server.url("/log"));
    const auto download = startDownload(program, server.url("/file"));
    EXPECT_TRUE(server.requests().empty());

    program.threads.load();
    EXPECT_EQ(messages(program, post), "response data finish ");
    EXPECT_EQ(messages(program, download), "response 5 data finish ");
    EXPECT_EQ(folder_.read("file"), "12345");

    EXPECT_EQ(program.transfers.dataWithContentsOfURL(*foundation::URL::withString(server.url("/log"))), "fine");
    EXPECT_EQ(messages(program, startPost(program, server.url("/log"))), "response data finish ");
    EXPECT_EQ(messages(program, startDownload(program, server.url("/file"))), "response 5 data finish ");
}

TEST_F(LinuxTransfersTest, NothingIsTransferredWithoutTheLibrary) {
    const std::string url = "http://127.0.0.1/";
    Program program(folder_.path("missing.so"));
    const auto post = startPost(program, url);
    const auto download = startDownload(program, url);
    program.threads.load();
    EXPECT_EQ(messages(program, post), failure(platform::URLErrorCode::unknown));
    EXPECT_EQ(messages(program, download), failure(platform::URLErrorCode::unknown));

    EXPECT_EQ(program.transfers.dataWithContentsOfURL(*foundation::URL::withString(url)), std::nullopt);
    EXPECT_EQ(messages(program, startPost(program, url)), failure(platform::URLErrorCode::unknown));
    EXPECT_EQ(startDownload(program, url), nullptr);
    ASSERT_EQ(program.console.messages.size(), 1U);
    EXPECT_TRUE(program.console.messages.front().starts_with("No web transfers: "));
}

} // namespace tests
