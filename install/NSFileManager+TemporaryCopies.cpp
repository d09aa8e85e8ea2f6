#include "install/NSFileManager+ExtendedAttributes.h"

#include "foundation/PathString.h"
#include "foundation/Text.h"
#include "platform/Platform.h"

#include <cctype>
#include <regex>
#include <string_view>

namespace path = foundation::path;

namespace NSFileManager::ExtendedAttributes {

namespace {

constexpr int lastCounter = 999999;

// Letters and digits of every script, and ".-()". Beyond ASCII everything counts as a letter but the blocks of
// punctuation, symbols and spaces that surround a version in practice.
bool belongsToVersion(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character.front());
    if (lead < 0x80) {
        return std::isalnum(lead) != 0 || std::string_view(".-()").find(character.front()) != std::string_view::npos;
    }
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

} // namespace

std::string _temporaryCopyNameForPath(const std::string& bundlePath) {
    const std::string stem = path::deletingPathExtension(bundlePath) + " (" + versionOf(bundlePath) + ")";
    const std::string extension = path::pathExtension(bundlePath);
    std::string candidate = path::appendingPathExtension(stem, extension);
    for (int counter = 2; counter <= lastCounter && platform::current().fileQueries->fileExists(candidate); ++counter) {
        candidate = path::appendingPathExtension(stem + " " + std::to_string(counter), extension);
    }
    return candidate;
}

std::optional<std::vector<std::string>> _temporaryFailedCopiesForPath(const std::string& bundlePath) {
    const auto names =
        platform::current().fileQueries->contentsOfDirectory(path::deletingLastPathComponent(bundlePath));
    if (!names)
        return std::nullopt;
    std::vector<std::string> leftovers;
    try {
        // Deliberate: the name goes in unescaped, and only digits and dots count in the parentheses, although temporary
        // copies can be named otherwise; such a copy is never found.
        const std::regex pattern(path::deletingPathExtension(path::lastPathComponent(bundlePath)) +
                                 R"( \([0-9\.]+\).*)");
        for (const std::string& name : *names) {
            if (std::regex_match(name, pattern))
                leftovers.push_back(name);
        }
    } catch (const std::regex_error&) {
        return std::nullopt; // a name that makes no pattern matches nothing
    }
    return leftovers.empty() ? std::nullopt : std::optional(std::move(leftovers));
}

} // namespace NSFileManager::ExtendedAttributes
