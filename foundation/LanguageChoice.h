#pragma once

#include <optional>
#include <string>
#include <vector>

namespace foundation {

// Which of the available localizations ("en", "pt-BR", "zh-Hans") serves a person best who prefers those languages,
// best first. For each preferred language in turn: the same one, then the same language and script, then the base
// language. Then the development language, then English; nothing when neither is there. A region decides nothing by
// itself: someone who reads "fr-CH" gets French, never the German of the same country.
std::optional<std::string> chooseLocalization(const std::vector<std::string>& available,
                                              const std::vector<std::string>& preferred,
                                              const std::string& developmentLanguage);

} // namespace foundation
