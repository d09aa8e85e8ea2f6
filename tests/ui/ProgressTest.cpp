#include "platform/qt/Contrast.h"
#include "platform/qt/ProgressColors.h"
#include "platform/qt/ProgressState.h"
#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/Palettes.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QProxyStyle>
#include <QTest>

#include <cmath>

using platform::Contrast;
using platform::ProgressColors;
using platform::ProgressState;

TEST(ProgressStateTest, PositionStaysInTheRange) {
    const auto position = [](double value, double minimum = 0, double maximum = 100) {
        ProgressState state;
        state.indeterminate = false;
        state.minimum = minimum;
        state.maximum = maximum;
        state.value = value;
        return state.position();
    };
    EXPECT_EQ(position(33.33), 333);
    EXPECT_EQ(position(150), 1000);
    EXPECT_EQ(position(-7), 0);
    EXPECT_EQ(position(NAN), 0);
    EXPECT_EQ(position(INFINITY), 1000);
    EXPECT_EQ(position(55, 50, 60), 500);
    EXPECT_EQ(position(50, 100, 0), 0);
    EXPECT_EQ(position(5, 5, 5), 0);
}

TEST(ProgressStateTest, OnlyAnIndeterminateBarStartsAndStops) {
    ProgressState state;
    state.startAnimation();
    state.indeterminate = false;
    state.stopAnimation();
    EXPECT_FALSE(state.isBusy());
    state.indeterminate = true;
    EXPECT_TRUE(state.isBusy()) << "stopped while it showed a value";
    state.stopAnimation();
    state.indeterminate = false;
    state.startAnimation();
    state.indeterminate = true;
    EXPECT_FALSE(state.isBusy()) << "started while it showed a value";
    EXPECT_EQ(ProgressState().position(), 0);
    EXPECT_EQ(state.position(), ProgressState::steps) << "has run and was stopped";
}

class ProgressTest : public InterfaceTest {
protected:
    QWidget& bar() const { return part("progressIndicator"); }
    platform::ProgressIndicator& indicator() { return interface().progressIndicator(); }

    // A bar that moves has a timer that draws it anew.
    bool moves() const {
        settle();
        if (QAbstractEventDispatcher::instance()->registeredTimers(&bar()).isEmpty())
            return false;
        const QImage before = bar().grab().toImage();
        return QTest::qWaitFor([&] { return bar().grab().toImage() != before; });
    }

    // The part of the bar's middle line that has the colour, from 0 to 1, and where its centre is.
    struct Filling {
        double share = 0;
        double centre = 0;
    };
    Filling filling() const {
        const QImage picture = bar().grab().toImage();
        const QRgb chunk = ProgressColors::of(bar().palette()).chunk.rgb();
        int count = 0;
        double sum = 0;
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, picture.height() / 2) == chunk) {
                ++count;
                sum += x;
            }
        }
        return {.share = static_cast<double>(count) / picture.width(), .centre = sum / count / picture.width()};
    }
};

TEST_F(ProgressTest, FollowsTheStages) {
    start();
    indicator().setIndeterminate(true);
    indicator().setMinValue(0);
    indicator().setMaxValue(100);
    indicator().startAnimation();
    EXPECT_NEAR(filling().share, 0.3, 0.05);

    indicator().setIndeterminate(false);
    indicator().setDoubleValue(0);
    EXPECT_EQ(filling().share, 0);
    indicator().setDoubleValue(150);
    EXPECT_GT(filling().share, 0.97);

    indicator().setIndeterminate(true);
    indicator().setIndeterminate(false);
    EXPECT_GT(filling().share, 0.97) << "forgotten in the busy state";
    indicator().setIndeterminate(true);
    indicator().stopAnimation();
    EXPECT_GT(filling().share, 0.97) << "what it was about is done";
    indicator().startAnimation();
    EXPECT_NEAR(filling().share, 0.3, 0.05);
}

// Where the length is unknown the value stays 0, and something has to say that the program is alive.
TEST_F(ProgressTest, ShimmersUntilThereIsAValue) {
    start();
    indicator().setIndeterminate(false);
    indicator().setDoubleValue(0);
    EXPECT_EQ(filling().share, 0);
    EXPECT_TRUE(moves());
    indicator().setDoubleValue(1);
    EXPECT_FALSE(moves());
}

