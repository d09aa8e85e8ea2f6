#include "foundation/JSON.h"

#include "foundation/Unicode.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace foundation {

namespace {

constexpr int deepestNesting = 512;
constexpr std::int64_t readCorruptError = 3840;
constexpr std::int64_t writeStreamError = 3851;

Error cocoaError(std::int64_t code, std::string text) {
    return {cocoaErrorDomain, code, {{debugDescriptionKey, Value(std::move(text))}}};
}

Error readError(std::string text) {
    return cocoaError(readCorruptError, std::move(text));
}

// The number that the digits of a JSON number make; beyond the range it is infinite, or zero. Streams of the classic
// locale read it, because the person's locale may have another decimal point and not every library has from_chars.
double realNumber(std::string_view digits) {
    std::istringstream stream{std::string(digits)};
    stream.imbue(std::locale::classic());
    double real = 0;
    stream >> real;
    const bool beyond = stream.fail() && std::abs(real) >= std::numeric_limits<double>::max();
    return beyond ? std::copysign(std::numeric_limits<double>::infinity(), real) : real;
}

// A strict reader over UTF-8. At the first fault an operation sets the message and returns false.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    Result<Value> document() {
        skipBlanks();
        if (!at('{') && !at('['))
            return readError("JSON text did not start with array or object.");
        Value value;
        if (!readValue(value, 0))
            return readError(message_);
        skipBlanks();
        if (position_ != text_.size())
            return readError("Garbage at end around character " + here() + ".");
        return value;
    }

