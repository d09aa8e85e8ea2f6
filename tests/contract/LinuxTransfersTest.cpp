// The transfers that come from a library, before, while and after it is loaded.

#include "platform/linux/LinuxTransfers.h"
#include "tests/contract/TransfersTest.h"
#include "tests/support/FakeSystem.h"

#include <thread>

namespace tests {

namespace {

class LinuxTransfersTest : public TransfersTest {
protected:
    // Never destroyed, as in the program: the library's thread goes on until the process ends.
    void use(const std::string& library) {
        static auto& all = *new std::vector<platform::LinuxTransfers*>;
        linuxTransfers_ = all.emplace_back(new platform::LinuxTransfers(library, main_, console_));
    }
    platform::Transfers& transfers() override { return *linuxTransfers_; }

    void load() { std::thread(std::exchange(main_.background, nullptr)).join(); }

    // The messages of a transfer that has been begun.
    std::string messages(const std::shared_ptr<TransferNotes>& notes) {
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
        return notes->text;
    }

    FakeConsole console_;

private:
    platform::LinuxTransfers* linuxTransfers_ = nullptr;
};

} // namespace

TEST_F(LinuxTransfersTest, WhatIsAskedForEarlyWaitsForTheLibrary) {
    LoopbackServer server;
    server.answer("/log", answerOf("200 OK", "fine"));
    server.answer("/file", answerOf("200 OK", "12345"));
    use(TRANSFERS_LIBRARY);
    const auto early = startPost(server.url("/log"));
    const auto earlyDownload = startDownload(server.url("/file"));
    EXPECT_EQ(early->text + earlyDownload->text, "");
    EXPECT_TRUE(server.requests().empty());

    load();
    EXPECT_EQ(messages(early), "response data finish ");
    EXPECT_EQ(messages(earlyDownload), "response 5 data finish ");
    EXPECT_EQ(folder_.read("file"), "12345");

    EXPECT_EQ(fetch(server.url("/log")), "fine");
    EXPECT_EQ(post(server.url("/log"))->text, "response data finish ");
    EXPECT_EQ(download(server.url("/file"))->text, "response 5 data finish ");
}

TEST_F(LinuxTransfersTest, NothingIsTransferredWithoutTheLibrary) {
    const std::string url = "http://127.0.0.1/";
    use(folder_.path("missing.so"));
    const auto early = startPost(url);
    const auto earlyDownload = startDownload(url);
    EXPECT_EQ(early->text + earlyDownload->text, "");
    load();
    EXPECT_EQ(messages(early), failure(platform::URLErrorCode::unknown));
    EXPECT_EQ(messages(earlyDownload), failure(platform::URLErrorCode::unknown));

    EXPECT_EQ(fetch(url), std::nullopt);
    const auto late = startPost(url);
    EXPECT_EQ(late->text, "");
    EXPECT_EQ(messages(late), failure(platform::URLErrorCode::unknown));
    EXPECT_EQ(transfers().startDownload(*foundation::URL::withString(url), late), nullptr);
    ASSERT_EQ(console_.messages.size(), 1U);
    EXPECT_TRUE(console_.messages.front().starts_with("No web transfers: "));
}

} // namespace tests
