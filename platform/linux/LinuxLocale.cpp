#include "platform/linux/LinuxLocale.h"

#include "platform/linux/Environment.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace platform {
namespace {

// A locale name such as "sr_Latn_RS.UTF-8@latin", taken apart; a missing part is empty. Without a language it is the
// locale "C".
struct LocaleName {
    std::string language;
    std::string script;
    std::string region;
};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string changed(std::string_view text, char (*change)(char)) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), change);
    return result;
}

std::string_view takePart(std::string_view& rest) {
    const std::size_t end = std::min(rest.find_first_of("_-"), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

// The names that languages have today, for those that systems still write in their former ones.
std::string currentLanguage(const std::string& language) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 4> renamed{
        {{"no", "nb"}, {"iw", "he"}, {"in", "id"}, {"ji", "yi"}}};
    const auto* found = std::find_if(renamed.begin(), renamed.end(),
                                     [&language](const auto& entry) { return entry.first == language; });
    return found == renamed.end() ? language : std::string(found->second);
}

// The script that the modifier of a locale name says, as in "sr_RS@latin"; empty for "@euro" and the like.
std::string scriptOfModifier(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 3> scripts{
        {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}}};
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos)
        return {};
    const std::string modifier = changed(text.substr(at + 1), lower);
    const auto* found =
        std::find_if(scripts.begin(), scripts.end(), [&](const auto& entry) { return entry.first == modifier; });
    return found == scripts.end() ? std::string() : std::string(found->second);
}

LocaleName parse(std::string_view text) {
    std::string_view rest = text.substr(0, text.find_first_of(".@"));
    const std::string_view language = takePart(rest);
    LocaleName name;
    if (language.size() < 2 || language.size() > 8 || !std::all_of(language.begin(), language.end(), isLetter) ||
        language == "POSIX")
        return name;
    name.language = currentLanguage(changed(language, lower));
    std::string_view part = takePart(rest);
    if (part.size() == 4 && std::all_of(part.begin(), part.end(), isLetter)) {
        name.script = upper(part.front()) + changed(part.substr(1), lower);
        part = takePart(rest);
    } else {
        name.script = scriptOfModifier(text);
    }
    if ((part.size() == 2 && std::all_of(part.begin(), part.end(), isLetter)) ||
        (part.size() == 3 && std::all_of(part.begin(), part.end(), isDigit)))
        name.region = changed(part, upper);
    return name;
}

std::string languageOf(const LocaleName& name) {
    if (name.language.empty())
        return "en";
    // Chinese is told apart by its script; these two regions stand for one.
    if (name.language == "zh" && name.script.empty() && name.region == "CN")
        return "zh-Hans";
    if (name.language == "zh" && name.script.empty() && name.region == "TW")
        return "zh-Hant";
    std::string text = name.language;
    for (const std::string& part : {name.script, name.region})
        text += part.empty() ? part : '-' + part;
    return text;
}

LocaleName localeOfMessages() {
    return parse(environment::locale("LC_MESSAGES"));
}

} // namespace

std::optional<std::string> LinuxLocale::countryCode() {
    const LocaleName name = localeOfMessages();
    return name.region.empty() ? std::nullopt : std::optional(name.region);
}

std::vector<std::string> LinuxLocale::preferredLanguages() {
    const LocaleName locale = localeOfMessages();
    std::vector<std::string> languages;
    const auto add = [&languages](const std::string& language) {
        if (std::find(languages.begin(), languages.end(), language) == languages.end())
            languages.push_back(language);
    };
    // In the locale "C" the list counts for nothing, as for every other program.
    const std::string value = locale.language.empty() ? std::string() : environment::value("LANGUAGE");
    std::string_view list = value;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        if (end > 0)
            add(languageOf(parse(list.substr(0, end))));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    add(languageOf(locale));
    return languages;
}

} // namespace platform
