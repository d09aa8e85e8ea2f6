#include "platform/console/ConsoleInterface.h"

#include "platform/console/ConsoleAlerts.h"
#include "platform/console/ConsoleProgress.h"
#include "platform/console/ConsoleText.h"
#include "platform/linux/TerminalOutput.h"
#include "platform/posix/PosixTasks.h"
#include "platform/qtcore/QuitSignals.h"

#include <QCoreApplication>
#include <QtGlobal>

#include <optional>
#include <string>

#include <unistd.h>

namespace platform {
namespace {

// A console has no title.
class ConsoleWindow : public Window {
public:
    void setTitle(const std::string& /*title*/) override {}
};

// Each new text is one line.
class ConsoleLabel : public Label {
public:
    void setStringValue(const std::string& text) override {
        if (text != text_ && !text.empty())
            TerminalOutput::shared().write(STDOUT_FILENO, consoleLines(STDOUT_FILENO, text));
        text_ = text;
    }

private:
    std::string text_;
};

class ConsoleInterface : public MainInterface {
public:
    ConsoleInterface() : alerts_([this](bool open) { progress_.setSuspended(open); }) {
        QObject::connect(
            QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &context_,
            [] { TerminalOutput::shared().clear(); });
    }

    Window& window() override { return window_; }
    Label& textIndicator() override { return label_; }
    ProgressIndicator& progressIndicator() override { return progress_; }
    Alerts& alerts() override { return alerts_; }

    void start(Application& application, ApplicationDelegate& /*delegate*/) override {
        quitSignals_.emplace([&application] { application.terminate(); });
    }

private:
    ConsoleWindow window_;
    ConsoleLabel label_;
    ConsoleProgress progress_;
    ConsoleAlerts alerts_;
    std::optional<QuitSignals> quitSignals_;
    QObject context_;
};

void makeApplicationObject() {
    static int count = 1;
    static char name[] = "TolvixInstaller";
    static char* arguments[] = {name, nullptr};
    // Under a locale without UTF-8 Qt chooses another one and says so at length, which helps nobody here.
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static const QCoreApplication* const application = new QCoreApplication(count, arguments);
    static_cast<void>(application);
    qInstallMessageHandler(handler);
}

} // namespace

std::unique_ptr<MainInterface> makeConsoleInterface() {
    ignoreBrokenPipes();
    if (QCoreApplication::instance() == nullptr)
        makeApplicationObject();
    return std::make_unique<ConsoleInterface>();
}

} // namespace platform
