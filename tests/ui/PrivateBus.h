#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>

// A message bus of the test's own; it ends with this object.
class PrivateBus {
public:
    ~PrivateBus() {
        for (const QString& name : names_)
            QDBusConnection::disconnectFromBus(name);
        // Not by force: it removes its socket.
        daemon_.terminate();
        daemon_.waitForFinished();
    }

    // False where the machine has no message bus.
    bool start() {
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address"});
        if (!daemon_.waitForStarted() || !daemon_.waitForReadyRead())
            return false;
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        return true;
    }

    QDBusConnection connect(const QString& name) {
        names_ += name;
        return QDBusConnection::connectToBus(address_, name);
    }

private:
    QProcess daemon_;
    QString address_;
    QStringList names_;
};
