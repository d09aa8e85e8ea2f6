#pragma once

#include "Interruption.h"

#include <cstddef>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace hdiutil {

// Turns what 7-Zip wrote into what is on the volume. Throws Failure for what cannot be told from the volume's own.
class ExtractedTree {
public:
    // linkPrefix stands before every absolute link target, as a path without a slash at its end.
    ExtractedTree(std::string linkPrefix, Interruption& interruption);

    // Gives the links below an open folder their own targets, as far as they can be told, and takes set-id and sticky
    // bits away. `path` is where the folder lies in the volume, with a slash at its end unless it is the top.
    void mend(int folder, const std::string& path = {});

    // Removes a volume's own bookkeeping from the root of an HFS+ volume. Throws Failure if it shows that files are
    // hard links: those come out empty.
    static void removeHfsMetadata(int root);

    // Whether the mended folders hold a link at that path whose target has that length. The path is relative to the
    // folder that was mended first, with "_" for control characters.
    bool holdsLink(const std::string& path, std::size_t targetLength) const;

    // Puts a link in the place of whatever came out at that path, be it nothing.
    void putLink(int folder, const std::string& path, const std::string& target, std::optional<std::time_t> modified);

    // What the mended folders hold.
    std::size_t fileCount() const { return _files; }
    std::size_t linkCount() const { return _links; }

private:
    // Whether the folder was changed.
    bool mendEntry(int folder, const std::string& path, const std::string& name);
    bool mendLink(int folder, const std::string& path, const std::string& name, const struct stat& status);

    std::string _linkPrefix;
    Interruption& _interruption;
    std::size_t _files = 0;
    std::size_t _links = 0;
    // The lengths of the targets, by path. Two paths can look alike.
    std::multimap<std::string, std::size_t> _targetLengths;
};

} // namespace hdiutil
