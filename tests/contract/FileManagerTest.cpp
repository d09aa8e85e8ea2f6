#include "platform/qtcore/FileManager.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using platform::showInFileManager;

// A session bus of the test's own.
class Bus {
public:
    Bus(const tests::TestFolder& folder, const std::string& address) {
        const std::string configuration =
            folder.write("bus.conf", "<busconfig><type>session</type><listen>" + address + "</listen>" +
                                         R"(<policy context="default"><allow send_destination="*" eavesdrop="true"/>
                            <allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)");
        const std::string command = "dbus-daemon --fork --print-pid=1 --config-file=" + configuration;
        FILE* const output = ::popen(command.c_str(), "r");
        EXPECT_EQ(std::fscanf(output, "%d", &processId_), 1);
        ::pclose(output);
    }
    ~Bus() { ::kill(processId_, SIGKILL); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

private:
    pid_t processId_ = 0;
};

class FileManager : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        shown = message.arguments().value(0).toStringList();
        return !answers || connection.send(message.createReply());
    }

    bool answers = true;
    QStringList shown;
};

// Asks from another thread, as the program does, while this one serves.
bool ask(const std::string& uri) {
    std::atomic<int> answer = -1;
    std::thread asking([&] { answer = showInFileManager(uri) ? 1 : 0; });
    while (answer < 0)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    asking.join();
    return answer == 1;
}

TEST(FileManager, IsAskedOverTheSessionBus) {
    const tests::TestFolder folder;
    const std::string usualPlace = "unix:path=" + folder.path("bus");
    const tests::TestEnvironment environment{{"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                                             {"XDG_RUNTIME_DIR", folder.path()}};
    EXPECT_FALSE(showInFileManager("file:///tmp")) << "without a bus";
    if (::access("/usr/bin/dbus-daemon", X_OK) != 0)
        GTEST_SKIP() << "needs dbus-daemon";
    const Bus bus(folder, usualPlace);
    EXPECT_FALSE(ask("file:///tmp/a")) << "without a file manager";

    FileManager manager;
    QDBusConnection connection = QDBusConnection::connectToBus(QString::fromStdString(usualPlace), "manager");
    ASSERT_TRUE(connection.registerVirtualObject("/org/freedesktop/FileManager1", &manager));
    ASSERT_TRUE(connection.registerService("org.freedesktop.FileManager1"));
    EXPECT_TRUE(ask("file:///tmp/a%20b"));
    EXPECT_EQ(manager.shown, QStringList("file:///tmp/a%20b"));
    manager.answers = false;
    EXPECT_FALSE(ask("file:///tmp/c")) << "a file manager that never answers";
    connection.unregisterObject("/org/freedesktop/FileManager1");
    EXPECT_FALSE(ask("file:///tmp/d")) << "a file manager that knows nothing of it";
}

TEST(FileManager, ABusThatNeverAnswersIsLeft) {
    const tests::TestFolder folder;
    struct sockaddr_un place {};
    place.sun_family = AF_UNIX;
    folder.path("bus").copy(&place.sun_path[0], sizeof(place.sun_path) - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const struct sockaddr*>(&place), sizeof(place)), 0);
    ASSERT_EQ(::listen(listener, 5), 0);
    const tests::TestEnvironment environment{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.path("bus")}};
    // The thread that still waits for the bus does not stand the usual end of a process; the program ends like this
    // too.
    const auto tryAndEnd = [] {
        const auto start = std::chrono::steady_clock::now();
        const bool isShown = showInFileManager("file:///tmp");
        const auto duration = std::chrono::steady_clock::now() - start;
        const bool waits = duration >= std::chrono::seconds(1) && duration < std::chrono::seconds(15);
        ::_exit(!isShown && waits ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(tryAndEnd(), testing::ExitedWithCode(EXIT_SUCCESS), "");
    ::close(listener);
}

} // namespace
