#pragma once

#include "foundation/Error.h"

#include <utility>
#include <variant>

namespace foundation {

// What an operation came to: a value, or why there is none. Use std::optional where the reason does not matter.
template <class Value, class Failure = Error>
class [[nodiscard]] Result {
public:
    Result(Value value) : outcome_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : outcome_(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return outcome_.index() == 0; }

    // The value; only where there is one (std::bad_variant_access otherwise).
    const Value& value() const& { return std::get<0>(outcome_); }
    Value& value() & { return std::get<0>(outcome_); }
    Value&& value() && { return std::get<0>(std::move(outcome_)); }
    const Value& operator*() const& { return value(); }
    Value& operator*() & { return value(); }
    Value&& operator*() && { return std::move(*this).value(); }
    const Value* operator->() const { return &value(); }
    Value* operator->() { return &value(); }

    // The reason; only where there is no value.
    const Failure& error() const& { return std::get<1>(outcome_); }
    Failure&& error() && { return std::get<1>(std::move(outcome_)); }

private:
    std::variant<Value, Failure> outcome_;
};

} // namespace foundation
