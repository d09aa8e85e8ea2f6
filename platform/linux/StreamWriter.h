#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace platform {

// Writes to one of the standard streams and never waits for its reader longer than a moment. What the reader has not
// taken is kept, up to a limit, and goes first the next time. One thread at a time; a stream that nobody reads any more
// is no error.
class StreamWriter {
public:
    explicit StreamWriter(int descriptor) : descriptor_(descriptor) {}

    // Whole lines; beyond the limit they are left out, and a line says so.
    void write(std::string_view bytes);

    // Waits as long as that for the reader to take what is kept. Whether nothing is kept any more.
    bool flush(std::chrono::milliseconds patience);

private:
    const int descriptor_;
    std::string kept_;
    bool hasLeftOut_ = false;
    bool isStalled_ = false;
};

} // namespace platform
