#pragma once

#include "platform/curl/CurlTransfers.h"
#include "platform/posix/PosixRunLoop.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/LoopbackServer.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tests {

// A main thread that runs what it was handed only when a test says so.
class MainQueue final : public platform::Threads {
public:
    void performOnMain(std::function<void()> step) override { loop_.post(std::move(step)); }
    void performInBackground(std::function<void()> step) override { background = std::move(step); }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return nullptr; }

    // Runs the steps as they come until the condition holds; false after a time that no test needs.
    bool runUntil(const std::function<bool()>& condition) {
        while (!condition()) {
            if (!loop_.runOnce(std::chrono::seconds(60)))
                return false;
        }
        return true;
    }

    std::function<void()> background; // waits for the test

private:
    platform::PosixRunLoop loop_;
};

// What the notes say of a failure with that code.
inline std::string failure(std::int64_t code) {
    return "fail " + std::to_string(code) + ' ';
}

// Notes the messages of a transfer: "response <length>" of a download, "response" of a request, "data" (once for
// several in a row), "finish", "fail <code>".
class TransferNotes final : public platform::DownloadDelegate, public platform::ConnectionDelegate {
public:
    void downloadDidReceiveResponse(std::int64_t expectedContentLength) override {
        text += "response " + std::to_string(expectedContentLength) + ' ';
    }
    void downloadDidReceiveDataOfLength(std::uint64_t length) override {
        noteData();
        lengths.push_back(length);
        received += length;
    }
    bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& /*type*/) override {
        ADD_FAILURE() << "nothing is ever unpacked";
        return false;
    }
    void downloadDidFinish() override { end("finish "); }
    void downloadDidFailWithError(const foundation::Error& failed) override {
        error = failed;
        end(failure(failed.code));
    }
    void connectionDidReceiveResponse() override { text += "response "; }
    void connectionDidReceiveData(std::string_view data) override {
        noteData();
        answer += data;
    }
    void connectionDidFinishLoading() override { end("finish "); }
    void connectionDidFailWithError(const foundation::Error& failed) override { downloadDidFailWithError(failed); }

    std::string text;
    std::vector<std::uint64_t> lengths;
    std::uint64_t received = 0;
    std::string answer;
    foundation::Error error;
    bool ended = false;

private:
    void noteData() { text += text.ends_with("data ") ? "" : "data "; }
    void end(const std::string& message) {
        text += message;
        ended = true;
    }
};

// The real transfers with a manual main thread and an empty folder.
class TransfersTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(main_.background, nullptr) << "transfers have a thread of their own"; }

    // The transfers, made at the first call with the limits set by then.
    virtual platform::Transfers& transfers() {
        if (!transfers_)
            transfers_ = std::make_unique<platform::CurlTransfers>(main_, limits_);
        return *transfers_;
    }
    void forgetTransfers() { transfers_.reset(); }

    // Begins a download to "file" in the folder.
    std::shared_ptr<TransferNotes> startDownload(const std::string& url) {
        auto notes = std::make_shared<TransferNotes>();
        transfers().startDownload(*foundation::URL::withString(url), notes)->setDestination(folder_.path("file"), true);
        return notes;
    }

    // A whole download.
    std::shared_ptr<TransferNotes> download(const std::string& url) {
        auto notes = startDownload(url);
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
        return notes;
    }

    std::shared_ptr<TransferNotes> startPost(const std::string& url, const std::string& body = "a=b") {
        auto notes = std::make_shared<TransferNotes>();
        const platform::PostRequest request{*foundation::URL::withString(url), "content-type", "text/x-test", body};
        EXPECT_TRUE(transfers().startPost(request, notes));
        return notes;
    }

    // A whole request.
    std::shared_ptr<TransferNotes> post(const std::string& url, const std::string& body = "a=b") {
        auto notes = startPost(url, body);
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; })) << url;
        return notes;
    }

    std::optional<std::string> fetch(const std::string& url) {
        return transfers().dataWithContentsOfURL(*foundation::URL::withString(url));
    }

    // The names in the folder, in order, each followed by a blank.
    std::string filesInFolder() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.insert(entry.path().filename());
        std::string text;
        for (const auto& name : names)
            text += name + ' ';
        return text;
    }

    TestEnvironment environment_{{"http_proxy", std::nullopt},  {"https_proxy", std::nullopt},
                                 {"HTTPS_PROXY", std::nullopt}, {"all_proxy", std::nullopt},
                                 {"ALL_PROXY", std::nullopt},   {"SSL_CERT_FILE", std::nullopt}};
    TestFolder folder_;
    platform::TransferLimits limits_;
    MainQueue main_;

private:
    std::unique_ptr<platform::CurlTransfers> transfers_;
};

} // namespace tests
