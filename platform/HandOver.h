#pragma once

#include "platform/Platform.h"

#include <memory>
#include <utility>

namespace platform {

// Runs `step(object)` on the main thread, later; the object is kept alive until then.
template <class Object, class Step>
void performOnMain(std::shared_ptr<Object> object, Step step) {
    current().threads->performOnMain([object = std::move(object), step = std::move(step)] { step(*object); });
}

// Runs `step(object)` on a new thread. The reference goes on to the main thread afterwards, so that the object, and
// whatever it owns, is never destroyed on a worker.
template <class Object, class Step>
void performInBackground(std::shared_ptr<Object> object, Step step) {
    current().threads->performInBackground([object = std::move(object), step = std::move(step)]() mutable {
        step(*object);
        current().threads->performOnMain([last = std::move(object)] {});
    });
}

} // namespace platform
