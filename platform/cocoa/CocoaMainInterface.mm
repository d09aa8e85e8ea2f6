#include "platform/cocoa/CocoaMainInterface.h"

#include "platform/cocoa/MainMenu.h"

namespace platform {

CocoaMainInterface::CocoaMainInterface(Bundles& bundles) : bundles_(bundles) {
    window_.progressIndicator().setObserver([this](std::optional<double> share) { dock_.setProgress(share); });
}

void CocoaMainInterface::start(Application& application, ApplicationDelegate& delegate) {
    const auto quit = [&application] { application.terminate(); };
    installMainMenu(bundles_, quit, [&delegate] { delegate.showHelp(); });
    window_.setCloseAction(quit);
    window_.showCentred();
}

} // namespace platform
