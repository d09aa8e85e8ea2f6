#pragma once

#include "flow/TXFlowInterfaces.h"
#include "foundation/MessageText.h"
#include "install/TXUnarchiver.h"
#include "tests/unit/CoreTest.h"

#include <utility>

// "domain code", and the text for people where there is one.
inline std::string shortText(const foundation::Error& error) {
    const auto text = error.userInfo.find(foundation::localizedDescriptionKey);
    return error.domain + " " + std::to_string(error.code) +
           (text == error.userInfo.end() ? "" : " " + text->second.description());
}

// What the stages and the unarchiver report, as texts; those that come from a worker are marked.
class RecordingDelegate final : public TXCheckControllerDelegate,
                                public TXDownloadControllerDelegate,
                                public TXInstallControllerDelegate,
                                public TXUnarchiverDelegate {
public:
    explicit RecordingDelegate(FakeThreads& threads) : threads_(threads) {}

    void checkWillStart() override { add("start"); }
    void checkDidEndWithURL(const foundation::URL& url, const std::string& version) override {
        add("end " + url.absoluteString() + " " + version);
    }
    void checkDidFailWithError(const std::optional<foundation::Error>& error) override { fail(error); }

    void downloadWillStartAtURL(const std::optional<foundation::URL>& url) override {
        add("start " + foundation::textOf(url));
    }
    void downloadProgress(double progress) override { percentages.push_back(progress); }
    void downloadDidEndAtURL(const foundation::URL& url) override { add("end " + url.absoluteString()); }
    void downloadDidFailWithError(const std::optional<foundation::Error>& error) override { fail(error); }

    void installWillStart() override { add("start"); }
    void installProgress(double /*progress*/) override { add("progress"); }
    void installDidEnd() override { add("end"); }
    void installDidFailWithError(const std::optional<foundation::Error>& error) override { fail(error); }
    void launchDidFailWithError(const foundation::Error& error) override { add("launch failed " + shortText(error)); }

    void unarchiverDidCopyContentAtPath(const std::string& path) override { add("copied " + path); }
    void unarchiverDidFinish(TXUnarchiver& /*unarchiver*/) override { add("finish"); }
    void unarchiverDidFail(TXUnarchiver& /*unarchiver*/) override { add("fail"); }

    // The reports since the last call.
    Texts taken() { return std::exchange(messages, {}); }

    Texts messages;
    std::vector<double> percentages;
    std::optional<foundation::Error> lastError;
    std::function<void(const std::string& message)> observer; // sees each report

private:
    void add(const std::string& message) {
        messages.push_back((threads_.inBackground() ? "off main: " : "") + message);
        if (observer)
            observer(message);
    }
    void fail(const std::optional<foundation::Error>& error) {
        lastError = error;
        add(error ? "fail " + shortText(*error) : "fail");
    }

    FakeThreads& threads_;
};
