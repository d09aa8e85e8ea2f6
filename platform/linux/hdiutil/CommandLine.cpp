#include "platform/linux/hdiutil/CommandLine.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace hdiutil {
namespace {

using Words = std::vector<std::string>;

// All three hold here anyway: nothing is verified, shown in a browser or opened.
constexpr std::array<std::string_view, 3> attachFlags = {"-noverify", "-nobrowse", "-noautoopen"};

void setOnce(std::string& value, const std::string& word, const char* name) {
    if (word.empty())
        throw UsageError(std::string("the ") + name + " is empty");
    if (!value.empty())
        throw UsageError(std::string("more than one ") + name);
    value = word;
}

bool isOption(const std::string& word) {
    return word.starts_with('-');
}

Command parseAttach(const Words& words) {
    Command command{Command::Verb::Attach, {}, {}};
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (*word == "-mountpoint") {
            if (++word == words.end())
                throw UsageError("-mountpoint needs a folder");
            setOnce(command.mountPoint, *word, "mount point");
        } else if (!isOption(*word)) {
            setOnce(command.image, *word, "image");
        } else if (std::find(attachFlags.begin(), attachFlags.end(), *word) == attachFlags.end()) {
            throw UsageError("unknown option " + *word);
        }
    }
    if (command.image.empty())
        throw UsageError("no image given");
    if (command.mountPoint.empty())
        throw UsageError("-mountpoint is required");
    return command;
}

Command parseDetach(const Words& words) {
    Command command{Command::Verb::Detach, {}, {}};
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        if (!isOption(*word))
            setOnce(command.mountPoint, *word, "mount point");
        else if (*word != "-force")
            throw UsageError("unknown option " + *word);
    if (command.mountPoint.empty())
        throw UsageError("no mount point given");
    return command;
}

} // namespace

Command parseCommandLine(const Words& words) {
    if (words.empty())
        throw UsageError("no command given");
    if (words.front() == "attach")
        return parseAttach(words);
    if (words.front() == "detach")
        return parseDetach(words);
    throw UsageError("unknown command " + words.front());
}

const char* usageText() {
    return "Usage: hdiutil attach IMAGE -mountpoint DIR [-noverify] [-nobrowse] [-noautoopen]\n"
           "       hdiutil detach DIR [-force]\n";
}

} // namespace hdiutil
