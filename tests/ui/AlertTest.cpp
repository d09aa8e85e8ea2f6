#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/SampleAlerts.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProxyStyle>
#include <QScreen>
#include <QTest>

#include <chrono>
#include <vector>

using platform::Alert;
using platform::AlertStyle;

class AlertTest : public InterfaceTest {
protected:
    static Alert question(const std::string& title = "Title") {
        return {.style = AlertStyle::Warning,
                .messageText = title,
                .informativeText = "Text",
                .buttons = {"One", "Two", "Three"},
                .escapeButton = 1,
                .quitButton = 2};
    }

    static Alert longQuestion() {
        Alert alert = question();
        for (int line = 0; line < 20; ++line)
            alert.informativeText += "line\n";
        return alert;
    }

    static Alert failure() {
        Alert alert = question();
        alert.endsProgram = true;
        return alert;
    }

    static QLabel& label(const char* name) { return *sheet().findChild<QLabel*>(name); }
    static std::string text(const char* name) { return label(name).text().toStdString(); }
};

TEST_F(AlertTest, EveryAlertAnswersWithTheCodeOfEachButton) {
    start();
    for (Alert alert : SampleAlerts::all(TextTable("en"))) {
        // The window stays for the next one.
        alert.endsProgram = false;
        for (std::size_t index = 0; index < alert.buttons.size(); ++index) {
            beginSettled(alert);
            EXPECT_EQ(text("messageText"), alert.messageText);
            EXPECT_EQ(text("informativeText"), alert.informativeText);
            ASSERT_EQ(static_cast<std::size_t>(buttons().size()), alert.buttons.size());
            QPushButton* button = buttons().at(static_cast<qsizetype>(index));
            EXPECT_EQ(button->text(), QString::fromStdString(alert.buttons[index]));
            QTest::mouseClick(button, Qt::LeftButton);
            settle();
            EXPECT_EQ(takeCodes(), std::vector{Alert::firstButtonReturn + static_cast<int>(index)});
            EXPECT_TRUE(sheets().empty());
        }
    }
}

TEST_F(AlertTest, IsASheetInTheOneWindow) {
    start();
    settle();
    const QSize size = window().size();
    beginSettled(longQuestion());
    EXPECT_EQ(sheet().window(), &window());
    EXPECT_EQ(sheet().geometry(), window().rect());
    EXPECT_FALSE(part("progressIndicator").isVisible());
    EXPECT_GT(window().height(), size.height());
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
    const auto windows = QApplication::topLevelWidgets();
    EXPECT_EQ(std::count_if(windows.begin(), windows.end(), [](QWidget* one) { return one->isVisible(); }), 1);
    press(sheet(), Qt::Key_Return);
    EXPECT_EQ(window().size(), size);
    EXPECT_TRUE(part("progressIndicator").isVisible());
}

TEST_F(AlertTest, Keys) {
    const struct {
        std::vector<Qt::Key> keys;
        int code;
        Qt::KeyboardModifiers modifiers = {};
    } rows[] = {{{Qt::Key_Return}, 1000},
                {{Qt::Key_Enter}, 1000, Qt::KeypadModifier},
                {{Qt::Key_Escape}, 1001},
                {{Qt::Key_Space}, 1000},
                {{Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space}, 1002},
                {{Qt::Key_Tab, Qt::Key_Return}, 1001},
                {{Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Return}, 1000}};
    start();
    for (const auto& row : rows) {
        beginSettled(question());
        for (const Qt::Key key : row.keys)
            press(window(), key, row.modifiers);
        EXPECT_EQ(takeCodes(), std::vector{row.code});
        EXPECT_TRUE(sheets().empty());
    }
}

