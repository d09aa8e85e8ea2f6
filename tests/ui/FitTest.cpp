#include "platform/qt/ScriptFonts.h"
#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/OffscreenDisplay.h"
#include "tools/pictures/SampleAlerts.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextLayout>

#include <string>

namespace {

// The room that a text needs when it is broken into lines at that width, measured without the help of the widget.
QSizeF neededRoom(const QString& text, const QFont& font, double width) {
    QSizeF needed(0, 0);
    for (const QString& paragraph : text.split('\n')) {
        QTextLayout layout(paragraph, font);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            needed = {std::max(needed.width(), line.naturalTextWidth()), needed.height() + line.height()};
        }
        layout.endLayout();
    }
    return needed;
}

void expectTextFits(const QLabel& label) {
    const QSize room = label.contentsRect().size();
    const QSizeF needed = neededRoom(label.text(), label.font(), room.width());
    EXPECT_LE(needed.width(), room.width() + 0.5) << label.text().toStdString();
    EXPECT_LE(needed.height(), room.height() + 0.5) << label.text().toStdString();
}

void expectTitleFits(const QPushButton& button) {
    const int needed = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
    EXPECT_LT(needed, button.width()) << button.text().toStdString();
    EXPECT_LE(button.fontMetrics().height(), button.height()) << button.text().toStdString();
}

// Where the part is to be seen; of a text that scrolls, what shows.
QRect placeOf(const QWidget& part, const QWidget& window) {
    const QRect place(part.mapTo(&window, QPoint()), part.size());
    const auto* area = window.findChild<QScrollArea*>("textArea");
    if (area == nullptr || !area->isAncestorOf(&part))
        return place;
    return place & QRect(area->mapTo(&window, QPoint()), area->size());
}

void expectNoOverlap(const QList<QWidget*>& parts, const QWidget& window) {
    for (qsizetype index = 0; index < parts.size(); ++index) {
        const QRect place = placeOf(*parts[index], window);
        EXPECT_TRUE(window.rect().contains(place)) << parts[index]->objectName().toStdString();
        for (qsizetype other = index + 1; other < parts.size(); ++other) {
            const QRect otherPlace = placeOf(*parts[other], window);
            EXPECT_FALSE(place.intersects(otherPlace))
                << parts[index]->objectName().toStdString() << ", " << parts[other]->objectName().toStdString();
        }
    }
}

void expectAllFits(const QWidget& window) {
    QList<QWidget*> parts;
    for (QWidget* part : window.findChildren<QWidget*>())
        if (part->isVisible() && part->findChildren<QWidget*>().empty())
            parts.push_back(part);
    EXPECT_GE(parts.size(), 3);
    for (const QWidget* part : parts)
        if (const auto* label = qobject_cast<const QLabel*>(part))
            expectTextFits(*label);
        else if (const auto* button = qobject_cast<const QPushButton*>(part))
            expectTitleFits(*button);
    expectNoOverlap(parts, window);
    for (const auto* area : window.findChildren<QScrollArea*>())
        EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
    const QSize screen = window.screen()->availableSize();
    EXPECT_LE(window.frameGeometry().width(), screen.width());
    EXPECT_LE(window.frameGeometry().height(), screen.height());
}

struct Desktop {
    double scale;
    int fontSize;
    QSize size;
};

// Found by the test framework, which would show the bytes instead.
void PrintTo(const Desktop& desktop, std::ostream* out) {
    *out << qRound(desktop.scale * 100) << "Percent" << desktop.fontSize << "Points" << desktop.size.width() << "Wide";
}

} // namespace

class FitTest : public InterfaceTest, public testing::WithParamInterface<Desktop> {
protected:
    FitTest() { OffscreenDisplay::use(GetParam().size, GetParam().scale); }

    void expectWindowFits(const std::string& title, const std::string& text) {
        QApplication::setFont(QFont(QApplication::font().family(), GetParam().fontSize));
        interface().window().setTitle(title);
        interface().textIndicator().setStringValue(text);
        settle();
        expectAllFits(window());
    }

    void expectAlertFits(const platform::Alert& alert) {
        beginSettled(alert);
        expectAllFits(window());
    }
};

TEST_P(FitTest, NothingIsCutInAnyLanguage) {
    const std::vector<std::string> languages = TextTable::languages();
    ASSERT_GE(languages.size(), 41U);
    for (const std::string& language : languages) {
        SCOPED_TRACE(language);
        const TextTable texts(language);
        start(language);
        for (const char* stage : {"DOWNLOADING", "INSTALLING"})
            expectWindowFits(texts.text("WINDOW_TITLE"), texts.text(stage));
        for (const platform::Alert& alert : SampleAlerts::all(texts)) {
            expectAlertFits(alert);
            press(sheet(), Qt::Key_Escape);
        }
        InterfaceTest::TearDown();
    }
}

