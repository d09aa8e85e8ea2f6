#include "foundation/Value.h"

#include "foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

namespace foundation {

namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
template <class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view skipBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

std::int64_t leadingInteger(std::string_view text) {
    text = skipBlanks(text);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const std::uint64_t limit = negative ? largest + 1 : largest;
    std::uint64_t number = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
        const auto digit = static_cast<std::uint64_t>(text.front() - '0');
        number = number > (limit - digit) / 10 ? limit : number * 10 + digit;
    }
    return static_cast<std::int64_t>(negative ? 0 - number : number);
}

std::int64_t truncated(double number) {
    if (std::isnan(number))
        return 0;
    constexpr double edge = 9223372036854775808.0; // one more than the largest
    if (number >= edge)
        return std::numeric_limits<std::int64_t>::max();
    if (number <= -edge)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

bool meansYes(std::string_view text) {
    text = skipBlanks(text);
    if (!text.empty() && (text.front() == '+' || text.front() == '-'))
        text.remove_prefix(1);
    while (!text.empty() && text.front() == '0')
        text.remove_prefix(1);
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::string doubleText(double number) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(std::numeric_limits<double>::digits10);
    stream << number;
    return stream.str();
}

std::string quotedWhereNeeded(const std::string& text) {
    const auto plain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    };
    if (!text.empty() && std::all_of(text.begin(), text.end(), plain))
        return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return visible(quoted + "\"");
}

std::string describe(const Value& value, std::size_t depth);

std::string describe(const Value::Array& array, std::size_t depth) {
    const std::string indent(4 * depth, ' ');
    std::string text = "(\n";
    for (std::size_t i = 0; i < array.size(); ++i) {
        text += indent + "    " + describe(array[i], depth + 1) + (i + 1 < array.size() ? ",\n" : "\n");
    }
    return text + indent + ")";
}

std::string describe(const Value::Dictionary& dictionary, std::size_t depth) {
    const std::string indent(4 * depth, ' ');
    std::string text = "{\n";
    for (const auto& [key, value] : dictionary) {
        text += indent + "    " + quotedWhereNeeded(key) + " = " + describe(value, depth + 1) + ";\n";
    }
    return text + indent + "}";
}

std::string describe(const Value& value, std::size_t depth) {
    if (value.array() != nullptr)
        return describe(*value.array(), depth);
    if (value.dictionary() != nullptr)
        return describe(*value.dictionary(), depth);
    if (value.string() != nullptr)
        return quotedWhereNeeded(*value.string());
    return value.description();
}

} // namespace

std::int64_t Value::integerValue() const {
    return std::visit(Overloaded{[](bool flag) { return std::int64_t{flag}; },
                                 [](std::int64_t number) { return number; },
                                 [](double number) { return truncated(number); },
                                 [](const std::string& text) { return leadingInteger(text); },
                                 [](const auto&) { return std::int64_t{0}; }},
                      data_);
}

bool Value::boolValue() const {
    return std::visit(Overloaded{[](bool flag) { return flag; }, [](std::int64_t number) { return number != 0; },
                                 [](double number) { return number != 0; },
                                 [](const std::string& text) { return meansYes(text); },
                                 [](const auto&) { return false; }},
                      data_);
}

std::string Value::description() const {
    return std::visit(Overloaded{[](const Null&) { return std::string("<null>"); },
                                 [](bool flag) { return std::string(flag ? "1" : "0"); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](double number) { return doubleText(number); },
                                 [](const std::string& text) { return text; },
                                 [](const auto& container) { return describe(container, 0); }},
                      data_);
}

const Value* member(const Value::Dictionary& dictionary, const std::string& key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

} // namespace foundation
