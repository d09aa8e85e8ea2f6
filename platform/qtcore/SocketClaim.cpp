#include "platform/qtcore/SocketClaim.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

namespace {

struct Address {
    struct sockaddr_un socket {};
    socklen_t length = 0;

    const struct sockaddr* get() const { return reinterpret_cast<const struct sockaddr*>(&socket); }
};

// The folder is known by what it is, because one folder can have many paths.
Address addressFor(const std::string& folder) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0)
        status = {};
    const std::string name = "tolvix-installer." + std::to_string(::geteuid()) + "." + std::to_string(status.st_dev) +
                             "." + std::to_string(status.st_ino);
    Address address;
    address.socket.sun_family = AF_UNIX;
    // A first byte of zero makes the name an abstract one.
    std::copy(name.begin(), name.end(), &address.socket.sun_path[1]);
    address.length = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + 1 + name.size());
    return address;
}

FileDescriptor makeSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool isOfThisUser(int connection) {
    struct ucred peer {};
    socklen_t length = sizeof(peer);
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::geteuid();
}

// Whether a process of this user holds the address; nothing when its holder has just gone. Names are open to all users:
// somebody else's claim is none.
std::optional<bool> tellHolder(const Address& address) {
    const FileDescriptor socket = makeSocket();
    if (::connect(socket.get(), address.get(), address.length) == 0)
        return isOfThisUser(socket.get());
    return errno == ECONNREFUSED ? std::nullopt : std::optional(errno == EAGAIN);
}

} // namespace

bool SocketClaim::claim(const std::string& folder, std::function<void()> activated) {
    const Address address = addressFor(folder);
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        FileDescriptor socket = makeSocket();
        if (!socket.isOpen())
            return true;
        if (::bind(socket.get(), address.get(), address.length) == 0) {
            listen(std::move(socket), std::move(activated));
            return true;
        }
        if (errno != EADDRINUSE)
            return true;
        if (const auto held = tellHolder(address))
            return !*held;
    }
    return false; // another process is between claiming and listening
}

bool SocketClaim::isHeld(const std::string& folder) {
    return tellHolder(addressFor(folder)).value_or(false);
}

void SocketClaim::listen(FileDescriptor socket, std::function<void()> activated) {
    constexpr int waitingConnections = 8;
    ::listen(socket.get(), waitingConnections);
    socket_ = std::move(socket);
    notifier_ = std::make_unique<QSocketNotifier>(socket_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this, activated = std::move(activated)] {
                         const FileDescriptor caller(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
                         if (caller.isOpen() && isOfThisUser(caller.get()))
                             activated();
                     });
}

} // namespace platform