// Without a table every text is its key, which is one long word.
TEST_P(FitTest, NothingIsCutWithoutTexts) {
    if (GetParam().size.width() < 900)
        GTEST_SKIP() << "no button has room for a key as its title";
    const std::string warning = "MAC_LAUNCHER_INCOMPLETE_WARNING_";
    start();
    expectWindowFits("MAC_LAUNCHER_WINDOW_TITLE", "MAC_LAUNCHER_DOWNLOADING");
    expectAlertFits({.style = platform::AlertStyle::Warning,
                     .messageText = warning + "TITLE",
                     .informativeText = warning + "DESCRIPTION",
                     .buttons = {warning + "CONTINUE", warning + "QUIT"}});
    // Side by side they would be too wide.
    EXPECT_GT(buttons().at(1)->y(), buttons().at(0)->y());
    EXPECT_EQ(buttons().at(1)->width(), buttons().at(0)->width());
}

INSTANTIATE_TEST_SUITE_P(Desktops, FitTest,
                         testing::Values(Desktop{1, 10, {1366, 768}}, Desktop{1, 20, {640, 360}},
                                         Desktop{1, 24, {1280, 800}}, Desktop{1.5, 10, {1280, 720}},
                                         Desktop{2, 18, {960, 540}}),
                         testing::PrintToStringParamName());

namespace {

// A last line of one word that leaves most of the width empty.
bool endsWithALoneWord(const QLabel& label) {
    QTextLayout layout(label.text(), label.font());
    double widest = 0;
    double last = 0;
    QString lastText;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(label.contentsRect().width());
        last = line.naturalTextWidth();
        lastText = label.text().mid(line.textStart(), line.textLength());
        widest = std::max(widest, last);
    }
    layout.endLayout();
    return last < widest * 0.4 && !lastText.trimmed().contains(' ');
}

} // namespace

class SizeTest : public InterfaceTest {
protected:
    explicit SizeTest(QSize screen = {1366, 768}) { OffscreenDisplay::use(screen); }
};

TEST_F(SizeTest, NoWordIsLeftAloneOnTheLastLine) {
    for (const std::string& language : TextTable::languages()) {
        if (!platform::ScriptFonts::canShow(language))
            continue;
        start(language);
        for (const platform::Alert& alert : SampleAlerts::all(TextTable(language))) {
            beginSettled(alert);
            for (const char* name : {"messageText", "informativeText"})
                EXPECT_FALSE(endsWithALoneWord(part<QLabel>(name))) << language << ", " << alert.messageText;
            press(window(), Qt::Key_Escape);
        }
        TearDown();
    }
}

TEST_F(SizeTest, TheWidthDoesNotDependOnTheScriptThatTheFontIsFor) {
    start();
    if (!QFontDatabase::families().contains("Noto Sans CJK SC"))
        GTEST_SKIP() << "needs fonts-noto-cjk";
    const auto widthIn = [this](const char* family) {
        QApplication::setFont(QFont(family, 10));
        settle();
        return window().width();
    };
    const int latin = widthIn("Noto Sans");
    EXPECT_NEAR(widthIn("Noto Sans CJK SC"), latin, latin * 0.2);
}

class SmallScreenTest : public SizeTest {
protected:
    SmallScreenTest() : SizeTest({640, 360}) {}
};

// First the full width, then no icon, then the text scrolls; the buttons are always there.
TEST_F(SmallScreenTest, GivesUpWhatIsLeastNeededFirst) {
    start("de");
    QApplication::setFont(QFont(QApplication::font().family(), 10));
    settle();
    const auto show = [this](int words) {
        std::string text;
        for (int word = 0; word < words; ++word)
            text += "Speicherplatz ";
        beginSettled({.messageText = "Titel", .informativeText = text, .buttons = {"Manuell laden", "Beenden"}});
        for (const QPushButton* button : buttons())
            EXPECT_TRUE(window().rect().contains(QRect(button->mapTo(&window(), QPoint()), button->size()))) << words;
    };
    const auto leave = [this] { press(window(), Qt::Key_Escape); };
    const auto hasIcon = [] { return sheet().findChild<QWidget*>("icon")->isVisible(); };
    const auto scrollBar = [] { return sheet().findChild<QScrollArea*>("textArea")->verticalScrollBar(); };
    show(5);
    EXPECT_LT(window().width(), 600);
    leave();
    show(60);
    EXPECT_GT(window().width(), 600);
    EXPECT_TRUE(hasIcon());
    leave();
    show(300);
    EXPECT_FALSE(hasIcon());
    EXPECT_GT(scrollBar()->maximum(), 0);
    press(window(), Qt::Key_PageDown);
    EXPECT_GT(scrollBar()->value(), 0);
    press(window(), Qt::Key_End);
    EXPECT_EQ(scrollBar()->value(), scrollBar()->maximum());
    leave();
}
