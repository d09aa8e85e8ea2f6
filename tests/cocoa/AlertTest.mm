#include "tests/cocoa/InterfaceTest.h"

#include <algorithm>

using platform::Alert;

namespace {

Alert sample(const std::string& message, std::vector<std::string> buttons, std::size_t escapeButton) {
    Alert alert;
    alert.messageText = message;
    alert.informativeText = "More about " + message;
    alert.buttons = std::move(buttons);
    alert.escapeButton = escapeButton;
    return alert;
}

} // namespace

class AlertTest : public InterfaceTest {
protected:
    platform::SheetNumber begin(const Alert& alert) {
        return interface.alerts().beginSheet(alert, [this](int code) { codes.push_back(code); });
    }
    bool appears(const std::string& title) {
        return runUntil([&] { return screen::button(title) != nil; });
    }

    std::vector<int> codes;
};

TEST_F(AlertTest, ShowsTextsAndButtonsAndTellsWhichWasPressed) {
    begin(sample("First", {"Yes", "No", "Perhaps"}, 1));
    ASSERT_TRUE(appears("Perhaps"));
    const auto shown = screen::texts(interface.window().window());
    for (const char* text : {"First", "More about First", "Yes", "No", "Perhaps"})
        EXPECT_EQ(std::count(shown.begin(), shown.end(), text), 1) << text;
    [screen::button("Perhaps") performClick:nil];
    EXPECT_EQ(codes, std::vector{1002});
    EXPECT_TRUE(screen::button("Yes") == nil);
}

TEST_F(AlertTest, TakesEscapeForTheSafeButtonWhicheverThatIs) {
    for (const std::size_t safe : {0U, 1U}) {
        begin(sample("Quit?", {"Continue", "Quit now"}, safe));
        ASSERT_TRUE(appears("Quit now"));
        screen::pressEscape([screen::button("Quit now") window]);
        EXPECT_EQ(codes.back(), 1000 + static_cast<int>(safe));
    }
    EXPECT_EQ(codes.size(), 2);
    screen::pressEscape(interface.window().window());
    EXPECT_EQ(codes.size(), 2);
}

TEST_F(AlertTest, WithdrawsAnAlertInEveryState) {
    // Before it is on screen, while it is, and behind another one.
    interface.alerts().endSheet(begin(sample("Early", {"Early"}, 0)), 1007);
    EXPECT_EQ(codes, std::vector{1007});
    const auto open = begin(sample("Open", {"Open"}, 0));
    const auto waiting = begin(sample("Waiting", {"Waiting"}, 0));
    begin(sample("Last", {"Last"}, 0));
    ASSERT_TRUE(appears("Open"));
    EXPECT_TRUE(screen::button("Early") == nil && screen::button("Last") == nil);
    interface.alerts().endSheet(waiting, 1008);
    interface.alerts().endSheet(open, 1009);
    interface.alerts().endSheet(open, 1010);
    ASSERT_TRUE(appears("Last"));
    EXPECT_TRUE(screen::button("Open") == nil);
    [screen::button("Last") performClick:nil];
    EXPECT_EQ(codes, (std::vector{1007, 1008, 1009, 1000}));
}

TEST_F(AlertTest, LeavesTheScreenWithTheLastAlertThatEndsTheProgram) {
    Alert alert = sample("Failed", {"Quit"}, 0);
    begin(alert);
    ASSERT_TRUE(appears("Quit"));
    [screen::button("Quit") performClick:nil];
    EXPECT_TRUE([interface.window().window() isVisible]);
    alert.endsProgram = true;
    begin(alert);
    ASSERT_TRUE(appears("Quit"));
    [screen::button("Quit") performClick:nil];
    EXPECT_FALSE([interface.window().window() isVisible]);
}
