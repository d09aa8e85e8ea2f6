#include "platform/qt/Contrast.h"
#include "platform/qt/ProgressColors.h"
#include "platform/qt/ProgressState.h"
#include "tests/ui/InterfaceTest.h"
#include "tools/pictures/Palettes.h"

#include <QApplication>
#include <QProgressBar>
#include <QProxyStyle>
#include <QSignalSpy>
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
}

class ProgressTest : public InterfaceTest {
protected:
    QProgressBar& bar() const { return part<QProgressBar>("progressIndicator"); }
    platform::ProgressIndicator& indicator() { return interface().progressIndicator(); }

    bool moves() const {
        const QImage before = bar().grab().toImage();
        return QTest::qWaitFor([&] { return bar().grab().toImage() != before; }, 200);
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
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar().value() == ProgressState::steps; }));
    EXPECT_GT(filling().share, 0.97);

    indicator().setIndeterminate(true);
    indicator().setIndeterminate(false);
    EXPECT_EQ(bar().value(), ProgressState::steps) << "forgotten in the busy state";
    indicator().setIndeterminate(true);
    indicator().stopAnimation();
    EXPECT_EQ(filling().share, 0);
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
}

// Values may come with every packet; the bar is drawn no more often than a screen shows pictures.
TEST_F(ProgressTest, CoalescesValuesAndShowsTheLast) {
    start();
    indicator().setIndeterminate(false);
    QSignalSpy changes(&bar(), &QProgressBar::valueChanged);
    constexpr int values = 100000;
    for (int index = 0; index <= values; ++index) {
        indicator().setDoubleValue(100.0 * index / values);
    }
    EXPECT_LE(changes.count(), 1);
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar().value() == ProgressState::steps; }));
    EXPECT_LE(changes.count(), 2);
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

TEST(ProgressColorsTest, CanBeToldApartOnEveryDesktop) {
    for (const QPalette& palette : {Palettes::light(), Palettes::dark(), Palettes::highContrast(), QPalette(Qt::gray),
                                    QPalette(QColor("#efefef")), QPalette(QColor("#10305a"))}) {
        const ProgressColors colors = ProgressColors::of(palette);
        EXPECT_GE(Contrast::between(colors.chunk, colors.groove), Contrast::visible)
            << palette.color(QPalette::Window).name().toStdString();
    }
    const QPalette high = Palettes::highContrast();
    EXPECT_GE(Contrast::between(ProgressColors::of(high).outline, high.color(QPalette::Window)), Contrast::visible);
}
