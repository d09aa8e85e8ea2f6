#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/SampleAlerts.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QTest>

#include <vector>

using platform::Alert;
using platform::AlertStyle;

class AlertTest : public InterfaceTest {
protected:
    void begin(const Alert& alert) {
        interface().alerts().beginSheet(alert, [this](int code) { codes_.push_back(code); });
    }

    static Alert question(const std::string& title = "Title") {
        return {.style = AlertStyle::Warning,
                .messageText = title,
                .informativeText = "Text",
                .buttons = {"One", "Two", "Three"},
                .escapeButton = 1,
                .quitButton = 2};
    }

    static QString text(const char* name) { return sheet().findChild<QLabel*>(name)->text(); }

    std::vector<int> codes_;
};

TEST_F(AlertTest, EveryAlertAnswersWithTheCodeOfEachButton) {
    start();
    interface().window().setTitle("Installer");
    for (const Alert& alert : SampleAlerts::all(TextTable("en"))) {
        for (std::size_t index = 0; index < alert.buttons.size(); ++index) {
            codes_.clear();
            begin(alert);
            EXPECT_EQ(sheet().windowTitle(), "Installer");
            EXPECT_EQ(text("messageText"), QString::fromStdString(alert.messageText));
            EXPECT_EQ(text("informativeText"), QString::fromStdString(alert.informativeText));
            ASSERT_EQ(static_cast<std::size_t>(buttons().size()), alert.buttons.size());
            QPushButton* button = buttons().at(static_cast<qsizetype>(index));
            EXPECT_EQ(button->text(), QString::fromStdString(alert.buttons[index]));
            QTest::mouseClick(button, Qt::LeftButton);
            settle();
            EXPECT_EQ(codes_, std::vector{Alert::firstButtonReturn + static_cast<int>(index)});
            EXPECT_TRUE(sheets().empty());
        }
    }
}

TEST_F(AlertTest, IsASheetOnTheWindowAndLeavesTheLoopAlone) {
    start();
    begin(question());
    EXPECT_EQ(sheet().parentWidget(), &window());
    EXPECT_EQ(sheet().windowType(), Qt::Sheet);
    EXPECT_EQ(sheet().windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet().minimumSize(), sheet().maximumSize());
    EXPECT_GE(sheet().frameGeometry().top(), window().geometry().top());
}

TEST_F(AlertTest, KeysAndClosing) {
    const auto codesAfter = [this](void (*act)()) {
        codes_.clear();
        begin(question());
        act();
        settle();
        EXPECT_TRUE(sheets().empty());
        return codes_;
    };
    start();
    EXPECT_EQ(codesAfter([] { press(sheet(), Qt::Key_Return); }), std::vector{1000});
    EXPECT_EQ(codesAfter([] { press(sheet(), Qt::Key_Enter, Qt::KeypadModifier); }), std::vector{1000});
    EXPECT_EQ(codesAfter([] {
                  sheet().findChild<QLabel*>("informativeText")->setFocus();
                  press(sheet(), Qt::Key_Return);
              }),
              std::vector{1000});
    EXPECT_EQ(codesAfter([] { press(sheet(), Qt::Key_Escape); }), std::vector{1001});
    EXPECT_EQ(codesAfter([] { sheet().close(); }), std::vector{1001});
    EXPECT_EQ(codesAfter([] {
                  for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space}) {
                      press(sheet(), key);
                  }
              }),
              std::vector{1002});
}

TEST_F(AlertTest, ASecondAlertWaitsForTheFirst) {
    start();
    std::vector<std::string> order;
    const auto beginNamed = [&](const std::string& name, const std::function<void()>& then) {
        interface().alerts().beginSheet(question(name), [&order, name, then](int) {
            order.push_back(name);
            then();
        });
    };
    // The first one's answer begins another one, which comes last.
    beginNamed("first", [&] { beginNamed("third", [] {}); });
    beginNamed("second", [] {});
    for (const char* name : {"first", "second", "third"}) {
        EXPECT_EQ(text("messageText"), name);
        press(sheet(), Qt::Key_Return);
    }
    EXPECT_TRUE(sheets().empty());
    EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(AlertTest, CommandsWhileASheetIsOpen) {
    start();
    begin(question());
    press(sheet(), Qt::Key_F1);
    EXPECT_EQ(delegate_.helpRequests, 1);
    press(sheet(), Qt::Key_Q, Qt::ControlModifier);
    window().close();
    settle();
    EXPECT_EQ(sheets().size(), 1);
    EXPECT_TRUE(codes_.empty());
}

TEST_F(AlertTest, TextsArePlainAndCanBeCopied) {
    Alert alert = question("<b>1 < 2</b> &amp; \u202e3\u202c");
    alert.informativeText = "line 1\nline 2 & <i>more</i>";
    alert.buttons = {"Save & Quit"};
    alert.escapeButton = 0;
    start();
    begin(alert);
    EXPECT_EQ(sheet().findChild<QLabel*>("messageText")->textFormat(), Qt::PlainText);
    EXPECT_EQ(buttons().at(0)->text(), "Save && Quit");
    EXPECT_TRUE(buttons().at(0)->shortcut().isEmpty());

    sheet().findChild<QLabel*>("informativeText")->setFocus(Qt::TabFocusReason);
    press(sheet(), Qt::Key_A, Qt::ControlModifier);
    press(sheet(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "line 1\nline 2 & <i>more</i>");
}

TEST_F(AlertTest, TheMenuOfATextIsInTheLanguage) {
    start("fr");
    const auto entry = [] { return QCoreApplication::translate("QWidgetTextControl", "Select All"); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return entry() == "Tout sélectionner"; })) << entry().toStdString();
}

TEST_F(AlertTest, KindsLookDifferent) {
    start();
    const auto icon = [this](AlertStyle style) {
        Alert alert = question();
        alert.style = style;
        begin(alert);
        const QImage image = sheet().findChild<QWidget*>("icon")->grab().toImage();
        press(sheet(), Qt::Key_Return);
        return image;
    };
    EXPECT_NE(icon(AlertStyle::Warning), icon(AlertStyle::Critical));
}

// Whoever reads from right to left finds everything the other way round.
TEST_F(AlertTest, WindowAndAlertFollowTheReadingDirection) {
    for (const auto& [language, mirrored] : {std::pair("en", false), {"ar", true}, {"he", true}, {"fa", true}}) {
        SCOPED_TRACE(language);
        start(language);
        interface().textIndicator().setStringValue("…");
        settle();
        EXPECT_EQ(part("icon").x() > part("textIndicator").x(), mirrored);
        begin(question());
        EXPECT_EQ(buttons().at(0)->x() > buttons().at(1)->x(), mirrored);
        EXPECT_EQ(sheet().findChild<QWidget*>("icon")->x() > buttons().at(0)->x(), mirrored);
        press(sheet(), Qt::Key_Escape);
        TearDown();
    }
}

// Dropping the interface with a sheet open, as the program's end does, answers nothing.
TEST_F(AlertTest, EndOfTheInterfaceAnswersNothing) {
    start();
    begin(question("open"));
    begin(question("waiting"));
    TearDown();
    EXPECT_TRUE(codes_.empty());
}
