#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <optional>

class QDBusPendingCallWatcher;

namespace platform {

// Dark colours or a high contrast, where the person has asked the desktop for them and Qt does not know. Follows every
// change. Nothing waits for the desktop's answer; without one the colours stay as they are.
class DesktopColors : public QObject {
    Q_OBJECT

public:
    // Without a bus nothing happens. After the Qt application object.
    explicit DesktopColors(std::optional<QDBusConnection> bus);

private:
    Q_SLOT void settingChanged(const QDBusMessage& change);
    void settingsRead(const QDBusPendingCallWatcher& answer);
    void note(const QString& key, const QVariant& value);
    void show();

    bool prefersDark_ = false;
    bool prefersContrast_ = false;
    // Whether the colours are this object's, not Qt's own.
    bool isShowing_ = false;
};

} // namespace platform
