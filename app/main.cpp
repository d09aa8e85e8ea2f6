#include "app/TXAppDelegate.h"
#include "check/TXCheckController.h"
#include "download/TXDownloadController.h"
#include "install/TXInstallController.h"
#include "platform/Platform.h"
#include "platform/console/ConsoleInterface.h"
#include "platform/linux/LinuxAuthorization.h"
#include "platform/linux/LinuxDiskImages.h"
#include "platform/linux/LinuxLocale.h"
#include "platform/linux/LinuxProcessInfo.h"
#include "platform/linux/LinuxTransfers.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/StandardErrorConsole.h"
#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "platform/posix/PosixTasks.h"
#include "platform/qt/QtInterface.h"
#include "platform/qtcore/FileManager.h"
#include "platform/qtcore/QtApplication.h"
#include "platform/qtcore/QtBundles.h"
#include "platform/qtcore/QtPreferences.h"
#include "platform/qtcore/QtThreads.h"
#include "telemetry/Deployment.h"
#include "ui/TXInstallWindowController.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

// The composition root: the one place that knows which implementations the program is made of.

using namespace std::chrono_literals;

namespace {

bool hasDisplay() {
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

// What there is before a user interface is.
struct Surroundings {
    explicit Surroundings(const std::vector<std::string>& arguments)
        : bundles(locale.preferredLanguages()),
          processInfo(arguments, Deployment::informationText(bundles, "TXPlatformRoot").value_or("")),
          console(arguments.empty() ? std::string() : arguments.front()) {}

    platform::LinuxLocale locale;
    platform::QtBundles bundles;
    platform::LinuxProcessInfo processInfo;
    platform::StandardErrorConsole console;
};

std::unique_ptr<platform::MainInterface> makeMainInterface(Surroundings& surroundings) {
    if (!hasDisplay())
        return platform::makeConsoleInterface();
    const auto text = [&](const char* key) {
        return Deployment::informationText(surroundings.bundles, key).value_or("");
    };
    return platform::makeQtInterface(
        {surroundings.bundles.localization(), text("CFBundleIdentifier"), text("CFBundleName")});
}

// All services, and the interface that the event loop comes with.
struct System {
    explicit System(const std::vector<std::string>& arguments) : surroundings(arguments) {}

    platform::Platform services() {
        return {&threads,
                &tasks,
                &fileQueries,
                &fileChanges,
                &transfers,
                &diskImages,
                &workspace,
                &authorization,
                &surroundings.bundles,
                &preferences,
                &surroundings.processInfo,
                &surroundings.locale,
                &surroundings.console,
                &application,
                &interface->alerts()};
    }

    Surroundings surroundings;
    std::unique_ptr<platform::MainInterface> interface = makeMainInterface(surroundings);
    platform::QtApplication application;
    platform::QtThreads threads;
    platform::PosixTasks tasks;
    platform::PosixFileQueries fileQueries;
    platform::PosixFileChanges fileChanges{{surroundings.processInfo.homeDirectory(),
                                            surroundings.processInfo.systemPath("/Applications"),
                                            surroundings.processInfo.temporaryDirectory()}};
    platform::LinuxTransfers transfers{surroundings.bundles.mainBundlePath() + "/Contents/PlugIns/Transfers.so",
                                       threads, surroundings.console};
    platform::LinuxDiskImages diskImages{surroundings.bundles};
    platform::LinuxWorkspace workspace{surroundings.bundles, tasks, fileChanges, &platform::showInFileManager};
    platform::LinuxAuthorization authorization;
    platform::QtPreferences preferences{
        platform::QtPreferences::userConfigurationFolder(surroundings.processInfo.homeDirectory()), threads};
};

TXStageFactory stageFactory() {
    return {[](auto delegate) { return std::make_shared<TXCheckController>(std::move(delegate)); },
            [](auto delegate) { return std::make_shared<TXDownloadController>(std::move(delegate)); },
            [](auto delegate) { return std::make_shared<TXInstallController>(std::move(delegate)); }};
}

std::shared_ptr<TXInstallWindowController> loadWindow(platform::MainInterface& interface) {
    auto controller = std::make_shared<TXInstallWindowController>(interface.window());
    controller->setTextIndicator(&interface.textIndicator());
    controller->setProgressIndicator(&interface.progressIndicator());
    controller->awakeFromNib();
    controller->windowDidLoad();
    return controller;
}

} // namespace

int main(int argc, char** argv) {
    // Copied before a library can take out of the list what it believes to be its own.
    const std::vector<std::string> arguments(argv, argv + argc);
    // Never destroyed: threads can be at work until the very end.
    System& system = *new System(arguments);
    platform::current() = system.services();
    const auto delegate = std::make_shared<TXAppDelegate>(stageFactory());
    delegate->setWindowController(loadWindow(*system.interface));
    system.application.setDelegate(*delegate);
    system.interface->start(system.application, *delegate);
    const int status = system.application.run();
    system.preferences.finishWriting(2s);
    system.fileChanges.removeLeftovers();
    system.surroundings.processInfo.removeEmptyTemporaryFolder();
    // Ends at once, whatever the other threads are doing, and without taking anything from under them.
    std::_Exit(status);
}
