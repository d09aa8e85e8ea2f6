#include "platform/qt/Accessibility.h"

#include "platform/qt/AlertSheet.h"
#include "platform/qt/MainWindow.h"
#include "platform/qt/ProgressBarAccessible.h"
#include "platform/qt/StageLabel.h"

#include <QAccessibleWidget>

namespace platform {

namespace {

// It is read as a whole when the keyboard comes to one of its buttons: its name, and its texts, which are labels in it.
class AlertAccessible : public QAccessibleWidget {
public:
    explicit AlertAccessible(AlertSheet* sheet) : QAccessibleWidget(sheet, QAccessible::AlertMessage) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

class StageAccessible : public QAccessibleWidget {
public:
    explicit StageAccessible(StageLabel& label) : QAccessibleWidget(&label, QAccessible::Notification), label_(label) {}

    bool isValid() const override { return QAccessibleWidget::isValid() && !label_.isQuiet(); }

private:
    StageLabel& label_;
};

} // namespace

void Accessibility::install() {
    QAccessible::installFactory(&Accessibility::describe);
}

QAccessibleInterface* Accessibility::describe(const QString& /*className*/, QObject* object) {
    if (auto* bar = qobject_cast<ProgressBar*>(object))
        return new ProgressBarAccessible(*bar);
    if (auto* label = qobject_cast<StageLabel*>(object))
        return new StageAccessible(*label);
    if (auto* sheet = qobject_cast<AlertSheet*>(object))
        return new AlertAccessible(sheet);
    if (auto* window = qobject_cast<MainWindow*>(object))
        return new QAccessibleWidget(window, QAccessible::Window);
    return nullptr;
}

} // namespace platform
