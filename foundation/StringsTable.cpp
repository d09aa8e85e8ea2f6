#include "foundation/StringsTable.h"

#include "foundation/Unicode.h"

#include <cctype>
#include <utility>

namespace foundation {

namespace {

using Table = std::map<std::string, std::string>;

// Reads the old-style property list that a table is. Every operation returns false at the first fault.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    bool readTable(Table& table) {
        skipBlanks();
        const bool braces = take('{');
        for (skipBlanks(); position_ < text_.size() && !at('}'); skipBlanks())
            if (!readEntry(table))
                return false;
        if (braces && !take('}'))
            return false;
        skipBlanks();
        return position_ == text_.size();
    }

private:
    bool at(char c) const { return position_ < text_.size() && text_[position_] == c; }

    bool take(char c) {
        if (!at(c))
            return false;
        ++position_;
        return true;
    }

    bool takeMark(std::string_view mark) {
        if (text_.substr(position_, mark.size()) != mark)
            return false;
        position_ += mark.size();
        return true;
    }

    void skipBlanks() {
        while (position_ < text_.size()) {
            if (std::isspace(static_cast<unsigned char>(text_[position_])) != 0) {
                ++position_;
            } else if (takeMark("//")) {
                position_ = std::min(text_.find('\n', position_), text_.size());
            } else if (takeMark("/*")) {
                const auto end = text_.find("*/", position_);
                position_ = end == std::string_view::npos ? text_.size() : end + 2;
            } else {
                return;
            }
        }
    }

    bool readEntry(Table& table) {
        std::string key;
        if (!readWord(key))
            return false;
        skipBlanks();
        std::string value = key;
        if (take('=')) {
            skipBlanks();
            value.clear();
            if (!readWord(value))
                return false;
            skipBlanks();
        }
        if (!take(';'))
            return false;
        table.insert_or_assign(std::move(key), std::move(value));
        return true;
    }

    bool readWord(std::string& word) {
        for (const char quote : {'"', '\''})
            if (take(quote))
                return readQuoted(word, quote);
        const auto plain = [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                   std::string_view("_$/:.-").find(c) != std::string_view::npos;
        };
        while (position_ < text_.size() && plain(text_[position_]))
            word += text_[position_++];
        return !word.empty();
    }

    bool readQuoted(std::string& word, char quote) {
        while (position_ < text_.size()) {
            const char c = text_[position_++];
            if (c == quote)
                return true;
            if (c != '\\')
                word += c;
            else if (!readEscape(word))
                return false;
        }
        return false;
    }

    bool readEscape(std::string& word) {
        if (position_ >= text_.size())
            return false;
        const char c = text_[position_];
        if (c >= '0' && c <= '7')
            return appendUtf8(word, readDigits(3, 8)), true;
        ++position_;
        if (c == 'U')
            return readUnicodeEscape(word);
        static constexpr std::string_view names = "abfnrtv";
        static constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
        const auto index = names.find(c);
        word += index == std::string_view::npos ? c : meanings[index];
        return true;
    }

    bool readUnicodeEscape(std::string& word) {
        bool marked = true; // the first unit's mark is read already
        return appendUtf16(word, [&]() -> std::optional<char32_t> {
            if (!std::exchange(marked, false) && !takeMark("\\U"))
                return std::nullopt;
            return readDigits(4, 16);
        });
    }

    char32_t readDigits(int most, char32_t base) {
        static constexpr std::string_view digits = "0123456789abcdef";
        char32_t number = 0;
        for (; most > 0 && position_ < text_.size(); --most, ++position_) {
            const int lower = std::tolower(static_cast<unsigned char>(text_[position_]));
            const auto digit = digits.find(static_cast<char>(lower));
            if (digit >= base)
                break;
            number = number * base + static_cast<char32_t>(digit);
        }
        return number;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

} // namespace

std::optional<std::map<std::string, std::string>> parseStringsTable(std::string_view bytes) {
    const auto text = decodeUnicode(bytes);
    Table table;
    if (bytes.empty() || !text || !Reader(*text).readTable(table))
        return std::nullopt;
    return table;
}

} // namespace foundation
