// Copies an item as the program does: copy_tool FROM TO
#include "platform/posix/PosixFileChanges.h"

#include <cstdio>

int main(int argc, char** argv) {
    std::optional<foundation::Error> error;
    if (argc == 3 && platform::PosixFileChanges({}).copyItem(argv[1], argv[2], &error))
        return 0;
    std::fprintf(stderr, "%s\n", error ? error->description().c_str() : "usage: copy_tool FROM TO");
    return 1;
}
