#include "platform/linux/hdiutil/Failure.h"

#include "platform/posix/FileFailure.h"

#include <system_error>

namespace hdiutil {

Failure systemFailure(const std::string& attempt, int error) {
    return Failure{attempt + ": " + std::generic_category().message(error)};
}

std::string currentReason() {
    try {
        throw;
    } catch (const platform::FileFailure& failure) {
        return descriptionOf(failure, failure.access == platform::FileAccess::Reading ? "read" : "change");
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

} // namespace hdiutil
