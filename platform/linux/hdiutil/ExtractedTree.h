#pragma once

#include "platform/linux/hdiutil/Interruption.h"
#include "platform/posix/TreeWalk.h"

#include <cstddef>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace hdiutil {

// Turns what 7-Zip wrote into what is on the volume. What cannot be told from the volume's own is a failure.
// Failures are thrown, as Failure or FileFailure.
class ExtractedTree : private platform::FolderVisitor {
public:
    // linkPrefix stands before every absolute link target, as a path without a slash at its end.
    ExtractedTree(std::string linkPrefix, Interruption& interruption);

    // Gives the links below an open folder their own targets, as far as they can be told, and takes set-id and sticky
    // bits away.
    void mend(int folder);

    // Removes a volume's own bookkeeping from the root of an HFS+ volume. It is a failure if that shows that files
    // are hard links: those come out empty.
    static void removeHfsMetadata(int root);

    // Whether the mended folders hold a link at that path whose target has that length. The path is relative to the
    // folder that was mended first, with "_" for control characters.
    bool holdsLink(const std::string& path, std::size_t targetLength) const;

    // Puts a link in the place of whatever came out at that path, be it nothing.
    void putLink(int folder, const std::string& path, const std::string& target, std::optional<std::time_t> modified);

    // What the mended folders hold.
    std::size_t fileCount() const { return files_; }
    std::size_t linkCount() const { return links_; }

private:
    std::vector<std::string> enterFolder(platform::FolderCursor& at) override;
    platform::FileDescriptor openFolder(platform::FolderCursor& at, const std::string& name) override;
    void leaveFolder(platform::FolderCursor& /*parent*/, const std::string& /*name*/) override {}

    // Whether the link had to be written anew.
    bool mendLink(const platform::FolderCursor& at, const std::string& name, const struct stat& status);

    std::string linkPrefix_;
    Interruption& interruption_;
    std::size_t files_ = 0;
    std::size_t links_ = 0;
    // The lengths of the targets, by path. Two paths can look alike.
    std::multimap<std::string, std::size_t> targetLengths_;
};

} // namespace hdiutil
