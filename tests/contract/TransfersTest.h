#pragma once

#include "platform/curl/CurlTransfers.h"
#include "platform/posix/PosixRunLoop.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/LoopbackServer.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace tests {

// A main thread that runs what it was handed only when a test says so.
class MainQueue final : public platform::Threads {
public:
    void performOnMain(std::function<void()> step) override { loop_.post(std::move(step)); }
    void performInBackground(std::function<void()> step) override;
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return nullptr; }

    // Runs the steps as they come until the condition holds; false after a time that no test needs.
    bool runUntil(const std::function<bool()>& condition);

private:
    platform::PosixRunLoop loop_;
};

// Notes the messages of a transfer: "response <length>" of a download, "response" of a request, "data" (once for
// several in a row), "finish", "fail <code>".
class TransferNotes final : public platform::DownloadDelegate, public platform::ConnectionDelegate {
public:
    void downloadDidReceiveResponse(std::int64_t expectedContentLength) override;
    void downloadDidReceiveDataOfLength(std::uint64_t length) override;
    bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& type) override;
    void downloadDidFinish() override { end("finish"); }
    void downloadDidFailWithError(const foundation::Error& failure) override;
    void connectionDidReceiveResponse() override { note("response"); }
    void connectionDidReceiveData(std::string_view data) override;
    void connectionDidFinishLoading() override { end("finish"); }
    void connectionDidFailWithError(const foundation::Error& failure) override { downloadDidFailWithError(failure); }

    std::string text;
    std::vector<std::uint64_t> lengths;
    std::uint64_t received = 0;
    std::string answer;
    foundation::Error error;
    bool ended = false;

private:
    void note(const std::string& message);
    void end(const std::string& message);
};

// What the notes say of a failure with that code.
std::string failure(std::int64_t code);

// The real transfers with a manual main thread and an empty folder.
class TransfersTest : public testing::Test {
protected:
    // The transfers, made at the first call with the limits set by then.
    platform::CurlTransfers& transfers();
    void forgetTransfers() { transfers_.reset(); }

    // Begins a download to the file of that name in the folder.
    std::shared_ptr<TransferNotes> startDownload(const std::string& url, const std::string& name = "file");

    // A whole download.
    std::shared_ptr<TransferNotes> download(const std::string& url, const std::string& name = "file");

    // A whole request.
    std::shared_ptr<TransferNotes> post(const std::string& url, const std::string& body = "a=b");

    std::optional<std::string> fetch(const std::string& url);

    // The names in the folder, in order, each followed by a blank.
    std::string filesInFolder() const;

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
