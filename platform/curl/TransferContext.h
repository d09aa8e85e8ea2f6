#pragma once

#include "platform/Threads.h"
#include "platform/curl/EasyHandle.h"
#include "platform/curl/TransferLoop.h"

#include <memory>

namespace platform::curl {

// What all transfers of one object share. The loop comes last, so that it ends first.
struct TransferContext {
    Threads& threads;
    WebSettings settings;
    // Set to keep all this for ever.
    std::shared_ptr<TransferContext> self;
    TransferLoop loop;
};

} // namespace platform::curl
