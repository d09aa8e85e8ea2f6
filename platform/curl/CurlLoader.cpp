#include "platform/curl/CurlLoader.h"

#include "platform/curl/FileCopyTransfer.h"
#include "platform/curl/WebTransfer.h"

#include <utility>

namespace platform::curl {

void CurlLoader::load(transfers::WebRequest request, std::unique_ptr<transfers::Sink> sink) {
    loop_.add(std::make_unique<WebTransfer>(std::move(request), settings_, std::move(sink)));
}

void CurlLoader::copy(std::unique_ptr<transfers::FileCopy> copy) {
    loop_.add(std::make_unique<FileCopyTransfer>(std::move(copy)));
}

} // namespace platform::curl
