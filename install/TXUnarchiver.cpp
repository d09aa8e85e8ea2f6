#include "install/TXUnarchiver.h"

#include "foundation/MessageText.h"

namespace {

std::vector<TXUnarchiver::Implementation>& registry() {
    static std::vector<TXUnarchiver::Implementation> implementations;
    return implementations;
}

} // namespace

TXUnarchiver::TXUnarchiver(std::string path) : archivePath(std::move(path)) {}

std::shared_ptr<TXUnarchiver> TXUnarchiver::unarchiverForPath(const std::string& path) {
    for (const Implementation& implementation : _unarchiverImplementations())
        if (implementation.canUnarchivePath(path))
            return implementation.make(path);
    return nullptr;
}

void TXUnarchiver::_registerImplementation(Implementation implementation) {
    registry().push_back(std::move(implementation));
}

std::vector<TXUnarchiver::Implementation> TXUnarchiver::_unarchiverImplementations() {
    return registry();
}

void TXUnarchiver::setDelegate(std::shared_ptr<TXUnarchiverDelegate> newDelegate) {
    delegate = std::move(newDelegate);
}

void TXUnarchiver::start() {}

std::string TXUnarchiver::className() const {
    return "TXUnarchiver";
}

std::string TXUnarchiver::description() const {
    return foundation::format("%@ <%@>", {className(), archivePath});
}

void TXUnarchiver::_notifyDelegateOfExtractedLength(std::int64_t length) {
    if (delegate)
        delegate->unarchiverExtractedLength(*this, length);
}

void TXUnarchiver::_notifyDelegateOfSuccess() {
    if (delegate)
        delegate->unarchiverDidFinish(*this);
}

void TXUnarchiver::_notifyDelegateOfFailure() {
    if (delegate)
        delegate->unarchiverDidFail(*this);
}
