#include "platform/qt/LauncherEntry.h"
#include "platform/qtcore/SessionBus.h"
#include "tests/ui/PrivateBus.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTest>
#include <QVariantMap>

#include <vector>

using platform::LauncherEntry;
using platform::SessionBus;

// A dock: notes what programs say of their entries in it.
class UpdateReceiver : public QObject {
    Q_OBJECT

public:
    explicit UpdateReceiver(QDBusConnection bus) {
        bus.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this, SLOT(note(QString, QVariantMap)));
    }

    std::vector<std::pair<QString, QVariantMap>> updates;

private slots:
    void note(const QString& uri, const QVariantMap& properties) { updates.emplace_back(uri, properties); }
};

class LauncherEntryTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus_.start())
            GTEST_SKIP() << "there is no message bus to try it on";
    }

    QDBusConnection connect(const QString& name) { return bus_.connect(name); }

private:
    int argumentCount_ = 0;
    QCoreApplication application_{argumentCount_, nullptr};
    PrivateBus bus_;
};

TEST_F(LauncherEntryTest, TellsTheDesktopWholePerCentsAndTakesThemAway) {
    UpdateReceiver receiver(connect("desktop"));
    {
        LauncherEntry entry("example.tolvix.installer", connect("program"));
        entry.setProgress(0.0);
        entry.setProgress(0.421);
        entry.setProgress(0.4299);
        entry.setProgress(1.0);
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return receiver.updates.size() == 4; }));
    EXPECT_EQ(receiver.updates[0].first, "application://example.tolvix.installer.desktop");
    for (const auto& [index, progress] : {std::pair(0, 0.0), {1, 0.42}, {2, 1.0}}) {
        QVariantMap& properties = receiver.updates[index].second;
        EXPECT_EQ(properties["progress"].toDouble(), progress);
        EXPECT_TRUE(properties["progress-visible"].toBool());
    }
    EXPECT_FALSE(receiver.updates[3].second["progress-visible"].toBool());
}

TEST_F(LauncherEntryTest, IsSilentWithoutABus) {
    LauncherEntry entry("example.tolvix.installer", {});
    entry.setProgress(0.5);
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nowhere");
    EXPECT_FALSE(SessionBus::connection().has_value());
}

#include "LauncherEntryTest.moc"
