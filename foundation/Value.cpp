#include "foundation/Value.h"

#include "foundation/MessageText.h"

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

// Writes a value into one text, once through: values can come from a server and be large and deeply nested.
class Printer {
public:
    // On one line, or with a line for each item. Little more than `limit` bytes are written.
    Printer(bool onOneLine, std::size_t limit) : onOneLine_(onOneLine), limit_(limit) {}

    void print(const Value& value, std::size_t depth) {
        if (value.array() != nullptr)
            printItems('(', *value.array(), ',', ')', depth);
        else if (value.dictionary() != nullptr)
            printItems('{', *value.dictionary(), ';', '}', depth);
        else if (value.string() != nullptr)
            text_ += quotedWhereNeeded(clipped(*value.string(), limit_));
        else
            text_ += value.description();
    }

    std::string takeText() { return std::move(text_); }

private:
    template <class Items>
    void printItems(char opening, const Items& items, char separator, char closing, std::size_t depth) {
        text_ += opening;
        bool first = true;
        for (const auto& item : items) {
            if (!first)
                text_ += separator;
            if (text_.size() > limit_ || depth == deepestNesting) {
                text_ += ellipsis;
                break;
            }
            if (!onOneLine_)
                startLine(depth + 1);
            else if (!first)
                text_ += ' ';
            printItem(item, depth + 1);
            first = false;
        }
        if (!onOneLine_) {
            if (separator == ';' && !first)
                text_ += separator;
            startLine(depth);
        }
        text_ += closing;
    }

    void printItem(const Value& element, std::size_t depth) { print(element, depth); }

    void printItem(const Value::Dictionary::value_type& member, std::size_t depth) {
        text_ += quotedWhereNeeded(clipped(member.first, limit_)) + " = ";
        print(member.second, depth);
    }

    void startLine(std::size_t depth) {
        text_ += '\n';
        text_.append(4 * depth, ' ');
    }

    static constexpr std::size_t deepestNesting = 16;

    bool onOneLine_;
    std::size_t limit_;
    std::string text_;
};

std::string printed(const Value& value, bool onOneLine, std::size_t limit) {
    Printer printer(onOneLine, limit);
    printer.print(value, 0);
    return printer.takeText();
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
                                 [this](const auto&) { return printed(*this, false, std::string::npos); }},
                      data_);
}

std::string Value::oneLineDescription(std::size_t limit) const {
    const bool isContainer = array() != nullptr || dictionary() != nullptr;
    return visible(clipped(isContainer ? printed(*this, true, limit) : description(), limit));
}

const Value* member(const Value::Dictionary& dictionary, const std::string& key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

} // namespace foundation
