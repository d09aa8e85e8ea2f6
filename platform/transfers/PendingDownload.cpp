#include "platform/transfers/PendingDownload.h"

#include "platform/transfers/DownloadSink.h"
#include "platform/transfers/SourceURL.h"

#include <utility>

namespace platform::transfers {

void PendingDownload::setDestination(const std::optional<std::string>& path, bool allowOverwrite) {
    const auto loader = loader_.lock();
    if (!loader || !messages_)
        return;
    const auto failure =
        path ? begin(*loader, *path, allowOverwrite)
             : TransferFailure{URLErrorCode::cannotCreateFile, "The file could not be created: it has no name.", {}};
    if (failure)
        messages_->fail(errorOf(*failure, url_.absoluteString()));
    messages_.reset();
}

std::optional<TransferFailure> PendingDownload::begin(Loader& loader, const std::string& path, bool allowOverwrite) {
    if (!loader.start())
        return startFailure();
    if (isFileURL(url_))
        return beginCopy(loader, path, allowOverwrite);
    if (auto failure = webURLFailure(url_))
        return failure;
    auto file = DestinationFile::create(path, allowOverwrite, nullptr);
    if (!file)
        return file.error();
    loader.load({RequestKind::Download, url_, {}, {}, {}},
                std::make_unique<DownloadSink>(*std::move(file), std::move(*messages_)));
    return std::nullopt;
}

std::optional<TransferFailure> PendingDownload::beginCopy(Loader& loader, const std::string& path,
                                                          bool allowOverwrite) {
    const auto sourcePath = localPath(url_);
    if (!sourcePath)
        return TransferFailure{URLErrorCode::badURL, "The address is not that of a file of this machine.", {}};
    auto source = SourceFile::open(*sourcePath);
    if (!source)
        return source.error();
    auto file = DestinationFile::create(path, allowOverwrite, &*source);
    if (!file)
        return file.error();
    loader.copy(
        std::make_unique<FileCopy>(url_.absoluteString(), *std::move(source), *std::move(file), std::move(*messages_)));
    return std::nullopt;
}

} // namespace platform::transfers
