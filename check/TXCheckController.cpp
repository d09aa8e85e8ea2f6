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
    : delegate(std::move(withDelegate)) {}

void TXCheckController::startCheckAtURL(const std::optional<foundation::URL>& url) {
    if (_checkInProgress)
        return;
    feedURL = url;
    delegate->checkWillStart();
    // Deliberate: the flag is set by the background step, so two starts in quick succession both run.
    platform::performInBackground(shared_from_this(), [url](TXCheckController& self) { self.startCheck(url); });
}

// Deliberate: a check that has begun runs to its end and delivers its result.
void TXCheckController::abortChecking() {}

bool TXCheckController::checkInProgress() const {
    return _checkInProgress;
}

void TXCheckController::startCheck(const std::optional<foundation::URL>& url) {
    _checkInProgress = true;
    if (checkIfLocalArchiveExists())
        return scheduleCheckFinished();
    const auto data = url ? platform::current().transfers->dataWithContentsOfURL(*url) : std::nullopt;
    if (!data || data->empty())
        return scheduleCheckFailed(std::nullopt);
    auto answer = foundation::parseJSON(*data);
    if (auto* error = std::get_if<Error>(&answer))
        return scheduleCheckFailed(std::move(*error));
    readAnswer(std::get<Value>(answer));
}

void TXCheckController::readAnswer(const Value& answer) {
    const auto* object = answer.dictionary();
    if (object == nullptr) {
        return scheduleCheckFailed(
            Error::withDescription(silentServiceDomain, 0, "The service's answer is not an object."));
    }
    const Value* code = member(*object, "code");
    const std::int64_t number = code == nullptr ? 0 : code->integerValue();
    if (number != successCode) {
        return scheduleCheckFailed(
            Error{textMember(&answer, "message").value_or(silentServiceDomain), number, *object});
    }
    const Value* content = member(*object, "content");
    const auto downloadText = textMember(content, "download_url");
    _downloadURL = downloadText ? foundation::URL::withString(*downloadText) : std::nullopt;
    _downloadVersion = textMember(content, "version");
    if (!_downloadURL || !_downloadVersion)
        return scheduleCheckFailed(std::nullopt);
    scheduleCheckFinished();
}

void TXCheckController::scheduleCheckFinished() {
    platform::performOnMain(shared_from_this(), [](TXCheckController& self) { self.checkFinished(); });
}

void TXCheckController::scheduleCheckFailed(std::optional<Error> error) {
    platform::performOnMain(shared_from_this(),
                            [error = std::move(error)](TXCheckController& self) { self.checkFailed(error); });
}

void TXCheckController::checkFinished() {
    _checkInProgress = false;
    feedURL.reset();
    delegate->checkDidEndWithURL(*_downloadURL, *_downloadVersion);
}

void TXCheckController::checkFailed(const std::optional<Error>& error) {
    _checkInProgress = false;
    feedURL.reset();
    delegate->checkDidFailWithError(error);
}
