#pragma once

#include <string>

namespace platform {

// Puts a file with these bytes, for its user alone, in the place of the one at the path, or where none is. The path's
// folder must exist. The new file is written under another name and renamed, so that the old or the new one stands
// there whole. That is done by a child of its own session: when this process is killed meanwhile, the replacement is
// still brought to its end and the other name is gone; only the end of the whole system can leave it. It is not waited
// for that the bytes reach the disk. False when the file does not have these bytes afterwards.
bool replaceFile(const std::string& path, const std::string& bytes);

} // namespace platform
