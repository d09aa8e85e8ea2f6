#pragma once

#include "platform/curl/EasyHandle.h"
#include "platform/curl/TransferLoop.h"
#include "platform/transfers/Loader.h"

#include <memory>

namespace platform::curl {

// Loads by libcurl, everything on one thread.
class CurlLoader final : public transfers::Loader {
public:
    explicit CurlLoader(const transfers::TransferLimits& limits)
        : settings_{limits, TrustedCertificates::ofSystemAndEnvironment()} {}

    bool start() override { return loop_.start(); }
    void load(transfers::WebRequest request, std::unique_ptr<transfers::Sink> sink) override;
    void copy(std::unique_ptr<transfers::FileCopy> copy) override;

private:
    const WebSettings settings_;
    // Comes last, so that it ends first.
    TransferLoop loop_;
};

} // namespace platform::curl
