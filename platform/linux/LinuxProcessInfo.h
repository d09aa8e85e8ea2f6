#pragma once

#include "platform/ProcessInfo.h"

#include <mutex>

namespace platform {

// Process facts on Linux.
class LinuxProcessInfo : public ProcessInfo {
public:
    // The command line as it was before anything else looked at it. The root is a folder that takes the place of "/" in
    // systemPath(); "/" and "" change nothing.
    LinuxProcessInfo(std::vector<std::string> arguments, std::string root);

    std::vector<std::string> arguments() override { return arguments_; }
    OperatingSystemVersion operatingSystemVersion() override;
    std::string globallyUniqueString() override;
    std::optional<std::string> makeUUID() override;
    std::string temporaryDirectory() override;
    std::string homeDirectory() override;
    std::string systemPath(const std::string& path) override;
    double secondsSinceReferenceDate() override;

    // Removes the folder that temporaryDirectory() made in a shared one, and the one that libraries made because the
    // session has none for sockets, if nothing is in them any more.
    void removeEmptyTemporaryFolder();

private:
    const std::vector<std::string> arguments_;
    const std::string root_;
    const std::string socketFolder_;
    std::mutex mutex_;
    std::string temporaryFolder_;
    bool temporaryFolderIsOwn_ = false;
};

} // namespace platform
