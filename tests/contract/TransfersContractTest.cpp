// Everybody's contract of transfers, over the real loader that the test program is about and over the fake.

#include "tests/contract/TransfersContract.h"
#include "tests/contract/TransfersTest.h"
#include "tests/support/FakeTransfers.h"

namespace tests {

namespace {

class RealWorld {
public:
    platform::Transfers& transfers() { return *transfers_; }

    std::string serve(const std::string& body) {
        server_.answer("/served", answerOf("200 OK", body));
        return server_.url("/served");
    }

    std::string unserved() const {
        const LoopbackServer gone;
        return gone.url("/");
    }

    std::string path(const std::string& name) const { return folder_.path(name); }
    bool has(const std::string& path) const { return std::filesystem::exists(path); }
    bool runUntil(const std::function<bool()>& condition) { return main_.runUntil(condition); }

private:
    TestEnvironment environment_ = plainEnvironment();
    TestFolder folder_;
    LoopbackServer server_;
    MainQueue main_;
    std::unique_ptr<platform::Transfers> transfers_ = makeTransfers(main_, {});
};

class FakeWorld {
public:
    FakeWorld() { files_.addFolder("/folder"); }

    platform::Transfers& transfers() { return transfers_; }

    std::string serve(const std::string& body) {
        transfers_.answers["http://served/"] = body;
        return "http://served/";
    }

    std::string unserved() const { return "http://unserved/"; }
    std::string path(const std::string& name) const { return "/folder/" + name; }
    bool has(const std::string& path) { return files_.has(path); }

    // Lets the latest transfer take its course.
    bool runUntil(const std::function<bool()>& condition) {
        if (condition())
            return true;
        const foundation::Error refused{foundation::urlErrorDomain, platform::URLErrorCode::cannotConnectToHost, {}};
        for (std::size_t i = 0; i < transfers_.posts.size(); ++i)
            if (transfers_.posts[i].delegate &&
                transfers_.answers.contains(transfers_.posts[i].request.url.absoluteString()))
                transfers_.finishPost(i);
            else if (transfers_.posts[i].delegate)
                transfers_.failPost(i, refused);
        if (transfers_.downloads.empty())
            return condition();
        const auto download = transfers_.downloads.back();
        transfers_.downloads.pop_back();
        const auto answer = transfers_.answers.find(download->url.absoluteString());
        if (answer == transfers_.answers.end())
            download->fail(refused);
        else
            download->run(answer->second.size());
        return condition();
    }

private:
    FakeFiles files_;
    FakeTransfers transfers_{files_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Real, TransfersContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TransfersContract, FakeWorld);

} // namespace

} // namespace tests
