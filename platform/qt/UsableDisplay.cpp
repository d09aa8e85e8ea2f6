#include "platform/qt/UsableDisplay.h"

#include "platform/posix/FileDescriptor.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QDir>
#include <QPluginLoader>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <future>
#include <memory>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/xcb.h>

namespace platform {

namespace {

using namespace std::chrono_literals;

// A display that has said nothing for so long would hold up the window for ever.
constexpr std::chrono::milliseconds patience = 5s;

bool isNamed(const char* variable) {
    return !qEnvironmentVariableIsEmpty(variable);
}

// The library waits without end; the thread in which it does so stays behind.
bool reachesX() {
    const auto reached = std::make_shared<std::promise<bool>>();
    std::future<bool> answer = reached->get_future();
    std::thread([reached] {
        xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
        const bool isUsable = xcb_connection_has_error(connection) == 0;
        xcb_disconnect(connection);
        reached->set_value(isUsable);
    }).detach();
    return answer.wait_for(patience) == std::future_status::ready && answer.get();
}

// Whether a compositor is at the other end: it answers the protocol's shortest question.
bool answersWayland(int socket) {
    // To object 1, which is the display: request 0, of 12 bytes, which tells the new object 2 that it has been read.
    constexpr std::array<std::uint32_t, 3> sync{1, 12U << 16U, 2};
    if (::send(socket, sync.data(), sizeof sync, MSG_NOSIGNAL) != sizeof sync)
        return false;
    pollfd readable{socket, POLLIN, 0};
    while (::poll(&readable, 1, static_cast<int>(patience.count())) < 0 && errno == EINTR) {
    }
    char first = 0;
    return ::recv(socket, &first, 1, MSG_DONTWAIT) == 1;
}

bool reachesWayland() {
    // A connection that is there already, from whoever started this program.
    if (isNamed("WAYLAND_SOCKET"))
        return true;
    const QByteArray path =
        QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).filePath(qEnvironmentVariable("WAYLAND_DISPLAY")).toLocal8Bit();
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(&address.sun_path[0], path.constData(), static_cast<std::size_t>(path.size()));
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           answersWayland(socket.get());
}

// Loads it, as Qt will in a moment: a plug-in that lies there can still lack a library. Of several of one family the
// one without further needs comes first.
bool hasPlugIn(const QString& family) {
    QStringList folders{qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH")};
    for (const QString& folder : QCoreApplication::libraryPaths())
        folders += folder + "/platforms";
    for (const QString& folder : folders) {
        const QDir plugIns(folder);
        for (const QString& file :
             plugIns.entryList({"libq" + family + "*.so"}, QDir::Files, QDir::Name | QDir::Reversed))
            if (QPluginLoader(plugIns.filePath(file)).load())
                return true;
    }
    return false;
}

// Why the plug-in, as Qt names it, would end in an abort; empty where it would not.
QString problemWith(const QByteArray& plugIn) {
    if (plugIn.startsWith("wayland")) {
        const QString display = qEnvironmentVariable("WAYLAND_DISPLAY");
        if (!reachesWayland())
            return QString("the Wayland display \"%1\" cannot be reached").arg(display);
        return hasPlugIn("wayland") ? QString() : QString("Qt's plug-in for Wayland displays is missing");
    }
    if (plugIn.startsWith("xcb")) {
        if (!reachesX())
            return QString("the X display \"%1\" cannot be reached").arg(qEnvironmentVariable("DISPLAY"));
        return hasPlugIn("xcb") ? QString() : QString("Qt's plug-in for X displays is missing");
    }
    return {};
}

// What Qt would try, in its order.
QByteArrayList candidates() {
    if (isNamed("QT_QPA_PLATFORM"))
        return qgetenv("QT_QPA_PLATFORM").split(';');
    QByteArrayList found;
    if (isNamed("WAYLAND_DISPLAY"))
        found += "wayland";
    if (isNamed("DISPLAY"))
        found += "xcb";
    return found;
}

} // namespace

UsableDisplay UsableDisplay::find() {
    if (!isNamed("DISPLAY") && !isNamed("WAYLAND_DISPLAY"))
        return {};
    QByteArrayList usable;
    QStringList problems;
    const QByteArrayList all = candidates();
    for (const QByteArray& plugIn : all)
        if (const QString problem = problemWith(plugIn); problem.isEmpty())
            usable += plugIn;
        else
            problems += problem;
    if (usable.isEmpty())
        return {false, {}, problems.join(", and ").toStdString()};
    return {true, usable == all ? std::string() : usable.join(';').toStdString(), {}};
}

} // namespace platform
