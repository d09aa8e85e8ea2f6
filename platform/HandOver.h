#pragma once

#include "platform/Platform.h"

#include <memory>
#include <system_error>
#include <utility>

namespace platform {

// Runs `step(object)` on the main thread, later; the object is kept alive until then.
template <class Object, class Step>
void performOnMain(std::shared_ptr<Object> object, Step step) {
    current().threads->performOnMain([object = std::move(object), step = std::move(step)] { step(*object); });
}

// Runs `step(object)` on a new thread; false when there is none to be had. The reference goes on to the main thread
// afterwards, so that the object, and whatever it owns, is never destroyed on a worker.
template <class Object, class Step>
[[nodiscard]] bool performInBackground(std::shared_ptr<Object> object, Step step) {
    return current().threads->performInBackground([object = std::move(object), step = std::move(step)]() mutable {
        step(*object);
        current().threads->performOnMain([last = std::move(object)] {});
    });
}

// Why a step fails for which there is no thread.
inline foundation::Error noThreadError() {
    return foundation::Error::withDescription("NSPOSIXErrorDomain",
                                              static_cast<int>(std::errc::resource_unavailable_try_again),
                                              "No further thread could be started.");
}

} // namespace platform
