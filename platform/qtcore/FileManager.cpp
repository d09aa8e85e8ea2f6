#include "platform/qtcore/FileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QUuid>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <thread>

#include <sys/stat.h>

namespace platform {
namespace {

constexpr std::chrono::milliseconds patience{2000};

// Empty when there is no bus. Leaving the search to the library could start one.
std::string sessionBusAddress() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0') {
        return address;
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    const std::string socket = folder == nullptr ? std::string() : std::string(folder) + "/bus";
    struct stat status {};
    return ::stat(socket.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) ? "unix:path=" + socket : std::string();
}

bool askFileManager(const std::string& address, const std::string& uri) {
    const QString name = QStringLiteral("org.freedesktop.FileManager1");
    QDBusMessage call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/FileManager1"), name,
                                                       QStringLiteral("ShowItems"));
    call << QStringList(QString::fromStdString(uri)) << QString();
    const QString connection = QUuid::createUuid().toString();
    const bool isShown = QDBusConnection::connectToBus(QString::fromStdString(address), connection)
                             .call(call, QDBus::Block, static_cast<int>(patience.count()))
                             .type() == QDBusMessage::ReplyMessage;
    QDBusConnection::disconnectFromBus(connection);
    return isShown;
}

} // namespace

// The limit of the call does not hold for connecting: a bus that never answers would keep this thread much longer.
bool showInFileManager(const std::string& uri) {
    const std::string address = sessionBusAddress();
    if (address.empty()) {
        return false;
    }
    const auto answer = std::make_shared<std::promise<bool>>();
    std::future<bool> isShown = answer->get_future();
    std::thread([answer, address, uri] { answer->set_value(askFileManager(address, uri)); }).detach();
    return isShown.wait_for(patience) == std::future_status::ready && isShown.get();
}

} // namespace platform