// A question whether to quit is not answered by the wish to quit; where all answers do, that wish is one.
TEST_F(AlertTest, QuittingWhileASheetIsOpen) {
    void (*const ways[])(QWidget & window) = {[](QWidget& window) { press(window, Qt::Key_Q, Qt::ControlModifier); },
                                              [](QWidget& window) { press(window, Qt::Key_W, Qt::ControlModifier); },
                                              [](QWidget& window) { window.close(); }};
    for (const auto& quit : ways) {
        start();
        beginSettled(question());
        quit(window());
        EXPECT_EQ(sheets().size(), 1);
        EXPECT_TRUE(takeCodes().empty());
        press(window(), Qt::Key_Escape);
        takeCodes();
        beginSettled(failure());
        quit(window());
        EXPECT_EQ(takeCodes(), std::vector{1001});
        EXPECT_EQ(application_.quitRequests, 0);
        TearDown();
    }
    start();
    beginSettled(question());
    press(window(), Qt::Key_F1);
    EXPECT_EQ(delegate_.helpRequests, 1);
}

// Whoever types into another window, or has just come from there, answers nothing.
TEST_F(AlertTest, TakesNoKeyOrClickThatWasMeantForSomethingElse) {
    const auto tryAll = [this] {
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
            press(window(), key);
        press(window(), Qt::Key_Q, Qt::ControlModifier);
        for (QPushButton* button : buttons())
            QTest::mouseClick(button, Qt::LeftButton);
        settle();
        return takeCodes().size();
    };
    start();
    settling().setInterval(std::chrono::hours(1));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    begin(failure());
    EXPECT_TRUE(other.isActiveWindow());
    EXPECT_EQ(tryAll(), 0U) << "not active";
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    EXPECT_EQ(tryAll(), 0U) << "just became active";
    letWindowSettle();
    // Once it has been seen, going elsewhere and back changes nothing.
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    press(window(), Qt::Key_Return);
    EXPECT_EQ(takeCodes(), std::vector{1000});
}

TEST_F(AlertTest, ASheetInThePlaceOfAnotherTakesNoAnswerToThat) {
    start();
    const auto first = beginSettled(question());
    settling().setInterval(std::chrono::hours(1));
    interface().alerts().endSheet(first, 1000);
    begin(failure());
    press(window(), Qt::Key_Return);
    EXPECT_EQ(takeCodes(), std::vector{1000}) << "the first one's alone";
    letWindowSettle();
    press(window(), Qt::Key_Escape);
    EXPECT_EQ(takeCodes(), std::vector{1001});
}

TEST_F(AlertTest, AWindowThatGrowsStaysOnItsScreen) {
    start();
    const QRect screen = window().screen()->availableGeometry();
    window().move(screen.bottomRight() - window().rect().bottomRight());
    settle();
    beginSettled(longQuestion());
    EXPECT_TRUE(screen.contains(window().frameGeometry()));
}

TEST_F(AlertTest, AMinimisedWindowStaysSo) {
    start();
    window().showMinimized();
    const QSize size = window().size();
    beginSettled(longQuestion());
    EXPECT_TRUE(window().isMinimized());
    EXPECT_EQ(window().size(), size) << "some window managers would restore it";
    window().showNormal();
    settle();
    EXPECT_GT(window().height(), size.height());
}

TEST_F(AlertTest, TheWindowLeavesTheScreenWithTheLastAnswerThatEndsTheProgram) {
    start();
    beginSettled(question());
    press(window(), Qt::Key_Return);
    EXPECT_TRUE(window().isVisible());
    beginSettled(failure());
    beginSettled(failure());
    press(window(), Qt::Key_Return);
    EXPECT_TRUE(window().isVisible());
    letWindowSettle();
    press(window(), Qt::Key_Return);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(application_.quitRequests, 0) << "leaving the screen is not quitting";
    beginSettled(failure());
    EXPECT_TRUE(window().isVisible()) << "another alert has come";
}

TEST_F(AlertTest, ASecondAlertWaitsForTheFirst) {
    start();
    beginSettled(question("first"));
    beginSettled(question("second"));
    EXPECT_EQ(text("messageText"), "first");
    press(window(), Qt::Key_Return);
    EXPECT_EQ(text("messageText"), "second");
}

