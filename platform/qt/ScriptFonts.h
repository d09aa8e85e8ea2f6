#pragma once

#include <string>

namespace platform {

// Whether texts can be read here at all.
class ScriptFonts {
public:
    // Whether there is a font with the letters of a language such as "zh-Hant"; without one they would all be boxes.
    // Latin letters are in every font. Main thread.
    static bool canShow(const std::string& language);
};

} // namespace platform
