#include "platform/qt/StageLabel.h"
#include "tests/ui/AccessibilityBus.h"
#include "tests/ui/InterfaceTest.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// What screen readers hear and see. Only desktops with a way to reach one tell anything.
class AccessibilityTest : public InterfaceTest {
protected:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"))
            GTEST_SKIP() << "this desktop has no screen reader";
        reader_ = std::make_unique<AccessibilityBus>();
        start();
        interface().window().setTitle("Tolvix Installer");
        // The bridge to the bus needs its time to learn that somebody listens.
        int attempt = 0;
        const auto isHeard = [&] {
            interface().textIndicator().setStringValue("Start " + std::to_string(++attempt));
            QTest::qWait(50);
            return !reader_->events.empty();
        };
        ASSERT_TRUE(eventually(isHeard));
        interface().textIndicator().setStringValue("Downloading");
        QTest::qWait(200);
        reader_->events.clear();
    }

    void TearDown() override {
        InterfaceTest::TearDown();
        reader_.reset();
    }

    template <typename Condition>
    static bool eventually(Condition condition) {
        return QTest::qWaitFor(condition, patience);
    }

    // How often a stage of that name was told in the way that is spoken.
    int heardStage(const std::string& name) {
        QTest::qWait(20);
        const auto notes = reader_->heard("showing", 1, AccessibilityBus::Notification);
        return static_cast<int>(std::count_if(notes.begin(), notes.end(), [&](const auto& note) {
            return reader_->name(note.path).toStdString() == name;
        }));
    }

    // How many objects of that name there are below the other one.
    int timesNamed(const QString& path, const QString& name) {
        int times = 0;
        for (const QString& child : reader_->children(path))
            times += (reader_->name(child) == name ? 1 : 0) + timesNamed(child, name);
        return times;
    }

    std::vector<AccessibilityBus::Event> bar(const QString& kind, int detail = 0) {
        return reader_->heard(kind, detail, AccessibilityBus::ProgressBar);
    }

    static constexpr int patience = 20000;
    std::unique_ptr<AccessibilityBus> reader_;
};

TEST_F(AccessibilityTest, ANewStageIsSpokenOnce) {
    interface().textIndicator().setStringValue("Installing");
    EXPECT_TRUE(eventually([this] { return heardStage("Installing") == 1; }));
    interface().textIndicator().setStringValue("Installing");
    QTest::qWait(200);
    EXPECT_EQ(heardStage("Installing"), 1);
}

// The keyboard comes to the first stage with the window, and to the later ones after a question; it is read then.
TEST_F(AccessibilityTest, AStageIsNotSpokenAsWellWhereTheKeyboardComesToIt) {
    platform::StageLabel label;
    label.setStringValue("First");
    label.setStringValue("Second");
    EXPECT_TRUE(eventually([this] { return heardStage("Second") == 1; }));
    reader_->events.clear();
    beginSettled({.messageText = "Title", .informativeText = "Text", .buttons = {"Go on"}});
    press(window(), Qt::Key_Return);
    EXPECT_TRUE(eventually([this] { return !reader_->heard("focused", 1, AccessibilityBus::Notification).empty(); }));
    EXPECT_EQ(heardStage("Downloading"), 0);
}

TEST_F(AccessibilityTest, AnAlertIsReadAsAWholeAndOnce) {
    begin({.style = platform::AlertStyle::Critical,
           .messageText = "It failed",
           .informativeText = "Try again",
           .buttons = {"Download & open", "Quit"}});
    ASSERT_TRUE(eventually([this] { return !reader_->heard("focused", 1, AccessibilityBus::Button).empty(); }));
    const QString button = reader_->heard("focused", 1, AccessibilityBus::Button).front().path;
    EXPECT_EQ(reader_->name(button), "Download & open");
    EXPECT_TRUE(reader_->hasState(button, AccessibilityBus::Focused));
    QString alert = reader_->parent(button);
    for (int level = 0; level < 3 && reader_->role(alert) != AccessibilityBus::Alert; ++level)
        alert = reader_->parent(alert);
    ASSERT_EQ(reader_->role(alert), AccessibilityBus::Alert);
    EXPECT_EQ(reader_->name(alert), "It failed");
    EXPECT_EQ(reader_->description(alert), "") << "read in addition to the text";
    EXPECT_TRUE(reader_->hasState(alert, AccessibilityBus::Modal));
    EXPECT_EQ(timesNamed(alert, "Try again"), 1);
    EXPECT_EQ(timesNamed(alert, "Quit"), 1);
}

TEST_F(AccessibilityTest, TheBarTellsWhenItIsBusy) {
    platform::ProgressIndicator& indicator = interface().progressIndicator();
    indicator.setIndeterminate(true);
    indicator.startAnimation();
    ASSERT_TRUE(eventually([this] { return bar("busy", 1).size() == 1; }));
    const QString path = bar("busy", 1).front().path;
    EXPECT_TRUE(reader_->hasState(path, AccessibilityBus::Busy));
    EXPECT_EQ(reader_->name(path), "Downloading");
    indicator.setIndeterminate(false);
    ASSERT_TRUE(eventually([this] { return bar("busy", 0).size() == 1; }));
    EXPECT_FALSE(reader_->hasState(path, AccessibilityBus::Busy));
}

TEST_F(AccessibilityTest, TheBarTellsAFewValuesASecond) {
    platform::ProgressIndicator& indicator = interface().progressIndicator();
    indicator.setIndeterminate(false);
    QElapsedTimer time;
    time.start();
    constexpr int values = 2000;
    for (int index = 0; index <= values; ++index) {
        indicator.setDoubleValue(100.0 * index / values);
        QTest::qWait(1);
    }
    const qint64 most = 2 + time.elapsed() / 300;
    ASSERT_TRUE(eventually([this] { return !bar("accessible-value").empty(); }));
    EXPECT_EQ(reader_->value(bar("accessible-value").front().path), 100);
    EXPECT_LE(static_cast<qint64>(bar("accessible-value").size()), most);
}
