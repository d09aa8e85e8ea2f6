#pragma once

#include "platform/posix/CopyWorkers.h"
#include "platform/posix/FileCopy.h"
#include "platform/posix/FileIdentity.h"
#include "platform/posix/ItemPlace.h"
#include "platform/posix/TreeWalk.h"

namespace platform {

// Copies an item with all below it. Links are copied as links and never entered; devices, FIFOs and sockets are never
// opened and make it fail, as does anything at the destination, or a destination inside the folder itself. Throws at
// the first failure, once what was made at the destination is removed again; what somebody else put in its place stays.
void copyItem(const ItemPlace& from, const ItemPlace& to);

// Copies the content of one folder to another, empty one. The caller's thread makes folders and links, other threads
// copy the files. The traits of folders are set at the very end, the deepest first: a folder may be read-only, and what
// is made in it changes its times.
class TreeCopy : private FolderVisitor {
public:
    TreeCopy(FolderCursor from, FolderCursor to);

    void run();

private:
    struct Folder {
        std::size_t depth = 0;
        std::string name;
        struct stat traits {};
    };

    std::vector<std::string> enterFolder(FolderCursor& at) override;
    FileDescriptor openFolder(FolderCursor& at, const std::string& name) override;
    void leaveFolder(FolderCursor& parent, const std::string& name) override;

    void submit(std::vector<std::string>& names);
    void applyFolderTraits();

    FolderCursor from_;
    FolderCursor to_;
    FileIdentity copyRoot_;
    // All folders of the copy, each before those in it.
    std::vector<Folder> folders_;
    CopyWorkers workers_;
};

} // namespace platform
