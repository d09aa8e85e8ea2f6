#include "platform/linux/hdiutil/CommandLine.h"

#include "fuzz/Require.h"
#include "fuzz/Words.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto command = hdiutil::parseCommandLine(words(data, size));
        require(!command.mountPoint.empty());
        require(command.verb == hdiutil::Command::Verb::Detach || !command.image.empty());
    } catch (const hdiutil::UsageError& error) {
        require(!std::string(error.what()).empty());
    }
    return 0;
}
