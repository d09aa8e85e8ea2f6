#include "tests/ui/InterfaceTest.h"

#include <QApplication>
#include <QLayout>
#include <QTest>

#include <stdexcept>

namespace {

QList<QWidget*> visibleWindows(const char* name) {
    QList<QWidget*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == name && widget->isVisible()) {
            found.push_back(widget);
        }
    }
    return found;
}

} // namespace

void InterfaceTest::start(const std::string& language) {
    interface_ = platform::makeQtInterface(
        {.language = language, .identifier = "example.tolvix.installer", .name = "Tolvix Installer"});
    interface_->start(application_, delegate_);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
}

void InterfaceTest::TearDown() {
    interface_.reset();
}

QWidget& InterfaceTest::window() const {
    return *visibleWindows("MainInterface").at(0);
}

QList<QWidget*> InterfaceTest::sheets() {
    return visibleWindows("AlertSheet");
}

QWidget& InterfaceTest::sheet() {
    const QList<QWidget*> open = sheets();
    const auto isActive = [&] { return QApplication::activeWindow() == open.front(); };
    if (open.size() != 1 || !QTest::qWaitFor(isActive)) {
        throw std::runtime_error("there is not one active sheet");
    }
    return *open.front();
}

QList<QPushButton*> InterfaceTest::buttons() {
    const auto* layout = sheet().findChild<QLayout*>("buttonLayout");
    QList<QPushButton*> found;
    for (int index = 0; index < layout->count(); ++index) {
        found.push_back(qobject_cast<QPushButton*>(layout->itemAt(index)->widget()));
    }
    return found;
}

void InterfaceTest::settle() {
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void InterfaceTest::press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(widget.windowHandle(), key, modifiers);
    settle();
}
