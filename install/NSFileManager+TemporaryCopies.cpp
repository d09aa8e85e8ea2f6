#include "install/NSFileManager+ExtendedAttributes.h"

#include "foundation/MessageText.h"
#include "foundation/PathString.h"
#include "foundation/Unicode.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>

namespace path = foundation::path;

namespace NSFileManager::ExtendedAttributes {

namespace {

constexpr int lastCounter = 999999;

// Letters and digits of every script, and ".-()". Beyond ASCII everything counts as a letter but the blocks of
// punctuation, symbols and spaces that surround a version in practice.
bool belongsToVersion(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character.front());
    if (foundation::utf8SequenceLength(character) != character.size())
        return false; // no character at all
    if (lead < 0x80)
        return std::isalnum(lead) != 0 || std::string_view(".-()").find(character.front()) != std::string_view::npos;
    const bool latinSymbol = lead == 0xC2 && static_cast<unsigned char>(character[1]) < 0xC0;
    const bool punctuation = lead == 0xE2 && static_cast<unsigned char>(character[1]) < 0xB0;
    const bool ideographicSpace = character == "\xE3\x80\x80";
    return !latinSymbol && !punctuation && !ideographicSpace;
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string trimmedVersion(std::string_view version) {
    while (!version.empty()) {
        std::size_t length = 1;
        while (length < version.size() && continuesCharacter(version[length]))
            ++length;
        if (belongsToVersion(version.substr(0, length)))
            break;
        version.remove_prefix(length);
    }
    while (!version.empty()) {
        std::size_t start = version.size() - 1;
        while (start > 0 && continuesCharacter(version[start]))
            --start;
        if (belongsToVersion(version.substr(start)))
            break;
        version.remove_suffix(version.size() - start);
    }
    return std::string(version);
}

std::string versionOf(const std::string& bundlePath) {
    const auto information = platform::current().bundles->bundleInformation(bundlePath);
    if (!information)
        return "old";
    const auto* version = member(*information, "CFBundleVersion");
    return version == nullptr ? foundation::absentText : trimmedVersion(version->description());
}

std::string_view takeCharacter(std::string_view& text) {
    const std::string_view character = text.substr(0, std::max<std::size_t>(foundation::utf8SequenceLength(text), 1));
    text.remove_prefix(character.size());
    return character;
}

// Whether the name is the bundle's, a blank, a version in parentheses, and anything on one line.
// Deliberate: the bundle's name is a pattern itself, in which "." stands for any character; one with any other pattern
// character matches nothing. Only digits and dots count as a version, although temporary copies can be named otherwise;
// such a copy is never found.
bool isTemporaryCopy(std::string_view name, std::string_view bundleName) {
    if (name.find_first_of("\n\r") != std::string_view::npos)
        return false;
    if (bundleName.find_first_of("\\^$|()[]{}*+?") != std::string_view::npos)
        return false;
    while (!bundleName.empty()) {
        const std::string_view expected = takeCharacter(bundleName);
        if (name.empty())
            return false;
        const std::string_view found = takeCharacter(name);
        if (found != expected && expected != ".")
            return false;
    }
    if (name.substr(0, 2) != " (")
        return false;
    name.remove_prefix(2);
    const auto end = name.find_first_not_of("0123456789.");
    return end != 0 && end != std::string_view::npos && name[end] == ')';
}

} // namespace

std::string _temporaryCopyNameForPath(const std::string& bundlePath) {
    const std::string stem = path::deletingPathExtension(bundlePath) + " (" + versionOf(bundlePath) + ")";
    const std::string extension = path::pathExtension(bundlePath);
    std::string candidate = path::appendingPathExtension(stem, extension);
    for (int counter = 2; counter <= lastCounter && platform::current().fileQueries->fileExists(candidate); ++counter)
        candidate = path::appendingPathExtension(stem + " " + std::to_string(counter), extension);
    return candidate;
}

std::optional<std::vector<std::string>> _temporaryFailedCopiesForPath(const std::string& bundlePath) {
    const auto names =
        platform::current().fileQueries->contentsOfDirectory(path::deletingLastPathComponent(bundlePath));
    if (!names)
        return std::nullopt;
    const std::string bundleName = path::deletingPathExtension(path::lastPathComponent(bundlePath));
    std::vector<std::string> leftovers;
    std::copy_if(names->begin(), names->end(), std::back_inserter(leftovers),
                 [&](const std::string& name) { return isTemporaryCopy(name, bundleName); });
    return leftovers.empty() ? std::nullopt : std::optional(std::move(leftovers));
}

} // namespace NSFileManager::ExtendedAttributes
