#include "platform/qtcore/FileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>

#include <cstdlib>

#include <sys/stat.h>

namespace platform {
namespace {

constexpr int answerMilliseconds = 2000;

// Connecting without a bus would try to start one.
bool hasSessionBus() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0') {
        return true;
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    struct stat status{};
    return folder != nullptr && ::stat((std::string(folder) + "/bus").c_str(), &status) == 0 &&
           S_ISSOCK(status.st_mode);
}

} // namespace

bool showInFileManager(const std::string& uri) {
    if (!hasSessionBus()) {
        return false;
    }
    const QString name = QStringLiteral("org.freedesktop.FileManager1");
    QDBusMessage call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/FileManager1"), name,
                                                       QStringLiteral("ShowItems"));
    call << QStringList(QString::fromStdString(uri)) << QString();
    return QDBusConnection::sessionBus().call(call, QDBus::Block, answerMilliseconds).type() ==
           QDBusMessage::ReplyMessage;
}

} // namespace platform