TEST_F(ProgressTest, MovesOnlyWhileBusy) {
    start();
    indicator().setIndeterminate(true);
    EXPECT_FALSE(moves());
    indicator().startAnimation();
    EXPECT_TRUE(moves());
    indicator().stopAnimation();
    EXPECT_FALSE(moves());
}

TEST_F(ProgressTest, StandsStillForPeopleWhomMovementDisturbs) {
    struct CalmStyle : QProxyStyle {
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* result) const override {
            return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
        }
    };
    start();
    QApplication::setStyle(new CalmStyle);
    indicator().setIndeterminate(true);
    indicator().startAnimation();
    EXPECT_FALSE(moves());
    EXPECT_NEAR(filling().share, 0.3, 0.05);
    EXPECT_NEAR(filling().centre, 0.5, 0.02);
    indicator().setIndeterminate(false);
    EXPECT_FALSE(moves());
}

// Values may come with every packet; the bar is drawn no more often than the event loop comes round to it.
TEST_F(ProgressTest, CoalescesValuesAndShowsTheLast) {
    struct PaintCounter : QObject {
        bool eventFilter(QObject* /*object*/, QEvent* event) override {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
        int paints = 0;
    } counter;
    start();
    indicator().setIndeterminate(false);
    settle();
    bar().installEventFilter(&counter);
    constexpr int values = 100000;
    for (int index = 0; index <= values; ++index)
        indicator().setDoubleValue(100.0 * index / values);
    settle();
    EXPECT_EQ(counter.paints, 1);
    EXPECT_GT(filling().share, 0.97);
}

TEST_F(ProgressTest, FillsFromTheReadingSide) {
    for (const auto& [language, leftToRight] : {std::pair("en", true), {"ar", false}}) {
        start(language);
        indicator().setIndeterminate(false);
        indicator().setDoubleValue(40);
        EXPECT_NEAR(filling().share, 0.4, 0.03) << language;
        EXPECT_NEAR(filling().centre, leftToRight ? 0.2 : 0.8, 0.03) << language;
        TearDown();
    }
}

TEST_F(ProgressTest, PartsAndFramesCanBeToldApartOnEveryDesktop) {
    // Three to one, but for the rounding to whole shades.
    constexpr double enough = Contrast::visible - 0.05;
    start();
    indicator().setIndeterminate(false);
    indicator().setDoubleValue(50);
    for (const QPalette& palette :
         {Palettes::light(), Palettes::dark(), Palettes::highContrast(), Palettes::highContrastLight(),
          Palettes::yellowOnBlack(), QPalette(Qt::gray), QPalette(QColor("#efefef")), QPalette(QColor("#10305a"))}) {
        const QColor background = palette.color(QPalette::Window);
        SCOPED_TRACE(background.name().toStdString());
        QApplication::setPalette(palette);
        settle();
        const QImage progress = bar().grab().toImage();
        const auto shade = [&](int quarter, int y) { return progress.pixelColor(progress.width() * quarter / 4, y); };
        EXPECT_GE(Contrast::between(shade(1, progress.height() / 2), shade(3, progress.height() / 2)), enough);
        EXPECT_GE(Contrast::between(shade(3, 0), background), enough);
        beginSettled({.messageText = "Title", .informativeText = "Text", .buttons = {"One", "Two"}});
        for (QPushButton* button : buttons()) {
            const QImage picture = button->grab().toImage();
            EXPECT_GE(Contrast::between(picture.pixelColor(0, picture.height() / 2), background), enough)
                << button->text().toStdString();
        }
        press(window(), Qt::Key_Return);
    }
}

TEST(ContrastTest, IsHighAtTheLimitsAlone) {
    for (const QPalette& palette : {Palettes::highContrast(), Palettes::highContrastLight(), Palettes::yellowOnBlack()})
        EXPECT_TRUE(Contrast::isHigh(palette));
    for (const QPalette& palette : {Palettes::light(), Palettes::dark(), QPalette(QColor("#efefef"))})
        EXPECT_FALSE(Contrast::isHigh(palette));
}
