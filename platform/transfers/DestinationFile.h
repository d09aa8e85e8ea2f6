#pragma once

#include "platform/transfers/SourceFile.h"

#include <memory>
#include <string_view>
#include <vector>

namespace platform::transfers {

// The file that a download writes, readable by its user alone. Unless kept, it is removed with this object; a file that
// another has put in its place stays.
class DestinationFile {
public:
    // Makes the file. Its folder must exist. What is there already is replaced when that is allowed and it is a regular
    // file of this user, other than the source; anything else is refused.
    static foundation::Result<std::unique_ptr<DestinationFile>, TransferFailure>
    create(const std::string& path, bool allowOverwrite, const SourceFile* source);

    ~DestinationFile();
    DestinationFile(const DestinationFile&) = delete;
    DestinationFile& operator=(const DestinationFile&) = delete;

    std::optional<TransferFailure> write(std::string_view bytes);

    // Copies a further piece of the source, of at most that length. How many bytes; 0 at its end.
    foundation::Result<std::uint64_t, TransferFailure> copyFrom(const SourceFile& source, std::size_t length);

    // Ends the writing; the file stays when that succeeds.
    std::optional<TransferFailure> keep();

private:
    DestinationFile(FileDescriptor folder, std::string name, FileDescriptor file)
        : folder_(std::move(folder)), name_(std::move(name)), file_(std::move(file)) {}
    void remove() const;

    FileDescriptor folder_;
    std::string name_;
    FileDescriptor file_;
    bool kept_ = false;
    bool copiesInKernel_ = true;
    std::vector<char> buffer_;
};

} // namespace platform::transfers
