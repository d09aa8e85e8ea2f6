#include "app/TXAppDelegate.h"
#include "check/TXCheckController.h"
#include "download/TXDownloadController.h"
#include "install/TXInstallController.h"
#include "platform/System.h"
#include "ui/TXInstallWindowController.h"

// What the program is made of: a system, the flow with its three stages, and the window.
int main(int argc, char** argv) {
    platform::System& system = *platform::makeSystem({argv, argv + argc}).release();
    platform::current() = system.services();
    const auto flow = std::make_shared<TXAppDelegate>(
        TXStageFactory{[](auto delegate) { return std::make_shared<TXCheckController>(std::move(delegate)); },
                       [](auto delegate) { return std::make_shared<TXDownloadController>(std::move(delegate)); },
                       [](auto delegate) { return std::make_shared<TXInstallController>(std::move(delegate)); }});
    flow->setWindowController(TXInstallWindowController::load(system.interface()));
    system.end(system.run(*flow));
}
