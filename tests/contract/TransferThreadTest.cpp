// The thread that transfers run on: how it ends, on its own and with the process.

#include "tests/contract/TransfersTest.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

namespace tests {

namespace {

class TransferThreadTest : public TransfersTest {
protected:
    // Ends the process with the clean-up of all its libraries, as a lost display does. Nobody is left to remove the
    // folder afterwards.
    [[noreturn]] void end() const {
        std::filesystem::remove_all(folder_.path());
        std::exit(7);
    }
};

using Ending = LoopbackServer::Ending;
using namespace std::chrono_literals;

} // namespace

TEST_F(TransferThreadTest, StopsAtOnceWhateverRuns) {
    LoopbackServer download;
    LoopbackServer query;
    download.answer("/file", {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234", Ending::Silence});
    query.answer("/query", {"", Ending::Silence});
    const auto begin = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < 100; ++i) {
        const auto notes = startDownload(download.url("/file"));
        auto body = std::async(
            std::launch::async, [&] { return fetch(query.url("/query")); });
        EXPECT_TRUE(main_.runUntil([&] { return notes->received == 4; }));
        while (query.requests().size() <= i)
            std::this_thread::yield();
        forgetTransfers();
        EXPECT_EQ(body.get(), std::nullopt);
        EXPECT_EQ(notes->text, "response 10 data ");
        EXPECT_EQ(filesInFolder(), "");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST_F(TransferThreadTest, ProgramMayEndAtAnyTime) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto endDuringDownload = [this] {
        LoopbackServer server;
        server.answer("/file", answerOf("200 OK", std::string(64 << 20, 'x')));
        const auto notes = startDownload(server.url("/file"));
        main_.runUntil([&] { return notes->received > 0; });
        end();
    };
    const auto endDuringHandshake = [this] {
        // The end of the process takes a while after the libraries have ended.
        std::atexit([] { std::this_thread::sleep_for(100ms); });
        LoopbackServer server;
        startDownload("https" + server.url("/file").substr(4));
        std::this_thread::sleep_for(2ms);
        end();
    };
    EXPECT_EXIT(endDuringDownload(), testing::ExitedWithCode(7), "");
    for (int i = 0; i < 5; ++i)
        EXPECT_EXIT(endDuringHandshake(), testing::ExitedWithCode(7), "");
}

} // namespace tests
