#include "platform/qtcore/FileManager.h"

#include "platform/qtcore/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QUuid>

#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

namespace platform {
namespace {

constexpr std::chrono::milliseconds patience{2000};

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
    const std::string address = SessionBus::address();
    if (address.empty())
        return false;
    const auto answer = std::make_shared<std::promise<bool>>();
    std::future<bool> isShown = answer->get_future();
    try {
        std::thread([answer, address, uri] { answer->set_value(askFileManager(address, uri)); }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return isShown.wait_for(patience) == std::future_status::ready && isShown.get();
}

} // namespace platform
