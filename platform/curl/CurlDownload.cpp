#include "platform/curl/CurlDownload.h"

#include "platform/curl/FileCopyDownload.h"
#include "platform/curl/SourceURL.h"
#include "platform/curl/WebDownload.h"

#include <utility>

namespace platform::curl {

CurlDownload::CurlDownload(const std::shared_ptr<TransferContext>& context, foundation::URL url,
                           std::shared_ptr<DownloadDelegate> delegate)
    : context_(context), url_(std::move(url)),
      messages_(std::in_place, context->threads, std::move(delegate), context->settings.limits.progressInterval) {}

void CurlDownload::setDestination(const std::optional<std::string>& path, bool allowOverwrite) {
    const auto context = context_.lock();
    if (!context || !messages_)
        return;
    if (!path)
        return fail({URLErrorCode::cannotCreateFile, "The file could not be created: it has no name.", {}});
    begin(*context, *path, allowOverwrite);
}

void CurlDownload::requireDestination() {
    setDestination(std::nullopt, false);
}

void CurlDownload::begin(TransferContext& context, const std::string& path, bool allowOverwrite) {
    const SourceKind kind = kindOf(url_);
    if (kind == SourceKind::File)
        return beginCopy(context, path, allowOverwrite);
    if (kind == SourceKind::Unsupported)
        return fail({URLErrorCode::unsupportedURL, "Addresses of this kind are not supported.", {}});
    auto file = DestinationFile::create(path, allowOverwrite, nullptr);
    if (const auto* failure = std::get_if<TransferFailure>(&file))
        return fail(*failure);
    context.loop.add(std::make_unique<WebDownload>(url_.absoluteString(), context.settings,
                                                   std::get<std::unique_ptr<DestinationFile>>(std::move(file)),
                                                   std::move(*messages_)));
    messages_.reset();
}

void CurlDownload::beginCopy(TransferContext& context, const std::string& path, bool allowOverwrite) {
    const auto sourcePath = localPath(url_);
    if (!sourcePath)
        return fail({URLErrorCode::badURL, "The address is not that of a file of this machine.", {}});
    auto source = SourceFile::open(*sourcePath);
    if (const auto* failure = std::get_if<TransferFailure>(&source))
        return fail(*failure);
    auto file = DestinationFile::create(path, allowOverwrite, &std::get<SourceFile>(source));
    if (const auto* failure = std::get_if<TransferFailure>(&file))
        return fail(*failure);
    context.loop.add(std::make_unique<FileCopyDownload>(url_.absoluteString(), std::get<SourceFile>(std::move(source)),
                                                        std::get<std::unique_ptr<DestinationFile>>(std::move(file)),
                                                        std::move(*messages_)));
    messages_.reset();
}

void CurlDownload::fail(const TransferFailure& failure) {
    messages_->fail(errorOf(failure, url_.absoluteString()));
    messages_.reset();
}

} // namespace platform::curl