TEST_F(AlertTest, TextsArePlainAndCanBeCopied) {
    Alert alert = question("<b>1 < 2</b> &amp; \u202e3\u202c");
    alert.informativeText = "line 1 & <i>more</i>";
    alert.buttons = {"Save & Quit"};
    alert.escapeButton = 0;
    start();
    beginSettled(alert);
    EXPECT_EQ(label("messageText").textFormat(), Qt::PlainText);
    EXPECT_EQ(buttons().at(0)->text(), "Save && Quit");
    EXPECT_TRUE(buttons().at(0)->shortcut().isEmpty());

    QLabel& informative = label("informativeText");
    EXPECT_EQ(informative.textInteractionFlags(), Qt::TextSelectableByMouse) << "keys would bring a caret";
    QTest::mouseDClick(&informative, Qt::LeftButton, {}, QPoint(2, informative.height() / 2));
    EXPECT_TRUE(buttons().at(0)->hasFocus()) << window().focusWidget()->objectName().toStdString();
    press(window(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "line");
    for (int tab = 0; tab < 5; ++tab) {
        press(window(), Qt::Key_Tab);
        EXPECT_TRUE(buttons().at(0)->hasFocus()) << window().focusWidget()->objectName().toStdString();
    }
}

TEST_F(AlertTest, TheMenuOfATextIsInTheLanguage) {
    start("fr");
    beginSettled(question());
    EXPECT_EQ(QCoreApplication::translate("QWidgetTextControl", "Select All"), "Tout sélectionner");
}

TEST_F(AlertTest, KindsLookDifferent) {
    start();
    const auto icon = [this](AlertStyle style) {
        Alert alert = question();
        alert.style = style;
        beginSettled(alert);
        const QImage image = sheet().findChild<QWidget*>("icon")->grab().toImage();
        press(window(), Qt::Key_Return);
        return image;
    };
    EXPECT_NE(icon(AlertStyle::Warning), icon(AlertStyle::Critical));
}

// The first button stands where the desktop has it, and whoever reads from right to left finds everything the other way
// round.
TEST_F(AlertTest, FollowsTheDesktopAndTheReadingDirection) {
    struct DesktopStyle : QProxyStyle {
        explicit DesktopStyle(int withLayout) : layout(withLayout) {}
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* result) const override {
            return hint == SH_DialogButtonLayout ? layout : QProxyStyle::styleHint(hint, option, widget, result);
        }
        int layout;
    };
    for (const auto& [language, mirrored] : {std::pair("en", false), {"ar", true}, {"he", true}, {"fa", true}}) {
        for (const auto& [layout, firstComesLast] :
             {std::pair(QDialogButtonBox::GnomeLayout, true), {QDialogButtonBox::KdeLayout, false}}) {
            SCOPED_TRACE(language);
            start(language);
            QApplication::setStyle(new DesktopStyle(layout));
            interface().textIndicator().setStringValue("…");
            settle();
            EXPECT_EQ(part("icon").x() > part("textIndicator").x(), mirrored);
            beginSettled(question());
            EXPECT_EQ(buttons().at(0)->x() > buttons().at(1)->x(), mirrored != firstComesLast);
            EXPECT_EQ(buttons().at(1)->x() > buttons().at(2)->x(), mirrored != firstComesLast);
            EXPECT_EQ(sheet().findChild<QWidget*>("icon")->x() > buttons().at(1)->x(), mirrored);
            press(window(), Qt::Key_Return);
            EXPECT_EQ(takeCodes(), std::vector{1000});
            TearDown();
        }
    }
}

// Dropping the interface with a sheet open, as the program's end does, answers nothing.
TEST_F(AlertTest, EndOfTheInterfaceAnswersNothing) {
    start();
    beginSettled(question("open"));
    beginSettled(question("waiting"));
    TearDown();
    EXPECT_TRUE(takeCodes().empty());
}
