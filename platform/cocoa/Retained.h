#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace platform {

// Holds one reference to an Objective-C object of type T, or nothing.
template <class T>
class Retained {
public:
    Retained() = default;
    // Adds a reference to an object that somebody else owns.
    explicit Retained(T* object) : object_([object retain]) {}
    // Takes over the reference that alloc, new or copy gave to the caller.
    static Retained adopt(T* object) {
        Retained retained;
        retained.object_ = object;
        return retained;
    }
    Retained(const Retained& other) : Retained(other.object_) {}
    Retained(Retained&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Retained& operator=(Retained other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Retained() { [object_ release]; }

    // The object, valid for as long as this holds it.
    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

} // namespace platform
