#pragma once

#include "DiskImage.h"
#include "Interruption.h"

#include <cstddef>
#include <optional>
#include <string>

namespace hdiutil {

enum class FileSystem { Hfs, Apfs, Iso9660 };

// What 7-Zip says it took out of an image.
struct Extraction {
    FileSystem fileSystem;
    std::optional<std::size_t> files; // with or without the links, which differs between file systems
};

// The installed 7-Zip that reads the images.
class SevenZip {
public:
    // Takes the first one that is new enough: beside this program, in the system's folders, along PATH. Throws Failure
    // if there is none. The interruption must outlive this object.
    explicit SevenZip(Interruption& interruption);

    // Takes the volume of an image out into an empty folder. Absolute link targets come out with linkPrefix before
    // them. Throws Failure unless the one volume was opened and read to its end.
    Extraction extract(const DiskImage& image, int folder) const;

    // Counts the links in an image by its directory alone. Throws Failure if it holds devices, pipes or sockets.
    std::size_t countLinks(const DiskImage& image) const;

    static constexpr const char* linkPrefix = "/proc/self/cwd";

private:
    std::string _path;
    Interruption& _interruption;
};

} // namespace hdiutil
