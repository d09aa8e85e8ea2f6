#include "platform/linux/hdiutil/DiskImage.h"

#include "platform/linux/hdiutil/Failure.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace hdiutil {
namespace {

constexpr off_t trailerSize = 512;

struct Signature {
    off_t offset;
    std::string_view bytes;
};

// What a file of plain blocks begins with: a partition map, or a volume of one of the readable kinds.
constexpr std::array<Signature, 7> plainSignatures = {{
    {0, "ER"},
    {512, "PM"},
    {512, "EFI PART"},
    {1024, "H+"},
    {1024, "HX"},
    {32, "NXSB"},
    {32769, "CD001"},
}};

} // namespace

DiskImage::DiskImage(const std::string& path) : file_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    struct stat status {};
    if (!file_.isOpen() || ::fstat(file_.get(), &status) != 0)
        throw systemFailure("could not open the image " + path);
    if (!S_ISREG(status.st_mode))
        throw Failure("the image is not a file");
    if (status.st_size == 0)
        throw Failure("the image is empty");
    if (isEncrypted(status.st_size))
        throw Failure("the image is encrypted");
    isPacked_ = status.st_size >= trailerSize && bytesAt(status.st_size - trailerSize, 4) == "koly";
    if (!isPacked_ && !holdsPlainBlocks())
        throw Failure("the file is not a disk image, or its end is missing");
}

std::string DiskImage::bytesAt(off_t offset, std::size_t count) const {
    std::string bytes(count, '\0');
    const ssize_t length = offset < 0 ? -1 : ::pread(file_.get(), bytes.data(), count, offset);
    bytes.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return bytes;
}

bool DiskImage::isEncrypted(off_t size) const {
    return bytesAt(0, 8) == "encrcdsa" || bytesAt(size - 8, 8) == "cdsaencr";
}

bool DiskImage::holdsPlainBlocks() const {
    return std::any_of(
        plainSignatures.begin(), plainSignatures.end(),
        [this](const Signature& signature) {
            return bytesAt(signature.offset, signature.bytes.size()) == signature.bytes;
        });
}

} // namespace hdiutil
