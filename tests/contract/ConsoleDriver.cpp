// A program with the console front end that plays one scene, for tests to watch from the other end of a terminal.

#include "platform/console/ConsoleInterface.h"
#include "platform/linux/StandardErrorConsole.h"
#include "platform/linux/TerminalOutput.h"
#include "platform/qtcore/QtApplication.h"

#include <QTimer>

#include <functional>
#include <map>
#include <string>

namespace {

using platform::Alert;

class Scene : public platform::ApplicationDelegate {
public:
    explicit Scene(std::string name) : name_(std::move(name)) {}

    int run() {
        application_.setDelegate(*this);
        interface_->start(application_, *this);
        return application_.run();
    }

    void applicationDidFinishLaunching() override {
        const std::map<std::string, void (Scene::*)()> scenes{{"stages", &Scene::playStages},
                                                              {"progress", &Scene::playProgress},
                                                              {"alert", &Scene::playAlert},
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
        for (const char* text : {"Downloading", "Downloading", "", "Installing\x1b[2J", "Done"}) {
            interface_->textIndicator().setStringValue(text);
        }
        interface_->progressIndicator().setIndeterminate(false);
        interface_->progressIndicator().setDoubleValue(50);
        console_.log("logged");
        application_.terminate();
    }

    void playProgress() {
        platform::ProgressIndicator& bar = interface_->progressIndicator();
        bar.setIndeterminate(false);
        bar.setDoubleValue(0);
        later(100, [this, &bar] {
            for (int step = 0; step <= 50'000; ++step) {
                bar.setDoubleValue(step / 1000.0);
            }
        });
        later(300, [this] { console_.log("logged"); });
        later(400, [&bar] { bar.setDoubleValue(250); });
        later(600, [this, &bar] {
            bar.setIndeterminate(true);
            interface_->textIndicator().setStringValue("Installing");
            application_.terminate();
        });
    }

    void playAlert() {
        interface_->alerts().beginSheet(question("Title"), [this](int code) {
            report("code " + std::to_string(code));
            application_.terminate();
        });
        report("returned");
        later(1, [this] { console_.log("the loop runs"); });
    }

    void playTwoAlerts() {
        for (const char* title : {"One", "Two"}) {
            interface_->alerts().beginSheet(question(title), [this, title](int code) {
                report(title + (" code " + std::to_string(code)));
                if (std::string(title) == "One") {
                    interface_->alerts().beginSheet(question("Three"), [this](int last) {
                        report("Three code " + std::to_string(last));
                        application_.terminate();
                    });
                }
            });
        }
    }

    void later(int milliseconds, std::function<void()> step) {
        QTimer::singleShot(milliseconds, &context_, std::move(step));
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
