#pragma once

#include "platform/Files.h"

namespace platform {

// Questions about files, answered by the system at the time of the call.
class PosixFileQueries : public FileQueries {
public:
    bool fileExists(const std::string& path) override;
    bool isReadableFile(const std::string& path) override;
    bool isWritableFile(const std::string& path) override;
    std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) override;
    std::vector<std::string> entriesBelow(const std::string& path) override;
    std::optional<FileAttributes> attributesOfItem(const std::string& path) override;
    std::optional<FileOwner> ownerOfItem(const std::string& path) override;
    std::optional<ItemIdentity> identityOfItem(const std::string& path) override;
};

} // namespace platform
