#include "tests/ui/InterfaceTest.h"

#include <QApplication>
#include <QTest>

#include <stdexcept>

namespace {

QWidget* mainWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == "MainInterface")
            return widget;
    throw std::runtime_error("there is no window");
}

} // namespace

void InterfaceTest::start(const std::string& language) {
    interface_ = platform::makeQtInterface(
        {.language = language, .identifier = "example.tolvix.installer", .name = "Tolvix Installer"});
    interface_->start(application_, delegate_);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    letWindowSettle();
}

void InterfaceTest::TearDown() {
    interface_.reset();
}

QWidget& InterfaceTest::window() const {
    return *mainWindow();
}

QList<QWidget*> InterfaceTest::sheets() {
    QList<QWidget*> found;
    for (QWidget* widget : mainWindow()->findChildren<QWidget*>("AlertSheet"))
        if (widget->isVisible())
            found.push_back(widget);
    return found;
}

QWidget& InterfaceTest::sheet() {
    const QList<QWidget*> open = sheets();
    if (open.size() != 1)
        throw std::runtime_error("there is not one sheet");
    return *open.front();
}

QList<QPushButton*> InterfaceTest::buttons() {
    return sheet().findChildren<QPushButton*>();
}

QTimer& InterfaceTest::settling() const {
    return *window().findChild<QTimer*>("settling");
}

void InterfaceTest::letWindowSettle() {
    const int moment = settling().interval();
    settling().setInterval(0);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !settling().isActive(); }));
    settling().setInterval(moment);
}

platform::SheetNumber InterfaceTest::begin(const platform::Alert& alert) {
    return interface().alerts().beginSheet(
        alert, [this](int code) { codes_.push_back(code); });
}

platform::SheetNumber InterfaceTest::beginSettled(const platform::Alert& alert) {
    const auto sheet = begin(alert);
    letWindowSettle();
    settle();
    return sheet;
}

void InterfaceTest::settle() {
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void InterfaceTest::press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(widget.window()->windowHandle(), key, modifiers);
    settle();
}
