#include "platform/qt/DesktopColors.h"

#include "platform/qt/ColorSchemes.h"
#include "platform/qt/Contrast.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

#include <utility>

namespace platform {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto interface = "org.freedesktop.portal.Settings";
constexpr auto appearance = "org.freedesktop.appearance";

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

DesktopColors::DesktopColors(std::optional<QDBusConnection> bus) {
    if (!bus)
        return;
    // Without the service's name, because Qt would wait for the bus to say who owns it.
    bus->connect({}, path, interface, "SettingChanged", this, SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, "ReadAll");
    question << QStringList(appearance);
    auto* answer = new QDBusPendingCallWatcher(bus->asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        settingsRead(*answer);
        answer->deleteLater();
    });
}

void DesktopColors::settingsRead(const QDBusPendingCallWatcher& answer) {
    const QDBusMessage message = answer.reply();
    if (message.type() != QDBusMessage::ReplyMessage || message.signature() != "a{sa{sv}}")
        return;
    const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(message.arguments().front());
    const QVariantMap settings = groups.value(appearance);
    for (auto setting = settings.begin(); setting != settings.end(); ++setting)
        note(setting.key(), setting.value());
    show();
}

void DesktopColors::settingChanged(const QDBusMessage& change) {
    const QVariantList words = change.arguments();
    if (change.signature() != "ssv" || words[0].toString() != appearance)
        return;
    note(words[1].toString(), words[2].value<QDBusVariant>().variant());
    show();
}

void DesktopColors::note(const QString& key, const QVariant& value) {
    if (key == "color-scheme")
        prefersDark_ = value.toUInt() == 1;
    else if (key == "contrast")
        prefersContrast_ = value.toUInt() == 1;
}

// A theme of Qt that follows the desktop is better than anything made up here.
void DesktopColors::show() {
    if (std::exchange(isShowing_, false))
        QApplication::setPalette(QPalette());
    const QPalette own = QApplication::palette();
    if (prefersContrast_ && !Contrast::isHigh(own))
        QApplication::setPalette(ColorSchemes::highContrast(prefersDark_ || isDark(own)));
    else if (prefersDark_ && !isDark(own))
        QApplication::setPalette(ColorSchemes::dark());
    else
        return;
    isShowing_ = true;
}

} // namespace platform
