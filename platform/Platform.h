#pragma once

#include "platform/Application.h"
#include "platform/Authorization.h"
#include "platform/Bundles.h"
#include "platform/DiskImages.h"
#include "platform/Files.h"
#include "platform/Preferences.h"
#include "platform/ProcessInfo.h"
#include "platform/SingleInstance.h"
#include "platform/Tasks.h"
#include "platform/Threads.h"
#include "platform/Transfers.h"
#include "platform/UserInterface.h"
#include "platform/Workspace.h"

namespace platform {

// The services of the system the program runs on. All are borrowed: whoever sets the value keeps them alive for as long
// as any thread of the program runs.
struct Platform {
    Threads* threads = nullptr;
    Tasks* tasks = nullptr;
    FileQueries* fileQueries = nullptr;
    FileChanges* fileChanges = nullptr;
    Transfers* transfers = nullptr;
    DiskImages* diskImages = nullptr;
    Workspace* workspace = nullptr;
    Authorization* authorization = nullptr;
    Bundles* bundles = nullptr;
    Preferences* preferences = nullptr;
    ProcessInfo* processInfo = nullptr;
    Locale* locale = nullptr;
    Console* console = nullptr;
    Application* application = nullptr;
    Alerts* alerts = nullptr;
    SingleInstance* singleInstance = nullptr; // null where the system itself keeps a second start from happening
};

// The process-wide value. main sets it before anything asks for a service; a test sets one for its own duration.
inline Platform& current() {
    static Platform platform;
    return platform;
}

} // namespace platform
