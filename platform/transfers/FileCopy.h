#pragma once

#include "platform/transfers/DestinationFile.h"
#include "platform/transfers/DownloadMessages.h"

#include <cstdint>
#include <memory>
#include <string>

namespace platform::transfers {

// A download from a local file: a copy in pieces of about a millisecond, between which other transfers can have their
// turn. Used by one thread at a time; given up when destroyed before its end.
class FileCopy {
public:
    FileCopy(std::string url, SourceFile source, std::unique_ptr<DestinationFile> file, DownloadMessages messages);

    // Tells the delegate the length. Once, first.
    void begin();

    // Copies the next piece. False when the copy is over and the delegate has been told how it ended.
    bool copyPiece();

private:
    void finish();
    void fail(const TransferFailure& failure);

    std::string url_;
    SourceFile source_;
    std::unique_ptr<DestinationFile> file_;
    DownloadMessages messages_;
    std::uint64_t copied_ = 0;
};

} // namespace platform::transfers
