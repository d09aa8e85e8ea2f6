#pragma once

#include "platform/cocoa/SessionLoader.h"
#include "platform/transfers/LoaderTransfers.h"

namespace platform {

// Web transfers by the system.
class CocoaTransfers final : public transfers::LoaderTransfers {
public:
    explicit CocoaTransfers(Threads& threads, const transfers::TransferLimits& limits = {})
        : LoaderTransfers(threads, limits, std::make_shared<SessionLoader>(limits)) {}
};

} // namespace platform
