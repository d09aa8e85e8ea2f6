#pragma once

#include "platform/linux/hdiutil/Failure.h"

#include <string>
#include <vector>

namespace hdiutil {

// What the user asked for.
struct Command {
    enum class Verb { Attach, Detach };

    Verb verb = Verb::Attach;
    std::string image; // attach only
    std::string mountPoint;
};

// A command line that makes no sense; the text says why.
class UsageError : public Failure {
public:
    using Failure::Failure;
};

// Reads the words after the program's name; options may stand in any order. Throws UsageError.
Command parseCommandLine(const std::vector<std::string>& words);

// The text that explains the command line.
const char* usageText();

} // namespace hdiutil
