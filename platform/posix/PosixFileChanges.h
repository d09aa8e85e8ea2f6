#pragma once

#include "platform/Files.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileIdentity.h"
#include "platform/posix/FolderCreation.h"
#include "platform/posix/ItemPlace.h"
#include "platform/posix/ProtectedFolders.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

// Absolute paths that a removal of private folders must never reach. An empty one means none.
struct ProtectedPaths {
    std::string home;
    std::string applications;
    std::string temporaryRoot;
};

// Changes to files by descriptor, never through a link below the given paths.
class PosixFileChanges : public FileChanges {
public:
    // A removal of a private folder that takes longer than `patience` is brought to its end by removeLeftovers: until
    // then the rest bears another name that the next run knows for one of ours.
    explicit PosixFileChanges(ProtectedPaths paths, std::chrono::milliseconds patience = std::chrono::milliseconds(50));

    bool createDirectory(const std::string& path, ErrorOut error = nullptr) override;
    bool copyItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) override;
    bool moveItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) override;
    bool removeItem(const std::string& path, ErrorOut error = nullptr) override;
    bool removePrivateFolder(const std::string& path) override;
    int removeExtendedAttribute(const std::string& path, const char* name, int options) override;

    // Removes the folders that createDirectory made below the temporary root and that are still there, with their
    // content; from then on none can be made. For the end of the program: threads and tools may still be at work in
    // them, so it tries for about half a second. Folders with a path in use are left alone: what works there goes on
    // after the end. Whether none of the others is left.
    bool removeLeftovers(const std::vector<std::string>& inUse = {});

private:
    void remember(const MadeFolder& folder);
    void forget(const std::string& path);
    bool removeLeftover(const MadeFolder& folder) const;
    bool layAside(const ItemPlace& place);

    std::string temporaryRoot_;
    std::chrono::milliseconds patience_;
    ProtectedFolders protected_;
    // Held while folders are made, so that none appears behind the back of the last removal.
    std::mutex creation_;
    bool ended_ = false;
    std::mutex mutex_;
    struct Leftover {
        MadeFolder folder;
        FileDescriptor kept;
    };
    std::vector<Leftover> leftovers_;
};

} // namespace platform
