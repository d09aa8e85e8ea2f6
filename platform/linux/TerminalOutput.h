#pragma once

#include "platform/linux/StreamWriter.h"

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace platform {

// What the program writes to its standard streams, in one order. The lowest line of the terminal can hold a changing
// text (a progress bar, a prompt) that messages must not run into. Any thread; nobody waits longer than a moment for
// a reader, and a stream that nobody reads any more is no error.
class TerminalOutput {
public:
    // The one of this process. It is never destroyed, because workers may still log while the program ends.
    static TerminalOutput& shared();

    // Replaces the text on the lowest line of the descriptor's terminal, after writing whole lines above it. It has no
    // line end and is narrower than the terminal, one column per byte. On a plain terminal it cannot be replaced again.
    void show(int descriptor, const std::string& text, std::string_view linesAbove = {});

    // Takes the text off the terminal again, with what the terminal itself has added to it, such as "^C".
    void clear();

    // The line has ended by itself, because the person pressed Return.
    void forget();

    // Writes whole lines, in one piece. Where a text is shown on the same terminal, they appear above it.
    void write(int descriptor, std::string_view lines);

    // Waits as long as that for the readers of both streams. Whether they have taken everything.
    bool flush(std::chrono::milliseconds patience);

private:
    void put(int descriptor, const std::string& bytes);
    std::string erasure() const;

    std::mutex mutex_;
    StreamWriter output_;
    StreamWriter errors_;
    int descriptor_ = -1;
    std::string shown_;

    TerminalOutput();
};

} // namespace platform
