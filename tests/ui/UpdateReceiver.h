#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <vector>

// A dock: notes what programs say of their entries in it.
class UpdateReceiver : public QObject {
    Q_OBJECT

public:
    struct Update {
        QString uri;
        QVariantMap properties;
    };

    explicit UpdateReceiver(QDBusConnection bus) {
        bus.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this, SLOT(note(QString, QVariantMap)));
    }

    const std::vector<Update>& updates() const { return updates_; }

private slots:
    void note(const QString& uri, const QVariantMap& properties) { updates_.push_back({uri, properties}); }

private:
    std::vector<Update> updates_;
};
