#pragma once

#include "platform/cocoa/Retained.h"
#include "platform/cocoa/SessionDelegate.h"
#include "platform/transfers/Loader.h"
#include "platform/transfers/TransferLimits.h"

#import <Foundation/Foundation.h>

#include <memory>

namespace platform {

// Loads by one session of the system, whose messages come on a queue of its own: the system's proxies and its trust in
// certificates count; nothing is cached, and no cookie is kept or sent.
class SessionLoader : public transfers::Loader {
public:
    explicit SessionLoader(const transfers::TransferLimits& limits);
    // Gives up what still runs: no further message, no partial file.
    ~SessionLoader() override;

    bool start() override { return true; }
    void load(transfers::WebRequest request, std::unique_ptr<transfers::Sink> sink) override;
    // Each copy has a thread of its own.
    void copy(std::unique_ptr<transfers::FileCopy> copy) override;

private:
    std::shared_ptr<SessionTasks> tasks_;
    Retained<NSURLSession> session_;
};

} // namespace platform
