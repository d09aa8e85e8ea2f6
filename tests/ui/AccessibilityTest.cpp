#include "tests/ui/InterfaceTest.h"

#include <QAccessible>
#include <QTest>

#include <algorithm>
#include <vector>

class AccessibilityTest : public InterfaceTest {
protected:
    void SetUp() override {
        start();
        interface().window().setTitle("Tolvix Installer");
        interface().textIndicator().setStringValue("Downloading");
    }

    // The first node of that role and name at or below the widget, as a screen reader finds it.
    static QAccessibleInterface* find(QWidget& widget, QAccessible::Role role, const QString& name) {
        std::vector<QAccessibleInterface*> waiting{QAccessible::queryAccessibleInterface(&widget)};
        while (!waiting.empty()) {
            QAccessibleInterface* node = waiting.back();
            waiting.pop_back();
            if (node->role() == role && node->text(QAccessible::Name) == name) {
                return node;
            }
            for (int index = 0; index < node->childCount(); ++index) {
                waiting.push_back(node->child(index));
            }
        }
        return nullptr;
    }

    void beginFailure() {
        interface().alerts().beginSheet({.style = platform::AlertStyle::Critical,
                                         .messageText = "It failed",
                                         .informativeText = "Try again",
                                         .buttons = {"Download & open", "Quit"}},
                                        [](int) {});
    }
};

TEST_F(AccessibilityTest, WindowTextAndBar) {
    ASSERT_NE(find(window(), QAccessible::Window, "Tolvix Installer"), nullptr);
    EXPECT_NE(find(window(), QAccessible::StaticText, "Downloading"), nullptr);
    QAccessibleInterface* bar = find(window(), QAccessible::ProgressBar, "Downloading");
    ASSERT_NE(bar, nullptr);

    interface().progressIndicator().setIndeterminate(true);
    interface().progressIndicator().startAnimation();
    EXPECT_TRUE(bar->state().busy);
    EXPECT_EQ(bar->text(QAccessible::Value), "");

    interface().progressIndicator().setIndeterminate(false);
    interface().progressIndicator().setDoubleValue(42);
    EXPECT_FALSE(bar->state().busy);
    EXPECT_EQ(bar->text(QAccessible::Value), "42%");
    ASSERT_NE(bar->valueInterface(), nullptr);
    EXPECT_EQ(bar->valueInterface()->currentValue().toDouble(), 42);
    EXPECT_EQ(bar->valueInterface()->maximumValue().toDouble(), 100);
}

TEST_F(AccessibilityTest, AlertsHaveTheirTextsAndButtons) {
    beginFailure();
    QAccessibleInterface* alert = find(sheet(), QAccessible::AlertMessage, "It failed");
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(QAccessible::Description), "Try again");
    EXPECT_NE(find(sheet(), QAccessible::StaticText, "It failed"), nullptr);
    EXPECT_NE(find(sheet(), QAccessible::StaticText, "Try again"), nullptr);
    EXPECT_NE(find(sheet(), QAccessible::Button, "Quit"), nullptr);
    QAccessibleInterface* button = find(sheet(), QAccessible::Button, "Download & open");
    ASSERT_NE(button, nullptr);
    EXPECT_TRUE(button->state().focused);
    EXPECT_TRUE(button->state().defaultButton);
}

namespace {

// Each with the name of what it is about.
std::vector<std::pair<QAccessible::Event, QString>> events;

void record(QAccessibleEvent* event) {
    const QAccessibleInterface* source = event->accessibleInterface();
    events.emplace_back(event->type(), source != nullptr ? source->text(QAccessible::Name) : QString());
}

bool wasTold(QAccessible::Event type, const QString& name) {
    return std::count(events.begin(), events.end(), std::pair(type, name)) > 0;
}

} // namespace

// What screen readers are told of their own accord. Only desktops with a way to reach one tell anything.
class ScreenReaderTest : public AccessibilityTest {
protected:
    void SetUp() override {
        AccessibilityTest::SetUp();
        if (!qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON")) {
            GTEST_SKIP() << "this desktop has no screen reader";
        }
        ASSERT_TRUE(QTest::qWaitFor(QAccessible::isActive));
        previous_ = QAccessible::installUpdateHandler(record);
        events.clear();
    }

    void TearDown() override {
        QAccessible::installUpdateHandler(previous_);
        AccessibilityTest::TearDown();
    }

private:
    QAccessible::UpdateHandler previous_ = nullptr;
};

TEST_F(ScreenReaderTest, HearsOfProgressAndOfANewStageOnce) {
    interface().progressIndicator().setIndeterminate(true);
    interface().progressIndicator().startAnimation();
    EXPECT_TRUE(wasTold(QAccessible::StateChanged, "Downloading"));
    interface().progressIndicator().setIndeterminate(false);
    interface().progressIndicator().setDoubleValue(42);
    EXPECT_TRUE(wasTold(QAccessible::ValueChanged, "Downloading"));
    EXPECT_TRUE(part("textIndicator").hasFocus());
    interface().textIndicator().setStringValue("Installing");
    EXPECT_TRUE(wasTold(QAccessible::NameChanged, "Installing"));
    EXPECT_TRUE(wasTold(QAccessible::Alert, "Installing"));
    events.clear();
    interface().textIndicator().setStringValue("Installing");
    EXPECT_TRUE(events.empty());
}

TEST_F(ScreenReaderTest, HearsOfAnAlert) {
    beginFailure();
    sheet();
    EXPECT_TRUE(wasTold(QAccessible::Alert, "It failed"));
}
