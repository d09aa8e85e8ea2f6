#include "platform/qt/AnswerGuard.h"

#include <QEvent>
#include <QWidget>

#include <chrono>

namespace platform {

using namespace std::chrono_literals;

AnswerGuard::AnswerGuard(QWidget& window) : QObject(&window), window_(window), settling_(this) {
    settling_.setObjectName("settling");
    settling_.setSingleShot(true);
    settling_.setInterval(700ms);
    settling_.callOnTimeout([this] { open_ = open_ || window_.isActiveWindow(); });
    window_.installEventFilter(this);
}

void AnswerGuard::sheetCame() {
    open_ = window_.isActiveWindow() && !settling_.isActive();
}

void AnswerGuard::sheetWent() {
    open_ = false;
    settling_.start();
}

bool AnswerGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        settling_.start();
    return QObject::eventFilter(watched, event);
}

} // namespace platform