private:
    std::string here() const { return std::to_string(position_); }
    bool at(char c) const { return position_ < text_.size() && text_[position_] == c; }
    bool digitAt() const { return position_ < text_.size() && text_[position_] >= '0' && text_[position_] <= '9'; }

    bool take(char c) {
        if (!at(c))
            return false;
        ++position_;
        return true;
    }

    bool takeWord(std::string_view word) {
        if (text_.substr(position_, word.size()) != word)
            return false;
        position_ += word.size();
        return true;
    }

    void skipBlanks() {
        while (at(' ') || at('\t') || at('\n') || at('\r'))
            ++position_;
    }

    bool fail(std::string_view what) {
        if (message_.empty())
            message_ = std::string(what) + " around character " + here() + ".";
        return false;
    }

    bool readValue(Value& value, int depth) {
        if (depth >= deepestNesting && (at('{') || at('[')))
            return fail("Too many nested arrays or dictionaries");
        if (take('{'))
            return readObject(value, depth);
        if (take('['))
            return readArray(value, depth);
        if (take('"')) {
            std::string text;
            if (!readString(text))
                return false;
            value = Value(std::move(text));
            return true;
        }
        if (takeWord("true"))
            return value = Value(true), true;
        if (takeWord("false"))
            return value = Value(false), true;
        if (takeWord("null"))
            return value = Value(), true;
        return readNumber(value);
    }

    bool readObject(Value& value, int depth) {
        Value::Dictionary members;
        for (skipBlanks(); !take('}'); skipBlanks()) {
            std::string key;
            if (!take('"'))
                return fail("No string key for value in object");
            if (!readString(key))
                return false;
            skipBlanks();
            if (!take(':'))
                return fail("No value for key in object");
            skipBlanks();
            Value member;
            if (!readValue(member, depth + 1))
                return false;
            members.insert_or_assign(std::move(key), std::move(member));
            skipBlanks();
            if (!take(',') && !at('}'))
                return fail("Badly formed object");
        }
        value = Value(std::move(members));
        return true;
    }

    bool readArray(Value& value, int depth) {
        Value::Array elements;
        for (skipBlanks(); !take(']'); skipBlanks()) {
            Value element;
            if (!readValue(element, depth + 1))
                return false;
            elements.push_back(std::move(element));
            skipBlanks();
            if (!take(',') && !at(']'))
                return fail("Badly formed array");
        }
        value = Value(std::move(elements));
        return true;
    }

    bool readString(std::string& text) {
        while (position_ < text_.size()) {
            const char c = text_[position_++];
            if (c == '"')
                return true;
            if (static_cast<unsigned char>(c) < 0x20)
                return fail("Unescaped control character");
            if (c != '\\')
                text += c;
            else if (!readEscape(text))
                return false;
        }
        return fail("Unterminated string");
    }

    bool readEscape(std::string& text) {
        static constexpr std::string_view names = "\"\\/bfnrt";
        static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        if (take('u'))
            return readUnicodeEscape(text);
        const auto index = position_ < text_.size() ? names.find(text_[position_]) : std::string_view::npos;
        if (index == std::string_view::npos)
            return fail("Invalid escape sequence");
        ++position_;
        text += meanings[index];
        return true;
    }

    bool readUnicodeEscape(std::string& text) {
        bool marked = true; // the first unit's mark is read already
        const auto nextUnit = [&]() -> std::optional<char32_t> {
            return std::exchange(marked, false) || takeWord("\\u") ? readUnit() : std::nullopt;
        };
        return appendUtf16(text, nextUnit) || fail("Unpaired surrogate");
    }

    std::optional<char32_t> readUnit() {
        std::uint32_t unit = 0;
        const std::string_view digits = text_.substr(position_, 4);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        if (digits.size() != 4 || error != std::errc() || end != digits.data() + 4)
            return fail("Invalid escape sequence"), std::nullopt;
        position_ += 4;
        return unit;
    }

    bool readNumber(Value& value) {
        const std::size_t begin = position_;
        bool whole = true;
        take('-');
        const bool leadingZero = at('0');
        const std::size_t integer = position_;
        if (!skipDigits())
            return fail("Invalid value");
        if (leadingZero && position_ - integer > 1)
            return fail("Number with leading zero");
        if (take('.')) {
            whole = false;
            if (!skipDigits())
                return fail("Number with a missing fraction");
        }
        if (take('e') || take('E')) {
            whole = false;
            if (!take('+'))
                take('-');
            if (!skipDigits())
                return fail("Number with a missing exponent");
        }
        value = number(text_.substr(begin, position_ - begin), whole);
        return true;
    }

    bool skipDigits() {
        const std::size_t begin = position_;
        while (digitAt())
            ++position_;
        return position_ > begin;
    }

    static Value number(std::string_view digits, bool whole) {
        const char* end = digits.data() + digits.size();
        std::int64_t integer = 0;
        if (whole && std::from_chars(digits.data(), end, integer).ec == std::errc())
            return Value(integer);
        return Value(realNumber(digits));
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string message_;
};

void appendQuoted(std::string& json, std::string_view text) {
    static constexpr std::string_view digits = "0123456789abcdef";
    static constexpr std::string_view escaped = "\"\\/\b\f\n\r\t";
    static constexpr std::string_view names = "\"\\/bfnrt";
    json += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const auto index = escaped.find(c);
        if (index != std::string_view::npos)
            json += {'\\', names[index]};
        else if (byte < 0x20)
            json += {'\\', 'u', '0', '0', digits[byte >> 4U], digits[byte & 0xFU]};
        else
            json += c;
    }
    json += '"';
}

} // namespace

Result<Value> parseJSON(std::string_view bytes) {
    if (bytes.empty())
        return readError("No value.");
    const auto text = decodeUnicode(bytes);
    if (!text)
        return readError("Unable to convert data to string.");
    return Reader(*text).document();
}

Result<std::string> serializeJSON(const std::map<std::string, std::string>& object) {
    std::string json = "{";
    for (const auto& [key, value] : object) {
        if (!isValidUtf8(key) || !isValidUtf8(value))
            return cocoaError(writeStreamError, "Invalid text in JSON write.");
        if (json.size() > 1)
            json += ',';
        appendQuoted(json, key);
        json += ':';
        appendQuoted(json, value);
    }
    return json + "}";
}

} // namespace foundation
