#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace foundation {

// A property-list or JSON value. Plain data: copied freely, owned by whoever holds it.
class Value {
public:
    struct Null {
        friend bool operator==(const Null&, const Null&) { return true; }
    };
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value>;

    Value() = default;
    explicit Value(bool flag) : data_(flag) {}
    explicit Value(std::int64_t number) : data_(number) {}
    explicit Value(double number) : data_(number) {}
    explicit Value(std::string text) : data_(std::move(text)) {}
    explicit Value(const char* text) : data_(std::string(text)) {}
    explicit Value(Array array) : data_(std::move(array)) {}
    explicit Value(Dictionary dictionary) : data_(std::move(dictionary)) {}

    bool isNull() const { return std::holds_alternative<Null>(data_); }

    // What the value holds, or null when it is of another kind.
    const std::string* string() const { return std::get_if<std::string>(&data_); }
    const Array* array() const { return std::get_if<Array>(&data_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&data_); }
    const bool* flag() const { return std::get_if<bool>(&data_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&data_); }
    const double* real() const { return std::get_if<double>(&data_); }

    // A number truncated, a flag as 1 or 0, a text's leading decimal digits (clamped to 64 bits); otherwise 0.
    std::int64_t integerValue() const;

    // A flag itself, a number other than zero, a text that begins (after blanks, sign and zeros) with Y, T or 1 to 9;
    // otherwise false.
    bool boolValue() const;

    // Readable text: strings as they are at the top, quoted inside containers, which have a line for each item;
    // dictionary keys in ascending order. Very deep nesting ends in an ellipsis.
    std::string description() const;

    // The same on one line, control bytes shown as escapes, and with an ellipsis for what is beyond so many bytes.
    std::string oneLineDescription(std::size_t limit) const;

    friend bool operator==(const Value&, const Value&) = default;

private:
    std::variant<Null, bool, std::int64_t, double, std::string, Array, Dictionary> data_;
};

// The member of that name, or null when there is none.
const Value* member(const Value::Dictionary& dictionary, const std::string& key);

} // namespace foundation
