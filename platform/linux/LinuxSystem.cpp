#include "platform/System.h"

#include "platform/console/ConsoleInterface.h"
#include "platform/curl/CurlTransfers.h"
#include "platform/linux/LinuxAuthorization.h"
#include "platform/linux/LinuxDiskImages.h"
#include "platform/linux/LinuxLocale.h"
#include "platform/linux/LinuxProcessInfo.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/ProcessTable.h"
#include "platform/linux/StandardErrorConsole.h"
#include "platform/linux/Terminal.h"
#include "platform/linux/TerminalOutput.h"
#include "platform/posix/ForsakenFolders.h"
#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "platform/posix/PosixTasks.h"
#include "platform/posix/ProcessStart.h"
#include "platform/qt/LostDisplay.h"
#include "platform/qt/QtInterface.h"
#include "platform/qt/ScreenReaderBus.h"
#include "platform/qt/ScriptFonts.h"
#include "platform/qt/UsableDisplay.h"
#include "platform/qtcore/FileManager.h"
#include "platform/qtcore/QtApplication.h"
#include "platform/qtcore/QtBundles.h"
#include "platform/qtcore/QtPreferences.h"
#include "platform/qtcore/QtThreads.h"
#include "platform/qtcore/SessionBus.h"
#include "platform/qtcore/SocketClaim.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <system_error>

#include <unistd.h>

namespace platform {

namespace {

using namespace std::chrono_literals;

// A bus is as good as dead to a person who has waited for it that long.
constexpr auto busPatience = 1s;

// The window where one can be shown. Help, and that an installer is running already, are printed on the console, for
// which no window is needed.
std::unique_ptr<MainInterface> makeMainInterface(QtBundles& bundles, ProcessInfo& process, Console& console) {
    if (!SessionBus::isUsable(busPatience))
        console.log("The session's message bus does not answer; going on without it.");
    const std::vector<std::string> words = process.arguments();
    const bool isForConsole = std::find(words.begin(), words.end(), "--help") != words.end() ||
                              SocketClaim::isHeld(process.systemPath("/Applications"));
    const UsableDisplay display = isForConsole ? UsableDisplay() : UsableDisplay::find();
    if (!display.problem.empty())
        console.log("No window, as " + display.problem + "; going on in the terminal.");
    if (!display.exists) {
        // Most languages would come out as question marks.
        if (terminal::isPlain(STDOUT_FILENO))
            bundles.offerOnly([](const std::string& language) { return language == "en"; });
        return makeConsoleInterface();
    }
    if (!ScreenReaderBus::isUsable(busPatience))
        console.log("The message bus of screen readers does not answer; going on without it.");
    bundles.offerOnly(&ScriptFonts::canShow);
    return makeQtInterface({bundles.localization(), informationText(bundles, "CFBundleIdentifier").value_or(""),
                            informationText(bundles, "CFBundleName").value_or(""), display.plugIns});
}

void sayWhyNot(Console& console, const std::string& problem) {
    console.log("The program cannot run here: " + problem + ".");
}

// Members are made from those above them.
class LinuxSystem final : public System {
public:
    explicit LinuxSystem(const std::vector<std::string>& arguments)
        : processInfo_(arguments, informationText(bundles_, "TXPlatformRoot").value_or("")),
          console_(arguments.empty() ? std::string() : arguments.front()) {}

    Platform services() override {
        return {&threads_,   &tasks_,       &fileQueries_,         &fileChanges_,
                &transfers_, &diskImages_,  &workspace_,           &authorization_,
                &bundles_,   &preferences_, &processInfo_,         &locale_,
                &console_,   &application_, &interface_->alerts(), &singleInstance_};
    }

    MainInterface& interface() override { return *interface_; }

    int run(ApplicationDelegate& delegate) override {
        LostDisplay::setHandler([this] {
            console_.log("The connection to the display is lost.");
            end(EXIT_FAILURE);
        });
        threads_.performInBackground(
            [root = processInfo_.temporaryDirectory()] { removeForsakenFolders(root, &isNamedByAProcess); });
        application_.setDelegate(delegate);
        try {
            interface_->start(application_, delegate);
        } catch (const std::system_error& error) {
            sayWhyNot(console_, error.what());
            end(EXIT_FAILURE);
        }
        return application_.run();
    }

    [[noreturn]] void end(int status) override {
        application_.awaitEnd();
        fileChanges_.removeLeftovers(authorization_.pathsInUse());
        processInfo_.removeEmptyTemporaryFolder();
        TerminalOutput::shared().flush(500ms);
        std::_Exit(status);
    }

private:
    LinuxLocale locale_;
    QtBundles bundles_{locale_.preferredLanguages()};
    LinuxProcessInfo processInfo_;
    StandardErrorConsole console_;
    // Brings the Qt application object that the application and the threads need.
    std::unique_ptr<MainInterface> interface_ = makeMainInterface(bundles_, processInfo_, console_);
    QtApplication application_;
    QtThreads threads_;
    PosixTasks tasks_;
    PosixFileQueries fileQueries_;
    PosixFileChanges fileChanges_{
        {processInfo_.homeDirectory(), processInfo_.systemPath("/Applications"), processInfo_.temporaryDirectory()}};
    CurlTransfers transfers_{threads_};
    LinuxDiskImages diskImages_{bundles_};
    LinuxWorkspace workspace_{bundles_, tasks_, fileChanges_, &showInFileManager};
    LinuxAuthorization authorization_;
    SocketClaim singleInstance_;
    QtPreferences preferences_{QtPreferences::userConfigurationFolder(processInfo_.homeDirectory())};
};

} // namespace

std::unique_ptr<System> makeSystem(const std::vector<std::string>& arguments) {
    auto problem = prepareProcess();
    try {
        if (!problem)
            return std::make_unique<LinuxSystem>(arguments);
    } catch (const std::system_error& error) {
        problem = error.what();
    }
    StandardErrorConsole console(arguments.empty() ? std::string() : arguments.front());
    sayWhyNot(console, *problem);
    std::_Exit(EXIT_FAILURE);
}

} // namespace platform
