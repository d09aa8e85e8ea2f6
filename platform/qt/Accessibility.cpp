#include "platform/qt/Accessibility.h"

#include "platform/qt/AlertSheet.h"
#include "platform/qt/MainWindow.h"
#include "platform/qt/ProgressBarAccessible.h"

#include <QAccessibleWidget>

namespace platform {

void Accessibility::install() {
    QAccessible::installFactory(&Accessibility::describe);
}

QAccessibleInterface* Accessibility::describe(const QString& /*className*/, QObject* object) {
    if (auto* bar = qobject_cast<ProgressBar*>(object)) {
        return new ProgressBarAccessible(*bar);
    }
    if (auto* sheet = qobject_cast<AlertSheet*>(object)) {
        return new QAccessibleWidget(sheet, QAccessible::AlertMessage);
    }
    if (auto* window = qobject_cast<MainWindow*>(object)) {
        return new QAccessibleWidget(window, QAccessible::Window);
    }
    return nullptr;
}

} // namespace platform
