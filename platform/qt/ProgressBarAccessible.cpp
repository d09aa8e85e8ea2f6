#include "platform/qt/ProgressBarAccessible.h"

#include <QLocale>

namespace platform {

ProgressBarAccessible::ProgressBarAccessible(ProgressBar& bar) : QAccessibleWidget(&bar, QAccessible::ProgressBar) {}

void* ProgressBarAccessible::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString ProgressBarAccessible::text(QAccessible::Text kind) const {
    if (kind != QAccessible::Value)
        return QAccessibleWidget::text(kind);
    return progress().indeterminate && !progress().finished
               ? QString()
               : QLocale().toString(progress().percent()) + QLocale().percent();
}

QAccessible::State ProgressBarAccessible::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.busy = progress().isBusy();
    state.readOnly = true;
    return state;
}

QVariant ProgressBarAccessible::currentValue() const {
    return static_cast<double>(progress().percent());
}

const ProgressState& ProgressBarAccessible::progress() const {
    return static_cast<ProgressBar*>(widget())->state();
}

} // namespace platform
