#pragma once

#include "platform/linux/hdiutil/DiskImage.h"
#include "platform/linux/hdiutil/Interruption.h"
#include "platform/linux/hdiutil/Program.h"

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace hdiutil {

enum class FileSystem { Hfs, Apfs, Iso9660 };

// What 7-Zip says it took out of an image.
struct Extraction {
    FileSystem fileSystem;
    std::optional<std::size_t> files; // with or without the links, which differs between file systems
};

// A link as the image's own directory has it.
struct ListedLink {
    std::string path;                  // with "_" for control characters
    std::optional<std::size_t> length; // of the target, where it is known
    std::optional<std::string> target; // where the directory itself holds it; with "_" for control characters
    std::optional<std::time_t> modified;
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

    // The links that the image's own directory lists. Throws Failure if it lists devices, pipes or sockets.
    std::vector<ListedLink> links(const DiskImage& image) const;

    // The targets of those links, one after the other as the volume stores them and lists the links. A path that is not
    // there adds nothing.
    std::string targets(const DiskImage& image, const std::vector<std::string>& paths) const;

    static constexpr const char* linkPrefix = "/proc/self/cwd";

private:
    ProgramResult runOn(const DiskImage& image, std::vector<std::string> arguments) const;

    std::string path_;
    Interruption& interruption_;
};

} // namespace hdiutil
