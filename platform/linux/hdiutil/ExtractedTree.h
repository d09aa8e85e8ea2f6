#pragma once

#include "Interruption.h"

#include <cstddef>
#include <string>
#include <sys/stat.h>

namespace hdiutil {

// Turns what 7-Zip wrote into what is on the volume. Throws Failure for what cannot be told from the volume's own.
class ExtractedTree {
public:
    // linkPrefix stands before every absolute link target, as a path without a slash at its end.
    ExtractedTree(std::string linkPrefix, Interruption& interruption);

    // Gives the links below an open folder their own targets and takes set-id and sticky bits away.
    void mend(int folder);

    // Removes a volume's own bookkeeping from the root of an HFS+ volume. Throws Failure if it shows that files are
    // hard links: those come out empty.
    static void removeHfsMetadata(int root);

    // What the mended folders hold.
    std::size_t fileCount() const { return _files; }
    std::size_t linkCount() const { return _links; }

private:
    // Whether the folder was changed.
    bool mendEntry(int folder, const std::string& name);
    bool mendLink(int folder, const std::string& name, const struct stat& status);

    std::string _linkPrefix;
    Interruption& _interruption;
    std::size_t _files = 0;
    std::size_t _links = 0;
};

} // namespace hdiutil
