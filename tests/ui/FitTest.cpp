#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/OffscreenDisplay.h"
#include "tools/pictures/SampleAlerts.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
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

void expectNoOverlap(const QList<QWidget*>& parts, const QWidget& window) {
    for (qsizetype index = 0; index < parts.size(); ++index) {
        const QRect place(parts[index]->mapTo(&window, QPoint()), parts[index]->size());
        EXPECT_TRUE(window.rect().contains(place)) << parts[index]->objectName().toStdString();
        for (qsizetype other = index + 1; other < parts.size(); ++other) {
            const QRect otherPlace(parts[other]->mapTo(&window, QPoint()), parts[other]->size());
            EXPECT_FALSE(place.intersects(otherPlace)) << parts[index]->objectName().toStdString();
        }
    }
}

void expectAllFits(const QWidget& window) {
    QList<QWidget*> parts;
    for (QWidget* part : window.findChildren<QWidget*>()) {
        if (part->isVisible() && part->window() == &window) {
            parts.push_back(part);
        }
    }
    EXPECT_GE(parts.size(), 4);
    for (const QWidget* part : parts) {
        if (const auto* label = qobject_cast<const QLabel*>(part)) {
            expectTextFits(*label);
        } else if (const auto* button = qobject_cast<const QPushButton*>(part)) {
            expectTitleFits(*button);
        }
    }
    expectNoOverlap(parts, window);
    const QSize screen = window.screen()->availableSize();
    EXPECT_LE(window.width(), screen.width());
    EXPECT_LE(window.height(), screen.height());
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
        interface().alerts().beginSheet(alert, [](int) {});
        settle();
        expectAllFits(sheet());
    }
};

TEST_P(FitTest, NothingIsCutInAnyLanguage) {
    const std::vector<std::string> languages = TextTable::languages();
    ASSERT_GE(languages.size(), 41U);
    for (const std::string& language : languages) {
        SCOPED_TRACE(language);
        const TextTable texts(language);
        start(language);
        for (const char* stage : {"DOWNLOADING", "INSTALLING"}) {
            expectWindowFits(texts.text("WINDOW_TITLE"), texts.text(stage));
        }
        for (const platform::Alert& alert : SampleAlerts::all(texts)) {
            expectAlertFits(alert);
            press(sheet(), Qt::Key_Escape);
        }
        InterfaceTest::TearDown();
    }
}

// Without a table every text is its key, which is one long word.
TEST_P(FitTest, NothingIsCutWithoutTexts) {
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
                         testing::Values(Desktop{1, 10, {1366, 768}}, Desktop{1, 18, {1366, 768}},
                                         Desktop{1, 24, {1280, 800}}, Desktop{1.5, 10, {1280, 720}},
                                         Desktop{1.5, 24, {1280, 720}}, Desktop{2, 10, {960, 540}},
                                         Desktop{2, 18, {960, 540}}),
                         testing::PrintToStringParamName());
