#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>

#include <vector>

// What a screen reader hears and sees of this program, on the bus that real ones use.
class AccessibilityBus : public QObject {
    Q_OBJECT

public:
    // Numbers of the bus's protocol.
    enum Role { Alert = 2, Button = 43, ProgressBar = 42, Notification = 101 };
    enum State { Busy = 3, Focused = 12, Modal = 16 };

    struct Event {
        // Such as "showing", "busy" or "accessible-value", and the new state where there is one.
        QString kind;
        int detail = 0;
        QString path;
    };

    // Asks for all events of objects. Before the program's Qt application object, whose bridge asks who listens.
    AccessibilityBus();

    // All so far, in order.
    std::vector<Event> events;

    // Of that kind and state, from objects with that role.
    std::vector<Event> heard(const QString& kind, int detail, Role role);

    int role(const QString& path);
    QString name(const QString& path);
    QString description(const QString& path);
    bool hasState(const QString& path, State state);
    QString parent(const QString& path);
    std::vector<QString> children(const QString& path);
    double value(const QString& path);

private slots:
    void note(const QDBusMessage& message);

private:
    // Runs the event loop meanwhile, because it is this program that answers.
    QDBusMessage ask(const QString& path, const QString& interface, const QString& method,
                     const QVariantList& arguments = {});
    QVariant property(const QString& path, const QString& interface, const QString& property);

    QDBusConnection bus_;
    QString program_;
};
