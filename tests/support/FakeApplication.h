#pragma once

#include "platform/Application.h"
#include "tests/support/FakeThreads.h"

#include <utility>
#include <vector>

// An application that quits as a real one does: it asks its delegate later, and a request that comes while the delegate
// ponders is dropped.
class FakeApplication final : public platform::Application {
public:
    explicit FakeApplication(FakeThreads& threads) : threads_(threads) {}

    void terminate() override {
        ++requests;
        threads_.performOnMain([this] { askDelegate(); });
    }

    void replyToApplicationShouldTerminate(bool shouldTerminate) override {
        replies.push_back(shouldTerminate);
        // An answer to a question that nobody asked changes nothing.
        if (std::exchange(pondering_, false))
            ended = ended || shouldTerminate;
    }

    std::shared_ptr<void> delayEnd() override {
        const auto delay = std::make_shared<int>();
        delay_ = delay;
        return delay;
    }

    // Whether somebody delays the end.
    bool isDelayed() const { return !delay_.expired(); }

    platform::ApplicationDelegate* delegate = nullptr;
    int requests = 0;
    std::vector<bool> replies;
    bool ended = false;

private:
    void askDelegate() {
        if (ended || pondering_)
            return;
        pondering_ = true; // the delegate may reply within its answer
        const auto reply = delegate == nullptr ? platform::TerminateReply::Now : delegate->applicationShouldTerminate();
        if (reply == platform::TerminateReply::Later)
            return;
        pondering_ = false;
        ended = reply == platform::TerminateReply::Now;
    }

    FakeThreads& threads_;
    bool pondering_ = false;
    std::weak_ptr<void> delay_;
};
