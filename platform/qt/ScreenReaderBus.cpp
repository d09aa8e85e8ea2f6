#include "platform/qt/ScreenReaderBus.h"

#include "platform/qtcore/SessionBus.h"

#include <QDBusMessage>
#include <QVariantList>

namespace platform {

namespace {

// Qt prefers it to what the session's bus says.
constexpr const char* addressVariable = "AT_SPI_BUS_ADDRESS";

// Empty where there is no such bus yet: none is started for this.
std::string address(std::chrono::milliseconds patience) {
    if (!qEnvironmentVariableIsEmpty(addressVariable))
        return qgetenv(addressVariable).toStdString();
    const std::optional<QDBusConnection> session = SessionBus::connection();
    if (!session)
        return {};
    QDBusMessage question =
        QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
    question.setAutoStartService(false);
    const QDBusMessage answer = session->call(question, QDBus::Block, static_cast<int>(patience.count()));
    return answer.arguments().value(0).toString().toStdString();
}

} // namespace

bool ScreenReaderBus::isUsable(std::chrono::milliseconds patience) {
    if (SessionBus::answers(address(patience), patience))
        return true;
    qputenv(addressVariable, "disabled:");
    return false;
}

} // namespace platform
