#include "platform/qt/LauncherEntry.h"

#include <QDBusMessage>
#include <QHash>
#include <QVariantMap>

#include <cmath>
#include <utility>

namespace platform {

LauncherEntry::LauncherEntry(const QString& desktopFile, std::optional<QDBusConnection> bus)
    : uri_("application://" + desktopFile + ".desktop"),
      path_(QString("/com/canonical/unity/launcherentry/%1").arg(qHash(uri_))), bus_(std::move(bus)) {}

LauncherEntry::~LauncherEntry() {
    setProgress({});
}

void LauncherEntry::setProgress(std::optional<double> share) {
    const std::optional<int> percent =
        share ? std::optional(static_cast<int>(std::floor(*share * 100.0))) : std::nullopt;
    if (bus_ && percent != percent_) {
        percent_ = percent;
        send();
    }
}

void LauncherEntry::send() {
    const QVariantMap properties{{"progress", percent_.value_or(0) / 100.0},
                                 {"progress-visible", percent_.has_value()}};
    QDBusMessage update = QDBusMessage::createSignal(path_, "com.canonical.Unity.LauncherEntry", "Update");
    update << uri_ << properties;
    bus_->send(update);
}

} // namespace platform
