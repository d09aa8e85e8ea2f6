#pragma once

#include "platform/Transfers.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tests {

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

} // namespace tests
