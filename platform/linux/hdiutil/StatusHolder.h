#pragma once

namespace hdiutil {

// Keeps standard output open until just after this process has ended, through a child that does nothing else. Without
// it, a reader that stops at end of output sees that end before the exit status exists, because the kernel closes a
// process's files first, and takes a failed run for a good one. Call it last, immediately before a failing exit.
void holdOutputUntilExit();

} // namespace hdiutil
