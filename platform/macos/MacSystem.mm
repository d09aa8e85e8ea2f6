#include "platform/System.h"

#include "platform/cocoa/CocoaApplication.h"
#include "platform/cocoa/CocoaBundles.h"
#include "platform/cocoa/CocoaConsole.h"
#include "platform/cocoa/CocoaLocale.h"
#include "platform/cocoa/CocoaMainInterface.h"
#include "platform/cocoa/CocoaPreferences.h"
#include "platform/cocoa/CocoaProcessInfo.h"
#include "platform/cocoa/CocoaThreads.h"
#include "platform/cocoa/CocoaTransfers.h"
#include "platform/cocoa/CocoaWorkspace.h"
#include "platform/macos/MacAuthorization.h"
#include "platform/macos/MacDiskImages.h"
#include "platform/macos/QuitSignals.h"
#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "platform/posix/PosixTasks.h"

#include <cstdlib>
#include <optional>

namespace platform {

namespace {

// Members are made from those above them.
class MacSystem final : public System {
public:
    explicit MacSystem(const std::vector<std::string>& arguments)
        : processInfo_(arguments, informationText(bundles_, "TXPlatformRoot").value_or("")) {}

    Platform services() override {
        return {&threads_,     &tasks_,     &fileQueries_,   &fileChanges_, &transfers_,
                &diskImages_,  &workspace_, &authorization_, &bundles_,     &preferences_,
                &processInfo_, &locale_,    &console_,       &application_, &interface_.alerts()};
    }

    MainInterface& interface() override { return interface_; }

    int run(ApplicationDelegate& delegate) override {
        @autoreleasepool {
            quitSignals_.emplace([this] { threads_.performOnMain([this] { application_.terminate(); }); });
            interface_.start(application_, delegate);
            application_.run(delegate, [this] { end(EXIT_SUCCESS); });
        }
        return EXIT_FAILURE;
    }

    [[noreturn]] void end(int status) override {
        application_.awaitEnd();
        fileChanges_.removeLeftovers();
        std::_Exit(status);
    }

private:
    // Makes the application object that all windows and menus need.
    CocoaApplication application_;
    CocoaThreads threads_;
    CocoaBundles bundles_;
    CocoaLocale locale_;
    CocoaProcessInfo processInfo_;
    CocoaConsole console_;
    CocoaMainInterface interface_{bundles_};
    PosixTasks tasks_;
    PosixFileQueries fileQueries_;
    PosixFileChanges fileChanges_{
        {processInfo_.homeDirectory(), processInfo_.systemPath("/Applications"), processInfo_.temporaryDirectory()}};
    CocoaTransfers transfers_{threads_};
    MacDiskImages diskImages_;
    CocoaWorkspace workspace_{fileChanges_};
    MacAuthorization authorization_;
    CocoaPreferences preferences_;
    std::optional<QuitSignals> quitSignals_;
};

} // namespace

std::unique_ptr<System> makeSystem(const std::vector<std::string>& arguments) {
    @autoreleasepool {
        return std::make_unique<MacSystem>(arguments);
    }
}

} // namespace platform
