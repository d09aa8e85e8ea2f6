#include "platform/linux/hdiutil/Attach.h"

#include "platform/linux/hdiutil/DiskImage.h"
#include "platform/linux/hdiutil/ExtractedTree.h"
#include "platform/linux/hdiutil/Failure.h"
#include "platform/linux/hdiutil/MountPoint.h"
#include "platform/linux/hdiutil/SevenZip.h"
#include "platform/posix/FolderListing.h"

#include <climits>
#include <cstdio>

namespace hdiutil {
namespace {

const char* partitionType(FileSystem fileSystem) {
    switch (fileSystem) {
    case FileSystem::Hfs:
        return "Apple_HFS";
    case FileSystem::Apfs:
        return "Apple_APFS";
    case FileSystem::Iso9660:
        break;
    }
    return "Apple_ISO";
}

// 7-Zip ends well although it left out a link to "/", made a file of one with a long target, or tidied a target up,
// which always makes it shorter. These links are made anew from what the volume stores.
void restoreLinks(const SevenZip& sevenZip, const DiskImage& image, ExtractedTree& tree, int staging) {
    const Failure unreadable("the image holds a link whose target cannot be read");
    const std::vector<ListedLink> listed = sevenZip.links(image);
    std::vector<ListedLink> changed;
    std::vector<std::string> paths;
    std::size_t wanted = 0;
    for (const ListedLink& link : listed) {
        if (!link.length || tree.holdsLink(link.path, *link.length))
            continue;
        if (*link.length == 0)
            throw Failure("the image holds a link without a target");
        if (*link.length >= PATH_MAX)
            throw Failure("the image holds a link whose target is too long");
        changed.push_back(link);
        if (!link.target) {
            paths.push_back(link.path);
            wanted += *link.length;
        }
    }
    const std::string targets = paths.empty() ? std::string() : sevenZip.targets(image, paths);
    if (targets.size() != wanted || targets.find('\0') != std::string::npos)
        throw Failure(unreadable);
    std::size_t at = 0;
    for (const ListedLink& link : changed) {
        tree.putLink(staging, link.path, link.target ? *link.target : targets.substr(at, *link.length), link.modified);
        at += link.target ? 0 : *link.length;
    }
    if (listed.size() != tree.linkCount())
        throw Failure(unreadable);
}

// 7-Zip ends well although it left out one of two entries whose names came out alike.
void checkCompleteness(const Extraction& extraction, const ExtractedTree& tree) {
    const std::size_t all = tree.fileCount() + tree.linkCount();
    if (extraction.files && *extraction.files != all && *extraction.files != tree.fileCount())
        throw Failure("the image holds files that cannot be read");
}

// The content of an HFS+ volume comes below a folder with the volume's name. A colon within a name has become "_",
// which is tolerable: names on such volumes do without, because the character separates folders in their older
// notation.
platform::FileDescriptor openVolume(int staging, FileSystem fileSystem) {
    const auto entries = platform::entriesOf(staging, platform::FileAccess::Reading, "the volume");
    if (fileSystem == FileSystem::Hfs && entries.size() != 1)
        throw Failure("the image does not hold exactly one volume");
    auto volume = platform::openFolderIn(staging, fileSystem == FileSystem::Hfs ? entries.front().name : ".");
    if (!volume.isOpen())
        throw systemFailure("could not open the volume");
    return volume;
}

FileSystem fill(MountPoint& mountPoint, const DiskImage& image, Interruption& interruption) {
    const SevenZip sevenZip(interruption);
    const platform::FileDescriptor folder = mountPoint.claim();
    const int staging = folder.get();
    const Extraction extraction = sevenZip.extract(image, staging);
    ExtractedTree tree(SevenZip::linkPrefix, interruption);
    tree.mend(staging);
    restoreLinks(sevenZip, image, tree, staging);
    checkCompleteness(extraction, tree);

    const platform::FileDescriptor volume = openVolume(staging, extraction.fileSystem);
    if (extraction.fileSystem == FileSystem::Hfs)
        ExtractedTree::removeHfsMetadata(volume.get());
    mountPoint.publish(volume.get());
    mountPoint.mark();
    interruption.check();
    return extraction.fileSystem;
}

// The reason, with a note if something stayed behind.
Failure undone(MountPoint& mountPoint, const Interruption& interruption, const std::string& reason) {
    const bool isEmpty = mountPoint.restore();
    if (interruption.isParentGone())
        mountPoint.removeIfEmpty();
    return Failure(isEmpty ? reason : reason + "; the mount point is not empty");
}

} // namespace

void attach(const std::string& imagePath, const std::string& path) {
    Interruption interruption;
    MountPoint mountPoint(path);
    try {
        const DiskImage image(imagePath);
        const char* type = partitionType(fill(mountPoint, image, interruption));
        std::printf("%s\t%s\t%s\n", imagePath.c_str(), type, mountPoint.resolvedPath().c_str());
    } catch (...) {
        throw undone(mountPoint, interruption, currentReason());
    }
}

} // namespace hdiutil
