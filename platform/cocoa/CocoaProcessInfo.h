#pragma once

#include "platform/ProcessInfo.h"

namespace platform {

// Process facts from Foundation.
class CocoaProcessInfo : public ProcessInfo {
public:
    // The command line as it was before anything else looked at it. The root is a folder that takes the place of "/" in
    // systemPath(); "/" and "" change nothing.
    CocoaProcessInfo(std::vector<std::string> arguments, std::string root);

    std::vector<std::string> arguments() override { return arguments_; }
    OperatingSystemVersion operatingSystemVersion() override;
    std::string globallyUniqueString() override;
    std::optional<std::string> makeUUID() override;
    std::string temporaryDirectory() override;
    std::string homeDirectory() override;
    std::string systemPath(const std::string& path) override;
    double secondsSinceReferenceDate() override;

private:
    const std::vector<std::string> arguments_;
    const std::string root_;
};

} // namespace platform
