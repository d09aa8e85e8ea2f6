#include "tests/ui/AccessibilityBus.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QTest>

namespace {

constexpr auto accessible = "org.a11y.atspi.Accessible";

QString busAddress() {
    const QDBusMessage question =
        QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
    return QDBusConnection::sessionBus().call(question).arguments().value(0).toString();
}

// An object's place: the bus name of its program, and its path.
std::pair<QString, QString> place(const QDBusArgument& argument) {
    std::pair<QString, QDBusObjectPath> read;
    argument.beginStructure();
    argument >> read.first >> read.second;
    argument.endStructure();
    return {read.first, read.second.path()};
}

} // namespace

AccessibilityBus::AccessibilityBus() : bus_(QDBusConnection::connectToBus(busAddress(), "reader")) {
    for (const char* signal : {"StateChanged", "PropertyChange"})
        bus_.connect({}, {}, "org.a11y.atspi.Event.Object", signal, this, SLOT(note(QDBusMessage)));
    for (const char* kind : {"object:state-changed", "object:property-change:accessible-value"}) {
        QDBusMessage question = QDBusMessage::createMethodCall("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                                               "org.a11y.atspi.Registry", "RegisterEvent");
        question << QString(kind);
        bus_.call(question);
    }
}

std::vector<AccessibilityBus::Event> AccessibilityBus::heard(const QString& kind, int detail, Role wanted) {
    std::vector<Event> found;
    for (const Event& event : std::vector(events))
        if (event.kind == kind && event.detail == detail && role(event.path) == wanted)
            found.push_back(event);
    return found;
}

int AccessibilityBus::role(const QString& path) {
    return ask(path, accessible, "GetRole").arguments().value(0).toInt();
}

bool AccessibilityBus::hasState(const QString& path, State state) {
    const QVariantList answer = ask(path, accessible, "GetState").arguments();
    const auto words = qdbus_cast<QList<uint>>(answer.value(0));
    return !words.isEmpty() && (words.front() >> state & 1U) != 0;
}

QString AccessibilityBus::parent(const QString& path) {
    return place(property(path, accessible, "Parent").value<QDBusArgument>()).second;
}

QString AccessibilityBus::name(const QString& path) {
    return property(path, accessible, "Name").toString();
}

QString AccessibilityBus::description(const QString& path) {
    return property(path, accessible, "Description").toString();
}

double AccessibilityBus::value(const QString& path) {
    return property(path, "org.a11y.atspi.Value", "CurrentValue").toDouble();
}

std::vector<QString> AccessibilityBus::children(const QString& path) {
    const auto argument = ask(path, accessible, "GetChildren").arguments().value(0).value<QDBusArgument>();
    std::vector<QString> found;
    argument.beginArray();
    while (!argument.atEnd())
        found.push_back(place(argument).second);
    argument.endArray();
    return found;
}

void AccessibilityBus::note(const QDBusMessage& message) {
    program_ = message.service();
    events.push_back({message.arguments().value(0).toString(), message.arguments().value(1).toInt(), message.path()});
}

QDBusMessage AccessibilityBus::ask(const QString& path, const QString& interface, const QString& method,
                                   const QVariantList& arguments) {
    QDBusMessage question = QDBusMessage::createMethodCall(program_, path, interface, method);
    question.setArguments(arguments);
    const QDBusPendingCall answer = bus_.asyncCall(question);
    if (!QTest::qWaitFor([&] { return answer.isFinished(); }))
        return {};
    return answer.reply();
}

QVariant AccessibilityBus::property(const QString& path, const QString& interface, const QString& property) {
    const QVariantList answer = ask(path, "org.freedesktop.DBus.Properties", "Get", {interface, property}).arguments();
    return answer.value(0).value<QDBusVariant>().variant();
}
