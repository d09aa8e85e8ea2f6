#include "platform/qtcore/QtApplication.h"

#include <QCoreApplication>

#include <utility>

namespace platform {

int QtApplication::run() {
    // Nothing but the delegate's consent ends the program.
    QCoreApplication::setQuitLockEnabled(false);
    running_ = true;
    post(&QtApplication::finishLaunching);
    if (std::exchange(requestWaiting_, false))
        post(&QtApplication::askDelegate);
    const int status = QCoreApplication::exec();
    running_ = false;
    return status;
}

void QtApplication::terminate() {
    // Ending a loop that does not run yet would have no effect.
    if (running_)
        post(&QtApplication::askDelegate);
    else
        requestWaiting_ = true;
}

void QtApplication::replyToApplicationShouldTerminate(bool shouldTerminate) {
    if (!std::exchange(replyPending_, false))
        return;
    if (shouldTerminate)
        end();
}

void QtApplication::post(void (QtApplication::*step)()) {
    QMetaObject::invokeMethod(
        &context_, [this, step] { (this->*step)(); }, Qt::QueuedConnection);
}

void QtApplication::finishLaunching() {
    delegate_->applicationDidFinishLaunching();
}

void QtApplication::askDelegate() {
    if (ended_ || replyPending_)
        return;
    // Set before asking: the delegate may reply within its answer.
    replyPending_ = true;
    switch (delegate_->applicationShouldTerminate()) {
    case TerminateReply::Cancel:
        replyToApplicationShouldTerminate(false);
        break;
    case TerminateReply::Now:
        replyPending_ = false;
        end();
        break;
    case TerminateReply::Later:
        break;
    }
}

void QtApplication::end() {
    ended_ = true;
    QCoreApplication::exit(0);
}

} // namespace platform
