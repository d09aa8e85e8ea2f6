#pragma once

#include "platform/Bundles.h"
#include "platform/Files.h"
#include "platform/Tasks.h"
#include "platform/Workspace.h"

#include <functional>

namespace platform {

// What a Linux desktop does for programs.
class LinuxWorkspace : public Workspace {
public:
    // Asks the file manager to show the item with that "file" URL; whether it did.
    using ShowItem = std::function<bool(const std::string& uri)>;

    // The services are borrowed for the object's life. Any thread calls showItem.
    LinuxWorkspace(Bundles& bundles, Tasks& tasks, FileChanges& fileChanges, ShowItem showItem);

    bool openURL(const foundation::URL& url) override;
    bool launchApplication(const std::string& path) override;
    bool selectFile(const std::string& path, const std::string& root) override;
    bool destroyFiles(const std::string& folder, const std::vector<std::string>& names) override;
    std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) override;
    void terminate(const RunningApplication& application) override;

private:
    Bundles& bundles_;
    Tasks& tasks_;
    FileChanges& fileChanges_;
    const ShowItem showItem_;
};

} // namespace platform
