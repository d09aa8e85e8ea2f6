#include "platform/macos/QuitSignals.h"

#include <gtest/gtest.h>

#include <semaphore>

using platform::QuitSignals;

TEST(QuitSignalsTest, TellsOfEachSignalAndSetsTheirEffectBack) {
    std::signal(SIGHUP, SIG_IGN);
    const auto terminate = std::signal(SIGTERM, SIG_DFL);
    std::counting_semaphore<> requests(0);
    {
        const QuitSignals signals([&] { requests.release(); });
        for (const int signal : {SIGINT, SIGTERM, SIGINT}) {
            std::raise(signal);
            requests.acquire();
        }
        std::raise(SIGHUP);
    }
    EXPECT_FALSE(requests.try_acquire());
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
    EXPECT_EQ(std::signal(SIGTERM, terminate), SIG_DFL);
}
