#include "platform/qt/DesktopColors.h"
#include "platform/qt/ColorSchemes.h"
#include "platform/qt/Contrast.h"
#include "tests/ui/PrivateBus.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QTest>

#include <memory>

using platform::ColorSchemes;
using platform::Contrast;
using platform::DesktopColors;

using Settings = QMap<QString, QVariantMap>;

// A desktop that is asked for its settings.
class SettingsPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit SettingsPortal(QDBusConnection bus) : bus_(bus) {
        qDBusRegisterMetaType<Settings>();
        bus_.registerObject("/org/freedesktop/portal/desktop", this, QDBusConnection::ExportAllContents);
        bus_.registerService("org.freedesktop.portal.Desktop");
    }

    QVariantMap appearance;

    void change(const QString& key, uint value) {
        QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                                         "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.freedesktop.appearance" << key << QVariant::fromValue(QDBusVariant(value));
        bus_.send(signal);
    }

public slots:
    Settings ReadAll(const QStringList& groups) {
        Settings answer;
        if (groups.contains("org.freedesktop.appearance"))
            answer.insert("org.freedesktop.appearance", appearance);
        return answer;
    }

private:
    QDBusConnection bus_;
};

class DesktopColorsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus_.start())
            GTEST_SKIP() << "there is no message bus to try it on";
        portal_ = std::make_unique<SettingsPortal>(bus_.connect("desktop"));
    }

    static QColor window() { return QApplication::palette().color(QPalette::Window); }
    static bool isDark() { return window().lightness() < 128; }
    static bool isHigh() { return Contrast::isHigh(QApplication::palette()); }

    PrivateBus bus_;
    std::unique_ptr<SettingsPortal> portal_;

private:
    int argumentCount_ = 0;
    QApplication application_{argumentCount_, nullptr};
};

TEST_F(DesktopColorsTest, FollowTheDesktopFromTheStartAndLater) {
    const QColor before = window();
    ASSERT_FALSE(isDark());
    portal_->appearance = {{"color-scheme", 1U}};
    const DesktopColors colors(bus_.connect("program"));
    EXPECT_TRUE(QTest::qWaitFor(isDark));
    EXPECT_FALSE(isHigh());
    portal_->change("contrast", 1);
    EXPECT_TRUE(QTest::qWaitFor(isHigh));
    EXPECT_TRUE(isDark());
    portal_->change("color-scheme", 2);
    EXPECT_TRUE(QTest::qWaitFor([] { return !isDark(); }));
    EXPECT_TRUE(isHigh());
    portal_->change("contrast", 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window() == before; }));
}

TEST_F(DesktopColorsTest, LeaveAThemeThatIsDarkAlready) {
    QPalette own = ColorSchemes::dark();
    own.setColor(QPalette::Highlight, Qt::red);
    QApplication::setPalette(own);
    portal_->appearance = {{"color-scheme", 1U}, {"contrast", QString("nonsense")}};
    const DesktopColors colors(bus_.connect("program"));
    QTest::qWait(100);
    EXPECT_EQ(QApplication::palette().color(QPalette::Highlight), QColor(Qt::red));
}

#include "DesktopColorsTest.moc"
