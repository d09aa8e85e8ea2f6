#include "foundation/LanguageChoice.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace foundation {

namespace {

struct Tag {
    std::string language;
    std::string script;
};

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c == '_')
            c = '-';
    }
    return result;
}

// Names that stand for another language, or whose readers are served by it.
struct Alias {
    std::string_view name;
    std::string_view language;
    std::string_view script; // of the name without a script or region; empty where the language has but one
};
constexpr std::array aliases{
    Alias{"no", "nb", ""},      Alias{"nn", "nb", ""},      Alias{"iw", "he", ""},      Alias{"in", "id", ""},
    Alias{"english", "en", ""}, Alias{"sh", "sr", "latn"},  Alias{"bs", "hr", ""},      Alias{"cmn", "zh", "hant"},
    Alias{"yue", "zh", "hant"}, Alias{"nan", "zh", "hant"}, Alias{"hak", "zh", "hant"},
};

// Chinese is written in two scripts, and its regions are the usual way to name them.
std::string chineseScript(const std::string& region, std::string_view otherwise) {
    if (region == "tw" || region == "hk" || region == "mo")
        return "hant";
    if (region == "cn" || region == "sg" || region == "my")
        return "hans";
    return std::string(otherwise);
}

Tag parse(std::string_view name) {
    const std::string text = lowered(name);
    std::vector<std::string> parts(1);
    for (const char c : text)
        if (c == '-')
            parts.emplace_back();
        else
            parts.back() += c;
    Tag tag{parts.front(), {}};
    std::string region;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].size() == 4 && tag.script.empty())
            tag.script = parts[i];
        if ((parts[i].size() == 2 || parts[i].size() == 3) && region.empty())
            region = parts[i];
    }
    std::string_view usualScript;
    const auto* alias =
        std::find_if(aliases.begin(), aliases.end(), [&](const Alias& one) { return one.name == tag.language; });
    if (alias != aliases.end()) {
        tag.language = alias->language;
        usualScript = alias->script;
    }
    if (tag.language == "zh" && tag.script != "hans" && tag.script != "hant")
        tag.script = chineseScript(region, usualScript.empty() ? "hans" : usualScript);
    else if (tag.script.empty())
        tag.script = usualScript;
    return tag;
}

// A language without a table of its own name may still have one that its readers share.
std::optional<std::string> sharedTable(const std::string& preferred) {
    const std::string name = lowered(preferred);
    const std::string language = parse(preferred).language;
    if (language == "es" && name != "es" && name != "es-es")
        return "es-419";
    if (language == "pt")
        return name == "pt" || name == "pt-br" ? "pt-BR" : "pt-PT";
    return std::nullopt;
}

} // namespace

std::optional<std::string> chooseLocalization(const std::vector<std::string>& available,
                                              const std::vector<std::string>& preferred,
                                              const std::string& developmentLanguage) {
    const auto named = [&](std::string_view name) -> std::optional<std::string> {
        const auto found = std::find_if(available.begin(), available.end(),
                                        [&](const std::string& one) { return lowered(one) == lowered(name); });
        return found == available.end() ? std::nullopt : std::optional(*found);
    };
    const auto inScript = [&](const Tag& tag) -> std::optional<std::string> {
        for (const std::string& one : available) {
            const Tag other = parse(one);
            if (!tag.script.empty() && other.language == tag.language && other.script == tag.script)
                return one;
        }
        return std::nullopt;
    };
    for (const std::string& language : preferred) {
        const Tag tag = parse(language);
        if (auto exact = named(language))
            return exact;
        if (auto shared = sharedTable(language)) {
            if (auto table = named(*shared))
                return table;
        }
        if (auto sameScript = inScript(tag))
            return sameScript;
        const bool otherScript = tag.language == "zh"; // its base language alone says nothing about the script
        if (auto base = otherScript ? std::nullopt : named(tag.language))
            return base;
    }
    if (auto development = named(developmentLanguage))
        return development;
    return named("en");
}

} // namespace foundation
