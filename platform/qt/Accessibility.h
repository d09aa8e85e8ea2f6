#pragma once

class QAccessibleInterface;
class QObject;
class QString;

namespace platform {

// What screen readers learn of the program's own kinds of widgets.
class Accessibility {
public:
    // From now on, widgets made by this program are described. Main thread, after the application object.
    static void install();

private:
    // Null for all other objects. The interface belongs to the caller.
    static QAccessibleInterface* describe(const QString& className, QObject* object);
};

} // namespace platform
