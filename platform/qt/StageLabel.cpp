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
    if (shown == this->text())
        return;
    const bool isFirst = this->text().isEmpty();
    setText(shown);
    setAccessibleName(shown);
    emit textChanged(shown);
    // The first one is read when the keyboard comes to the window.
    if (isFirst)
        return;
    // A notification is spoken when it appears; a change of its text alone is not.
    QAccessibleEvent event(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
}

} // namespace platform
