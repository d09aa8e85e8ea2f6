#include "tests/support/FakeUserInterface.h"

#include <gtest/gtest.h>

// The order of alerts, and what ends them: the same for every front end.

namespace {

using Texts = std::vector<std::string>;

class AlertQueueTest : public testing::Test {
protected:
    // Begins an alert whose end is written down with its code and followed by a step.
    platform::SheetNumber begin(const std::string& title, bool endsProgram = false, std::function<void()> then = {}) {
        platform::Alert alert;
        alert.messageText = title;
        alert.endsProgram = endsProgram;
        return alerts.beginSheet(alert, [this, title, then](int code) {
            ended.push_back(title + " " + std::to_string(code));
            if (then)
                then();
        });
    }

    FakeAlerts alerts;
    Texts ended;
};

} // namespace

TEST_F(AlertQueueTest, ShowsOneAfterTheOther) {
    begin("first", false, [this] { begin("third"); });
    begin("second");
    for (const char* title : {"first", "second", "third"}) {
        EXPECT_EQ(alerts.shown().messageText, title);
        alerts.answer(1000);
    }
    EXPECT_EQ(ended, (Texts{"first 1000", "second 1000", "third 1000"}));
    EXPECT_EQ(alerts.count(), 0U);
    alerts.answer(1000);
    EXPECT_EQ(ended.size(), 3U) << "an answer to nothing";
}

TEST_F(AlertQueueTest, EndsOpenAndWaitingOnes) {
    const auto first = begin("first");
    const auto second = begin("second");
    const auto third = begin("third");
    alerts.endSheet(second, 1001);
    EXPECT_EQ(alerts.shown().messageText, "first");
    alerts.endSheet(first, 1000);
    EXPECT_EQ(alerts.shown().messageText, "third");
    alerts.endSheet(first, 1001);
    alerts.endSheet(third, 1002);
    EXPECT_EQ(ended, (Texts{"second 1001", "first 1000", "third 1002"}));
}

TEST_F(AlertQueueTest, AnAnswerCanEndOthersAndNotItself) {
    platform::SheetNumber second = 0;
    const auto first = begin("first", false, [&] {
        alerts.endSheet(1, 1001);
        alerts.answer(1001);
        alerts.endSheet(second, 1002);
    });
    second = begin("second");
    alerts.endSheet(first, 1000);
    EXPECT_EQ(ended, (Texts{"first 1000", "second 1002"}));
    EXPECT_EQ(alerts.count(), 0U);
}

TEST_F(AlertQueueTest, LeavesTheScreenOnlyAfterTheLastOfThoseThatEndTheProgram) {
    begin("question");
    alerts.answer(1000);
    EXPECT_FALSE(alerts.leftTheScreen);
    begin("failure", true);
    begin("question");
    alerts.answer(1000);
    EXPECT_FALSE(alerts.leftTheScreen);
    alerts.answer(1000);
    EXPECT_TRUE(alerts.leftTheScreen);
}
