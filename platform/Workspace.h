#pragma once

#include "foundation/URL.h"

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// A running program of this user. The start time tells it from a later process with the same number.
struct RunningApplication {
    int processId = 0;
    std::uint64_t startTime = 0;
};

// What the desktop does for programs. Every operation may be called from any thread.
class Workspace {
public:
    virtual ~Workspace() = default;

    // Opens the URL with the person's own program for it. Whether one was started.
    virtual bool openURL(const foundation::URL& url) = 0;

    // Starts the application bundle at the path, or is content when it runs already. False when it cannot be started.
    virtual bool launchApplication(const std::string& path) = 0;

    // Shows the item in the file browser; an empty root means a window of the browser's choice. Whether it was shown.
    virtual bool selectFile(const std::string& path, const std::string& root) = 0;

    // Deletes the named items of the folder at once. True only if all are gone and each was there.
    virtual bool destroyFiles(const std::string& folder, const std::vector<std::string>& names) = 0;

    // This user's running copies of the application with that bundle identifier, this process left out.
    virtual std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) = 0;

    // Asks the program to quit and gives it a few milliseconds to do so. It may refuse.
    virtual void terminate(const RunningApplication& application) = 0;
};

} // namespace platform
