#include "platform/posix/PathText.h"

namespace platform {

bool isPath(const std::string& text) {
    return !text.empty() && text.find('\0') == std::string::npos;
}

bool isPlainName(const std::string& text) {
    return isPath(text) && !isDots(text) && text.find('/') == std::string::npos;
}

bool isDots(const std::string& name) {
    return name == "." || name == "..";
}

} // namespace platform
