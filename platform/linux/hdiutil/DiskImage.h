#pragma once

#include "platform/posix/FileDescriptor.h"

#include <string>

namespace hdiutil {

// A disk image, open for reading.
class DiskImage {
public:
    // Opens a file that begins or ends like a disk image. Throws Failure with the reason for anything else; never waits
    // for the other end of a pipe.
    explicit DiskImage(const std::string& path);

    // The open file; it belongs to this object.
    int descriptor() const { return file_.get(); }

    // Whether the contents are packed and described by a trailer, rather than the plain blocks of a disk or volume.
    bool isPacked() const { return isPacked_; }

private:
    std::string bytesAt(off_t offset, std::size_t count) const;
    bool isEncrypted(off_t size) const;
    bool holdsPlainBlocks() const;

    platform::FileDescriptor file_;
    bool isPacked_ = false;
};

} // namespace hdiutil
