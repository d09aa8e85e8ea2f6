#include "platform/qtcore/SessionBus.h"

#include "platform/linux/Environment.h"
#include "platform/posix/FileDescriptor.h"

#include <QByteArray>

#include <cstring>
#include <string_view>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";

// The address of the socket that a bus address such as "unix:path=/run/bus,guid=1f" begins with; its length is 0 where
// the bus is reached in another way.
struct SocketAddress {
    explicit SocketAddress(const std::string& busAddress) {
        const QByteArray first = QByteArray::fromStdString(busAddress).split(';').front();
        if (!first.startsWith("unix:"))
            return;
        for (const QByteArray& pair : first.mid(5).split(',')) {
            const bool isAbstract = pair.startsWith("abstract=");
            if (isAbstract || pair.startsWith("path="))
                set(QByteArray::fromPercentEncoding(pair.mid(pair.indexOf('=') + 1)), isAbstract);
        }
    }

    sockaddr_un address{};
    socklen_t length = 0;

private:
    // The name of an abstract socket follows a zero.
    void set(const QByteArray& name, bool isAbstract) {
        const auto size = static_cast<std::size_t>(name.size());
        if (size + 1 >= sizeof address.sun_path)
            return;
        address.sun_family = AF_UNIX;
        std::memcpy(&address.sun_path[isAbstract ? 1 : 0], name.constData(), size);
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size + 1);
    }
};

// Refusing makes no sense here: whether the bus answers is all that is asked.
bool greet(int socket) {
    const QByteArray user = QByteArray::number(::geteuid()).toHex();
    const QByteArray greeting = QByteArray(1, '\0') + "AUTH EXTERNAL " + user + "\r\n";
    return ::send(socket, greeting.constData(), static_cast<std::size_t>(greeting.size()), MSG_NOSIGNAL) > 0;
}

} // namespace

std::string SessionBus::address() {
    if (std::string address = environment::value(addressVariable); !address.empty())
        return address;
    const std::string folder = environment::value("XDG_RUNTIME_DIR");
    const std::string socket = folder.empty() ? std::string() : folder + "/bus";
    struct stat status {};
    return ::stat(socket.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) ? "unix:path=" + socket : std::string();
}

std::optional<QDBusConnection> SessionBus::connection() {
    if (address().empty())
        return {};
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::optional(bus) : std::nullopt;
}

bool SessionBus::isUsable(std::chrono::milliseconds patience) {
    if (answers(address(), patience))
        return true;
    // Qt keeps what came of the first attempt. Programs that this one starts get the person's own address again.
    const bool wasSet = qEnvironmentVariableIsSet(addressVariable);
    const QByteArray before = qgetenv(addressVariable);
    qputenv(addressVariable, "disabled:");
    QDBusConnection::sessionBus();
    if (wasSet)
        qputenv(addressVariable, before);
    else
        qunsetenv(addressVariable);
    return false;
}

bool SessionBus::answers(const std::string& address, std::chrono::milliseconds patience) {
    const SocketAddress place(address);
    const FileDescriptor socket(place.length == 0 ? -1
                                                  : ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.get() < 0)
        return true;
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&place.address), place.length) != 0)
        return errno != EAGAIN;
    if (!greet(socket.get()))
        return true;
    pollfd answer{socket.get(), POLLIN, 0};
    return ::poll(&answer, 1, static_cast<int>(patience.count())) != 0;
}

} // namespace platform
