#include "platform/qt/LostDisplay.h"

#include <QMessageLogContext>
#include <QString>

#include <cstdlib>
#include <mutex>
#include <utility>

namespace platform {

namespace {

std::function<void()> lost;
QtMessageHandler nextHandler = nullptr;

// Called once: what the handler does may break as well. On Wayland two threads notice it, and each would end the
// process at once; the one that comes second is held here until the first has tidied up.
void handle() {
    static std::recursive_mutex mutex;
    const std::lock_guard lock(mutex);
    if (const auto handler = std::exchange(lost, nullptr))
        handler();
}

// On Wayland Qt leaves without exit handlers, and this warning is the last that is heard of it.
void hear(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (message.startsWith("The Wayland connection ") || message.startsWith("The X11 connection broke"))
        handle();
    nextHandler(type, context, message);
}

} // namespace

void LostDisplay::setHandler(std::function<void()> handler) {
    lost = std::move(handler);
    nextHandler = qInstallMessageHandler(hear);
    // The libraries for X end the process by themselves; the program never does it in this way.
    std::atexit(handle);
}

} // namespace platform
