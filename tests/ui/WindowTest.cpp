#include "tests/ui/InterfaceTest.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QScreen>
#include <QTest>

#include <csignal>

class WindowTest : public InterfaceTest {};

TEST_F(WindowTest, ShowsTitleAndText) {
    start();
    interface().window().setTitle("Tölvix — 安装");
    interface().textIndicator().setStringValue("<b>50 %</b> & \"more\"");
    EXPECT_EQ(window().windowTitle(), "Tölvix — 安装");
    EXPECT_EQ(part<QLabel>("title").text(), "Tölvix — 安装");
    EXPECT_EQ(part<QLabel>("textIndicator").text(), "<b>50 %</b> & \"more\"");
    EXPECT_EQ(part<QLabel>("textIndicator").textFormat(), Qt::PlainText);
}

TEST_F(WindowTest, IsCentredAndCannotBeResized) {
    start();
    settle();
    const QPoint off = window().geometry().center() - window().screen()->availableGeometry().center();
    // The frame around it is not known before it is on screen.
    EXPECT_LE(off.manhattanLength(), 30);
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
    EXPECT_FALSE(window().windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
}

TEST_F(WindowTest, GrowsWithTextAndFont) {
    start();
    settle();
    const QSize before = window().size();
    const int icon = part("icon").width();
    std::string text;
    // More lines than the icon is high.
    for (int line = 0; line < 8; ++line)
        text += std::string(40, 'W') + ' ';
    interface().textIndicator().setStringValue(text);
    settle();
    EXPECT_GT(window().height(), before.height());
    const QSize withText = window().size();
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * 2);
    QApplication::setFont(font);
    settle();
    EXPECT_GT(window().height(), withText.height());
    font.setPointSizeF(font.pointSizeF() * 2);
    QApplication::setFont(font);
    settle();
    EXPECT_GT(part("icon").width(), icon * 2) << "as tall as the letters beside it";
    EXPECT_GT(part<QLabel>("title").font().pointSizeF(), font.pointSizeF());
}

TEST_F(WindowTest, ClosingAndKeysAskTheProgram) {
    start();
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(application_.quitRequests, 1);
    press(window(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(application_.quitRequests, 2);
    press(window(), Qt::Key_F1);
    EXPECT_EQ(delegate_.helpRequests, 1);
    delegate_.endsWithLastWindow = false;
    emit qApp->lastWindowClosed();
    EXPECT_EQ(application_.quitRequests, 2);
    delegate_.endsWithLastWindow = true;
    emit qApp->lastWindowClosed();
    EXPECT_EQ(application_.quitRequests, 3);
}

TEST_F(WindowTest, SignalsThatAskToQuitDoJustThat) {
    start();
    for (const int signal : {SIGTERM, SIGINT}) {
        application_.quitRequests = 0;
        std::raise(signal);
        EXPECT_EQ(application_.quitRequests, 0);
        EXPECT_TRUE(QTest::qWaitFor([this] { return application_.quitRequests == 1; })) << signal;
    }
}

TEST_F(WindowTest, TellsTheDesktopWhoItIs) {
    start("pt-BR");
    EXPECT_EQ(QGuiApplication::desktopFileName(), "example.tolvix.installer");
    EXPECT_FALSE(QGuiApplication::quitOnLastWindowClosed());
    EXPECT_EQ(QLocale().name(), "pt_BR");
    for (const int extent : {16, 32, 128}) {
        const QImage icon = window().windowIcon().pixmap(QSize(extent, extent), 1.0).toImage();
        ASSERT_EQ(icon.size(), QSize(extent, extent));
        // Opaque in the middle of its upper half, where the plate is.
        EXPECT_EQ(icon.pixelColor(extent / 2, extent / 8).alpha(), 255) << extent;
    }
}
