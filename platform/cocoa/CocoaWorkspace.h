#pragma once

#include "platform/Files.h"
#include "platform/Workspace.h"

namespace platform {

// What the Mac's desktop does for programs. The state of running applications follows the main run loop, so the main
// thread must not wait for a thread that waits for one to quit.
class CocoaWorkspace : public Workspace {
public:
    // Borrowed for the object's life.
    explicit CocoaWorkspace(FileChanges& fileChanges) : fileChanges_(fileChanges) {}

    bool openURL(const foundation::URL& url) override;
    bool launchApplication(const std::string& path) override;
    bool selectFile(const std::string& path, const std::string& root) override;
    bool destroyFiles(const std::string& folder, const std::vector<std::string>& names) override;
    std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) override;
    void terminate(const RunningApplication& application) override;

private:
    FileChanges& fileChanges_;
};

} // namespace platform
