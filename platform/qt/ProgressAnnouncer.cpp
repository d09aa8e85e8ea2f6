#include "platform/qt/ProgressAnnouncer.h"

#include <QAccessible>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTimerEvent>
#include <QVariantMap>

namespace platform {

namespace {

// Between two values, in milliseconds.
constexpr int pauseLength = 400;

} // namespace

ProgressAnnouncer::ProgressAnnouncer(ProgressBar& bar) : QObject(&bar), bar_(bar) {
    connect(&bar, &ProgressBar::stateChanged, this, &ProgressAnnouncer::follow);
}

void ProgressAnnouncer::follow() {
    if (busy_ != bar_.state().isBusy())
        tellBusy();
    if (!pause_.isActive())
        tellValue();
}

void ProgressAnnouncer::timerEvent(QTimerEvent* /*event*/) {
    pause_.stop();
    tellValue();
}

// Qt's bridge to the bus of screen readers has no word for this change, so it is said on the bridge's own connection.
void ProgressAnnouncer::tellBusy() {
    busy_ = bar_.state().isBusy();
    QAccessible::State changed;
    changed.busy = true;
    QAccessibleStateChangeEvent event(&bar_, changed);
    QAccessible::updateAccessibility(&event);
    const QDBusConnection bridge("a11y");
    if (!QAccessible::isActive() || !bridge.isConnected())
        return;
    const QAccessible::Id id = QAccessible::uniqueId(QAccessible::queryAccessibleInterface(&bar_));
    QDBusMessage message = QDBusMessage::createSignal(QString("/org/a11y/atspi/accessible/%1").arg(id),
                                                      "org.a11y.atspi.Event.Object", "StateChanged");
    message << "busy" << static_cast<int>(busy_) << 0 << QVariant::fromValue(QDBusVariant(0)) << QVariantMap();
    bridge.send(message);
}

// An indeterminate bar has none.
void ProgressAnnouncer::tellValue() {
    const int percent = bar_.state().percent();
    if (bar_.state().indeterminate || percent == percent_)
        return;
    percent_ = percent;
    pause_.start(pauseLength, this);
    QAccessibleValueChangeEvent event(&bar_, percent);
    QAccessible::updateAccessibility(&event);
}

} // namespace platform
