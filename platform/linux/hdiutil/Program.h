#pragma once

#include "platform/linux/hdiutil/Interruption.h"

#include <string>
#include <vector>

namespace hdiutil {

// What a program that has ended left behind.
struct ProgramResult {
    int status = 0; // exit status, or 128 plus the signal that ended it; 127 if it could not be started
    std::string output;
    std::string errors;
};

// A program to run to its end.
struct Program {
    std::string path; // absolute
    std::vector<std::string> arguments;
    int input;          // open file that becomes standard input, or -1
    std::string folder; // that becomes the working folder

    // Runs the program with a small environment of its own and no other descriptors, and waits for it. It is killed
    // with this process, and when the work is interrupted, which throws Failure.
    ProgramResult run(Interruption& interruption) const;
};

} // namespace hdiutil
