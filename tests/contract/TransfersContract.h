#pragma once

#include "tests/contract/TransferNotes.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tests {

// What all transfers do. A `World` has `transfers`; `serve(body)`, the address that the body is served at, and
// `unserved()`, one that nobody answers; `path(name)` in an existing folder, `addFile(path)` and `has(path)`; and
// `runUntil(condition)`, which lets the main thread and the transfers go on, for as long as a test may take.
template <class World>
class TransfersContract : public testing::Test {
protected:
    static foundation::URL url(const std::string& text) { return *foundation::URL::withString(text); }

    std::string download(const std::string& from, const std::optional<std::string>& path, bool overwrites) {
        return messages([&](const std::shared_ptr<TransferNotes>& notes) {
            world_.transfers.startDownload(url(from), notes)->setDestination(path, overwrites);
        });
    }

    std::string post(const std::string& to) {
        return messages([&](const std::shared_ptr<TransferNotes>& notes) {
            EXPECT_TRUE(world_.transfers.startPost({url(to), "content-type", "text/x-test", "a=b"}, notes));
        });
    }

    World world_;

private:
    // The messages of a transfer: none within the call that starts it, and none after the last.
    std::string messages(const std::function<void(const std::shared_ptr<TransferNotes>&)>& start) {
        auto notes = std::make_shared<TransferNotes>();
        start(notes);
        EXPECT_EQ(notes->text, "");
        EXPECT_TRUE(world_.runUntil([&] { return notes->ended; }));
        std::string text = notes->text;
        const std::weak_ptr<TransferNotes> last = notes;
        notes.reset();
        EXPECT_TRUE(world_.runUntil([&] { return last.expired(); })) << "the delegate is let go of";
        return text;
    }
};
TYPED_TEST_SUITE_P(TransfersContract);

TYPED_TEST_P(TransfersContract, DownloadsGoToTheirDestinationOrFail) {
    auto& world = this->world_;
    const std::string served = world.serve("disk image");
    const std::string file = world.path("file");
    const std::string noFile = failure(platform::URLErrorCode::cannotCreateFile);
    EXPECT_EQ(this->download(served, std::nullopt, true), noFile);
    EXPECT_EQ(this->download(served, world.path("absent/file"), true), noFile);
    EXPECT_EQ(this->download(world.unserved(), file, true), failure(platform::URLErrorCode::cannotConnectToHost));
    EXPECT_FALSE(world.has(file));
    EXPECT_EQ(this->download(served, file, false), "response 10 data finish ");
    EXPECT_TRUE(world.has(file));
    EXPECT_EQ(this->download(served, file, false), noFile);
    EXPECT_EQ(this->download(served, file, true), "response 10 data finish ");
    EXPECT_TRUE(world.has(file));
}

TYPED_TEST_P(TransfersContract, RequestsEndOnce) {
    EXPECT_EQ(this->post(this->world_.serve("answer")), "response data finish ");
    EXPECT_EQ(this->post(this->world_.unserved()), failure(platform::URLErrorCode::cannotConnectToHost));
}

TYPED_TEST_P(TransfersContract, FetchesTheWholeBodyOrNothing) {
    platform::Transfers& transfers = this->world_.transfers;
    EXPECT_EQ(transfers.dataWithContentsOfURL(this->url(this->world_.serve("answer"))), "answer");
    EXPECT_EQ(transfers.dataWithContentsOfURL(this->url(this->world_.unserved())), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(TransfersContract, DownloadsGoToTheirDestinationOrFail, RequestsEndOnce,
                            FetchesTheWholeBodyOrNothing);

} // namespace tests
