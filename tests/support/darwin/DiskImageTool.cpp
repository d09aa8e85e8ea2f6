// The system's own disk image tool is where TOLVIX_TEST_HDIUTIL says.

#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int execve(const char* path, char* const* arguments, char* const* variables) noexcept {
    const char* tool = std::getenv("TOLVIX_TEST_HDIUTIL");
    const bool isMeant = tool != nullptr && std::strcmp(path, "/usr/bin/hdiutil") == 0;
    return static_cast<int>(::syscall(SYS_execve, isMeant ? tool : path, arguments, variables));
}
