#pragma once

#include "platform/Application.h"
#include "tests/support/FakeThreads.h"

#include <vector>

// An application that quits as a real one does: it asks its delegate later, and a request that comes while the delegate
// ponders waits for the answer.
class FakeApplication final : public platform::Application {
public:
    explicit FakeApplication(FakeThreads& threads) : threads_(threads) {}

    void terminate() override {
        ++requests;
        threads_.performOnMain([this] { askDelegate(); });
    }

    void replyToApplicationShouldTerminate(bool shouldTerminate) override {
        replies.push_back(shouldTerminate);
        pondering_ = false;
        ended = ended || shouldTerminate;
        if (!ended && waiting_)
            threads_.performOnMain([this] { askDelegate(); });
        waiting_ = false;
    }

    platform::ApplicationDelegate* delegate = nullptr;
    int requests = 0;
    std::vector<bool> replies;
    bool ended = false;

private:
    void askDelegate() {
        if (ended)
            return;
        if (pondering_) {
            waiting_ = true;
            return;
        }
        const auto reply = delegate == nullptr ? platform::TerminateReply::Now : delegate->applicationShouldTerminate();
        ended = reply == platform::TerminateReply::Now;
        pondering_ = reply == platform::TerminateReply::Later;
    }

    FakeThreads& threads_;
    bool pondering_ = false;
    bool waiting_ = false;
};
