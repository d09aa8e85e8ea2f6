#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace platform {

// The text with all control bytes shown as escapes but line ends and tabs: those lay it out, the others could drive the
// terminal.
std::string printableText(std::string_view text);

// What the program writes to its standard streams, in one order. The lowest line of the terminal can hold a changing
// text (a progress bar, a prompt) that messages must not run into. Any thread; a stream that nobody reads any more is
// no error.
class TerminalOutput {
public:
    // The one of this process. It is never destroyed, because workers may still log while the program ends.
    static TerminalOutput& shared();

    // Replaces the text on the lowest line of the descriptor's terminal. It has no line end and is narrower than the
    // terminal, one column per byte.
    void show(int descriptor, const std::string& text);

    // Takes the text off the terminal again.
    void clear();

    // The line has ended by itself, because the person pressed Return.
    void forget();

    // Writes whole lines, in one piece. Where a text is shown on the same terminal, they appear above it.
    void write(int descriptor, std::string_view lines);

private:
    std::string erasure() const;

    std::mutex mutex_;
    int descriptor_ = -1;
    std::string shown_;
};

} // namespace platform
