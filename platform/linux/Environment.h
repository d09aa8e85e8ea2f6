#pragma once

#include <cstdlib>
#include <string>

// The environment variables of this process, which nothing changes while threads run.
namespace platform::environment {

// The variable's value; empty when it is not set.
inline std::string value(const char* name) {
    const char* const found = std::getenv(name);
    return found == nullptr ? std::string() : std::string(found);
}

// The name of the locale for a category such as "LC_MESSAGES".
inline std::string locale(const char* category) {
    for (const char* name : {"LC_ALL", category, "LANG"})
        if (std::string found = value(name); !found.empty())
            return found;
    return {};
}

} // namespace platform::environment
