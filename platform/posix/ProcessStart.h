#pragma once

#include <optional>
#include <string>

namespace platform {

// Puts in order what the parent process left behind: blocked and ignored signals, closed standard streams, a low limit
// of open files. Called first thing in main, before there is a thread or an open file. One line for people when the
// system gives too little to run at all; nothing otherwise.
//
// Interrupt, hang-up, quit and the terminal's stop signals stay ignored where the parent ignores them: that is how a
// program is told to run on in the background. Writing to a pipe that nobody reads, and beyond the largest size of a
// file, are ordinary errors from then on.
std::optional<std::string> prepareProcess();

} // namespace platform
