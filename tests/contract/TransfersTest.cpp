#include "tests/contract/TransfersTest.h"

#include <chrono>
#include <set>

namespace tests {

void MainQueue::performInBackground(std::function<void()> /*step*/) {
    ADD_FAILURE() << "transfers have a thread of their own";
}

bool MainQueue::runUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        if (!loop_.runOnce(std::chrono::seconds(60)))
            return false;
    }
    return true;
}

void TransferNotes::note(const std::string& message) {
    if (message != "data" || !text.ends_with("data "))
        text += message + ' ';
}

void TransferNotes::end(const std::string& message) {
    note(message);
    ended = true;
}

void TransferNotes::downloadDidReceiveResponse(std::int64_t expectedContentLength) {
    note("response " + std::to_string(expectedContentLength));
}

void TransferNotes::downloadDidReceiveDataOfLength(std::uint64_t length) {
    note("data");
    lengths.push_back(length);
    received += length;
}

bool TransferNotes::downloadShouldDecodeSourceDataOfMIMEType(const std::string& /*type*/) {
    ADD_FAILURE() << "nothing is ever unpacked";
    return false;
}

void TransferNotes::downloadDidFailWithError(const foundation::Error& failure) {
    error = failure;
    end("fail " + std::to_string(failure.code));
}

void TransferNotes::connectionDidReceiveData(std::string_view data) {
    note("data");
    answer += data;
}

std::string failure(std::int64_t code) {
    return "fail " + std::to_string(code) + ' ';
}

platform::CurlTransfers& TransfersTest::transfers() {
    if (!transfers_)
        transfers_ = std::make_unique<platform::CurlTransfers>(main_, limits_);
    return *transfers_;
}

std::shared_ptr<TransferNotes> TransfersTest::startDownload(const std::string& url, const std::string& name) {
    auto notes = std::make_shared<TransferNotes>();
    transfers().startDownload(*foundation::URL::withString(url), notes)->setDestination(folder_.path(name), true);
    return notes;
}

std::shared_ptr<TransferNotes> TransfersTest::download(const std::string& url, const std::string& name) {
    auto notes = startDownload(url, name);
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
    return notes;
}

std::shared_ptr<TransferNotes> TransfersTest::post(const std::string& url, const std::string& body) {
    auto notes = std::make_shared<TransferNotes>();
    const platform::PostRequest request{*foundation::URL::withString(url), "content-type", "text/x-test", body};
    EXPECT_TRUE(transfers().startPost(request, notes));
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
    return notes;
}

std::optional<std::string> TransfersTest::fetch(const std::string& url) {
    return transfers().dataWithContentsOfURL(*foundation::URL::withString(url));
}

std::string TransfersTest::filesInFolder() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
        names.insert(entry.path().filename());
    std::string text;
    for (const auto& name : names)
        text += name + ' ';
    return text;
}

} // namespace tests
