// A program with the console front end that plays one scene, for tests to watch from the other end of a terminal. Each
// SIGUSR1 makes it go on.

#include "platform/console/ConsoleInterface.h"
#include "platform/linux/StandardErrorConsole.h"
#include "platform/linux/TerminalOutput.h"
#include "platform/qtcore/QtApplication.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <deque>
#include <functional>
#include <map>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

using platform::Alert;

std::array<int, 2> steps{-1, -1};

extern "C" void noteStep(int /*signal*/) {
    static_cast<void>(::write(steps[1], "", 1));
}

class Scene : public platform::ApplicationDelegate {
public:
    explicit Scene(std::string name) : name_(std::move(name)) {}

    int run() {
        application_.setDelegate(*this);
        interface_->start(application_, *this);
        return application_.run();
    }

    void applicationDidFinishLaunching() override {
        const std::map<std::string, void (Scene::*)()> scenes{
            {"stages", &Scene::playStages},        {"progress", &Scene::playProgress},    {"alert", &Scene::playAlert},
            {"long alert", &Scene::playLongAlert}, {"huge alert", &Scene::playHugeAlert}, {"noise", &Scene::playNoise},
            {"two alerts", &Scene::playTwoAlerts}};
        (this->*scenes.at(name_))();
    }

    platform::TerminateReply applicationShouldTerminate() override { return platform::TerminateReply::Now; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override {}

private:
    static Alert question(const std::string& title) {
        return {platform::AlertStyle::Warning, title, "First line\nsecond \x1b[31mline", {"Continue", "Quit"}, 0, 1};
    }

    static void report(const std::string& line) { platform::TerminalOutput::shared().write(1, line + '\n'); }

    void playStages() {
        for (const char* text : {"Downloading", "Downloading", "", "Installing\x1b[2J\xc2\x9b\x9b", "It’s é…"})
            interface_->textIndicator().setStringValue(text);
        interface_->progressIndicator().setIndeterminate(false);
        interface_->progressIndicator().setDoubleValue(50);
        console_.log("logged");
        application_.terminate();
    }

    void playProgress() {
        platform::ProgressIndicator& bar = interface_->progressIndicator();
        onSteps({[&bar] {
                     for (int step = 0; step <= 50'000; ++step)
                         bar.setDoubleValue(step / 1000.0);
                 },
                 [this, &bar] {
                     console_.log("logged");
                     bar.setDoubleValue(250);
                 },
                 [this, &bar] {
                     bar.setIndeterminate(true);
                     interface_->textIndicator().setStringValue("Installing");
                     application_.terminate();
                 }});
        bar.setIndeterminate(false);
        bar.setDoubleValue(0);
    }

    void playAlert() {
        ask(question("Title"));
        report("returned");
        later([this] { console_.log("the loop runs"); });
    }

    void playLongAlert() {
        ask({platform::AlertStyle::Warning,
             "Make sure there is enough free space",
             "インターネット接続とディスクを確認。\ne\u0301e\u0301e\u0301e\u0301 e\u0301e\u0301e\u0301e\u0301 "
             "e\u0301e\u0301e\u0301e\u0301 e\u0301e\u0301e\u0301e\u0301 end",
             {"Continue with the installation", "Quit"},
             0,
             1});
    }

    // More than a terminal takes before it is read.
    void playHugeAlert() {
        Alert alert = question("Title");
        for (int line = 0; line < 2000; ++line)
            alert.informativeText += "\nThis line has no other purpose than to fill the terminal.";
        ask(alert);
    }

    void playNoise() {
        for (int line = 0; line < 400; ++line)
            console_.log(std::string(2000, 'x'));
        report("not held up");
        application_.terminate();
    }

    void playTwoAlerts() {
        for (const char* title : {"One", "Two"}) {
            interface_->alerts().beginSheet(
                question(title),
                [this, title](int code) {
                    report(title + (" code " + std::to_string(code)));
                    if (std::string(title) == "One")
                        interface_->alerts().beginSheet(
                            question("Three"),
                            [this](int last) {
                                report("Three code " + std::to_string(last));
                                application_.terminate();
                            });
                });
        }
    }

    void ask(const Alert& alert) {
        interface_->alerts().beginSheet(
            alert,
            [this](int code) {
                report("code " + std::to_string(code));
                application_.terminate();
            });
    }

    void later(std::function<void()> step) {
        QMetaObject::invokeMethod(&context_, std::move(step), Qt::QueuedConnection);
    }

    void onSteps(std::deque<std::function<void()>> next) {
        static_cast<void>(::pipe2(steps.data(), O_CLOEXEC));
        std::signal(SIGUSR1, noteStep);
        auto* const notifier = new QSocketNotifier(steps[0], QSocketNotifier::Read, &context_);
        QObject::connect(notifier, &QSocketNotifier::activated, &context_, [next = std::move(next)]() mutable {
            char step = 0;
            static_cast<void>(::read(steps[0], &step, 1));
            const auto action = std::move(next.front());
            next.pop_front();
            action();
        });
    }

    const std::string name_;
    std::unique_ptr<platform::MainInterface> interface_ = platform::makeConsoleInterface();
    platform::QtApplication application_;
    platform::StandardErrorConsole console_{"driver"};
    QObject context_;
};

} // namespace

int main(int argc, char** argv) {
    return argc == 2 ? Scene(argv[1]).run() : 2;
}
