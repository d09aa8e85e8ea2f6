#include "platform/qt/StageLabel.h"

#include <QAccessible>

namespace platform {

StageLabel::StageLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setFocusPolicy(Qt::StrongFocus);
}

void StageLabel::setStringValue(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (shown == this->text()) {
        return;
    }
    setText(shown);
    emit textChanged(shown);
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

} // namespace platform
