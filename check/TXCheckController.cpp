#include "check/TXCheckController.h"

#include "foundation/JSON.h"
#include "platform/HandOver.h"

namespace {

using foundation::Error;
using foundation::Value;

constexpr std::int64_t successCode = 200;

// The domain of a failure whose answer says nothing.
constexpr const char* silentServiceDomain = "TXBinariesServiceErrorDomain";

// The text member of an object, or nothing where either is missing or of another kind.
std::optional<std::string> textMember(const Value* object, const std::string& key) {
    if (object == nullptr || object->dictionary() == nullptr)
        return std::nullopt;
    const Value* text = member(*object->dictionary(), key);
    return text != nullptr && text->string() != nullptr ? std::optional(*text->string()) : std::nullopt;
}

} // namespace

TXCheckController::TXCheckController(std::shared_ptr<TXCheckControllerDelegate> withDelegate)
    : _delegate(std::move(withDelegate)) {}

void TXCheckController::startCheckAtURL(const std::optional<foundation::URL>& url) {
    if (_checkInProgress)
        return;
    _feedURL = url;
    _delegate->checkWillStart();
    // Deliberate: the flag is set by the background step, so two starts in quick succession both run.
    const bool started = platform::performInBackground(shared_from_this(), [url](TXCheckController& self) {
        self._checkInProgress = true;
        self.scheduleEnd(startCheck(url));
    });
    if (!started)
        scheduleEnd({{}, {}, platform::noThreadError()});
}

// Deliberate: a check that has begun runs to its end and delivers its result.
void TXCheckController::abortChecking() {}

bool TXCheckController::checkInProgress() const {
    return _checkInProgress;
}

TXCheckController::Outcome TXCheckController::startCheck(const std::optional<foundation::URL>& url) {
    if (auto local = checkIfLocalArchiveExists())
        return *local;
    const auto data = url ? platform::current().transfers->dataWithContentsOfURL(*url) : std::nullopt;
    if (!data || data->empty())
        return {};
    const auto answer = foundation::parseJSON(*data);
    return answer ? readAnswer(*answer) : Outcome{{}, {}, answer.error()};
}

TXCheckController::Outcome TXCheckController::readAnswer(const Value& answer) {
    const auto* object = answer.dictionary();
    if (object == nullptr)
        return {{}, {}, Error::withDescription(silentServiceDomain, 0, "The service's answer is not an object.")};
    const Value* code = member(*object, "code");
    const std::int64_t number = code == nullptr ? 0 : code->integerValue();
    if (number != successCode)
        return {{}, {}, Error{textMember(&answer, "message").value_or(silentServiceDomain), number, *object}};
    const Value* content = member(*object, "content");
    const auto downloadText = textMember(content, "download_url");
    return {
        downloadText ? foundation::URL::withString(*downloadText) : std::nullopt, textMember(content, "version"), {}};
}

void TXCheckController::scheduleEnd(Outcome outcome) {
    platform::performOnMain(
        shared_from_this(), [outcome = std::move(outcome)](TXCheckController& self) { self.checkEnded(outcome); });
}

void TXCheckController::checkEnded(const Outcome& outcome) {
    // One part alone is kept as well.
    if (outcome.downloadURL || outcome.downloadVersion) {
        _downloadURL = outcome.downloadURL;
        _downloadVersion = outcome.downloadVersion;
        if (_downloadURL && _downloadVersion)
            return checkFinished();
    }
    checkFailed(outcome.error);
}

void TXCheckController::checkFinished() {
    _checkInProgress = false;
    _feedURL.reset();
    _delegate->checkDidEndWithURL(*_downloadURL, *_downloadVersion);
}

void TXCheckController::checkFailed(const std::optional<Error>& error) {
    _checkInProgress = false;
    _feedURL.reset();
    _delegate->checkDidFailWithError(error);
}
