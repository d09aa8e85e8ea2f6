// Everybody's contract of transfers, over the real loader that the test program is about and over the fake.

#include "tests/contract/TransfersContract.h"
#include "tests/contract/TransfersTest.h"
#include "tests/support/FakeTransfers.h"

namespace tests {

namespace {

struct RealWorld {
    std::string serve(const std::string& body) {
        server.answer("/served", answerOf("200 OK", body));
        return server.url("/served");
    }
    static std::string unserved() {
        const LoopbackServer gone;
        return gone.url("/");
    }
    std::string path(const std::string& name) const { return folder.path(name); }
    static bool has(const std::string& path) { return std::filesystem::exists(path); }
    bool runUntil(const std::function<bool()>& condition) { return mainQueue.runUntil(condition); }

    TestEnvironment environment = plainEnvironment();
    TestFolder folder;
    LoopbackServer server;
    MainQueue mainQueue;
    std::unique_ptr<platform::Transfers> made = makeTransfers(mainQueue, {});
    platform::Transfers& transfers = *made;
};

struct FakeWorld {
    FakeWorld() { files.addFolder("/folder"); }

    std::string serve(const std::string& body) {
        transfers.answers["http://served/"] = body;
        return "http://served/";
    }
    static std::string unserved() { return "http://unserved/"; }
    static std::string path(const std::string& name) { return "/folder/" + name; }
    bool has(const std::string& path) { return files.has(path); }

    // Lets every transfer take its course.
    bool runUntil(const std::function<bool()>& condition) {
        const foundation::Error refused{foundation::urlErrorDomain, platform::URLErrorCode::cannotConnectToHost, {}};
        const auto isServed = [&](const foundation::URL& url) {
            return transfers.answers.contains(url.absoluteString());
        };
        for (std::size_t i = 0; i < transfers.posts.size(); ++i)
            if (transfers.posts[i].delegate)
                isServed(transfers.posts[i].request.url) ? transfers.finishPost(i) : transfers.failPost(i, refused);
        for (const auto& download : std::exchange(transfers.downloads, {}))
            isServed(download->url) ? download->run(transfers.answers[download->url.absoluteString()].size())
                                    : download->fail(refused);
        return condition();
    }

    FakeFiles files;
    FakeTransfers transfers{files};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Real, TransfersContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TransfersContract, FakeWorld);

} // namespace

} // namespace tests
