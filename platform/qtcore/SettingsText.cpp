#include "platform/qtcore/SettingsText.h"

#include "foundation/Unicode.h"
#include "platform/posix/FileDescriptor.h"

#include <QSettings>
#include <QStringList>
#include <QVariant>

#include <array>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <ctime>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view sectionHeader = "[General]";

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

// The name in a line that begins a section.
std::optional<std::string_view> sectionName(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.front() != '[' || line.back() != ']')
        return std::nullopt;
    return trimmed(line.substr(1, line.size() - 2));
}

bool isGeneral(std::string_view section) {
    const std::string_view general = "general";
    return section.size() == general.size() && std::equal(section.begin(), section.end(), general.begin(),
                                                          [](unsigned char a, char b) { return std::tolower(a) == b; });
}

std::string numbered(const char* format, unsigned number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

bool isWordCharacter(char16_t unit) {
    return unit < 0x80 && (std::isalnum(unit) != 0 || unit == '_' || unit == '-' || unit == '.');
}

// As QSettings writes it.
std::string encodedKey(const std::string& key) {
    std::string text;
    for (const QChar character : QString::fromStdString(key)) {
        const char16_t unit = character.unicode();
        if (isWordCharacter(unit))
            text += static_cast<char>(unit);
        else
            text += numbered(unit < 0x100 ? "%%%02X" : "%%U%04X", unit);
    }
    return text;
}

std::string quotedValue(const QString& value) {
    std::string text = "\"";
    bool afterNumber = false;
    for (const char byte : value.toStdString()) {
        const auto unit = static_cast<unsigned char>(byte);
        // The escape takes every digit that follows it for its own.
        const bool escaped = unit < 0x20 || unit == 0x7F || (afterNumber && std::isxdigit(unit) != 0);
        if (escaped)
            text += numbered("\\x%x", unit);
        else if (byte == '"' || byte == '\\')
            text += std::string("\\") + byte;
        else
            text += byte;
        afterNumber = escaped;
    }
    return text + '"';
}

std::string encodedValue(const std::string& value) {
    QString text = QString::fromStdString(value);
    // An at sign in front announces values of other kinds.
    if (text.startsWith(QLatin1Char('@')))
        text.prepend(QLatin1Char('@'));
    bool plain = true;
    for (const QChar character : text)
        plain = plain && (isWordCharacter(character.unicode()) || character.unicode() >= 0x80);
    return plain ? text.toStdString() : quotedValue(text);
}

// QSettings does not read a file again while its name, size and time are the same. It is therefore given a file in
// memory whose time is never the same twice.
FileDescriptor makeMemoryFile(const std::string& bytes) {
    static std::atomic<std::time_t> count = 0;
    FileDescriptor file(::memfd_create("settings", MFD_CLOEXEC));
    const std::time_t time = ++count;
    const std::array<struct timespec, 2> times{{{time, 0}, {time, 0}}};
    if (!file.isOpen() || ::write(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
        ::futimens(file.get(), times.data()) != 0)
        return {};
    return file;
}

// What QSettings makes of one value. Older programs wrote Latin-1.
std::optional<std::string> decodedValue(std::string_view raw) {
    if (raw.find('\0') != std::string_view::npos)
        return std::nullopt;
    const std::string text = foundation::isValidUtf8(raw)
                                 ? std::string(raw)
                                 : QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size())).toStdString();
    const FileDescriptor file = makeMemoryFile("[General]\nvalue=" + text + '\n');
    if (!file.isOpen())
        return std::nullopt;
    const QSettings settings(QStringLiteral("/proc/self/fd/%1").arg(file.get()), QSettings::IniFormat);
    const QVariant value = settings.value(QStringLiteral("value"));
    if (settings.status() != QSettings::NoError)
        return std::nullopt;
    if (value.metaType() == QMetaType::fromType<QStringList>())
        return value.toStringList().join(QStringLiteral(", ")).toStdString();
    return value.isValid() && value.canConvert<QString>() ? std::optional(value.toString().toStdString())
                                                          : std::nullopt;
}

} // namespace

std::string_view SettingsText::textOf(const Line& line) const {
    return std::string_view(bytes_).substr(line.begin, line.end - line.begin);
}

std::vector<SettingsText::Line> SettingsText::generalLines() const {
    std::vector<Line> lines;
    bool general = true;
    std::size_t begin = std::string_view(bytes_).starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    while (begin < bytes_.size()) {
        const std::size_t lineBreak = bytes_.find('\n', begin);
        const Line line{begin, lineBreak == std::string::npos ? bytes_.size() : lineBreak + 1};
        if (const auto name = sectionName(textOf(line)))
            general = isGeneral(*name);
        if (general)
            lines.push_back(line);
        begin = line.end;
    }
    return lines;
}

std::vector<SettingsText::Line> SettingsText::linesOf(const std::string& key) const {
    const std::string name = encodedKey(key);
    std::vector<Line> lines;
    for (const Line& line : generalLines()) {
        const std::string_view text = textOf(line);
        const auto sign = text.find('=');
        if (sign != std::string_view::npos && trimmed(text.substr(0, sign)) == name)
            lines.push_back(line);
    }
    return lines;
}

std::optional<std::string> SettingsText::value(const std::string& key) const {
    const auto lines = linesOf(key);
    if (lines.empty())
        return std::nullopt;
    const std::string_view text = textOf(lines.back());
    return decodedValue(trimmed(text.substr(text.find('=') + 1)));
}

void SettingsText::set(const std::string& key, const std::optional<std::string>& value) {
    const std::string lineBreak = bytes_.find("\r\n") == std::string::npos ? "\n" : "\r\n";
    const std::string line = value ? encodedKey(key) + '=' + encodedValue(*value) + lineBreak : "";
    const auto lines = linesOf(key);
    for (auto old = lines.rbegin(); old != lines.rend(); ++old)
        bytes_.replace(old->begin, old->end - old->begin, old == lines.rbegin() ? line : "");
    if (value && lines.empty())
        append(line);
}

// Behind the last line of the section that says something, or else in a section at the end.
void SettingsText::append(const std::string& line) {
    const std::string lineBreak = line.substr(line.find_last_not_of("\r\n") + 1);
    std::size_t place = 0;
    for (const Line& each : generalLines())
        place = trimmed(textOf(each)).empty() ? place : each.end;
    if (place == 0) {
        const bool isFirst = bytes_.empty() || bytes_ == byteOrderMark;
        bytes_ += (isFirst || bytes_.back() == '\n' ? "" : lineBreak) + (isFirst ? "" : lineBreak) +
                  std::string(sectionHeader) + lineBreak;
        place = bytes_.size();
    }
    const bool open = bytes_[place - 1] != '\n';
    bytes_.insert(place, (open ? lineBreak : "") + line);
}

} // namespace platform
