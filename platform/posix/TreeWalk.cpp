#include "platform/posix/TreeWalk.h"

#include <utility>

namespace platform {

void walkTree(FolderCursor& at, FolderVisitor& visitor) {
    struct Level {
        std::string name;
        std::vector<std::string> ahead;
    };
    std::vector<Level> levels;
    levels.push_back({{}, visitor.enterFolder(at)});
    while (true) {
        std::vector<std::string>& ahead = levels.back().ahead;
        if (ahead.empty()) {
            const std::string left = std::move(levels.back().name);
            levels.pop_back();
            if (levels.empty())
                return;
            at.leave();
            visitor.leaveFolder(at, left);
            continue;
        }
        const std::string name = std::move(ahead.back());
        ahead.pop_back();
        FileDescriptor folder = visitor.openFolder(at, name);
        if (!folder.isOpen())
            continue;
        at.enter(name, std::move(folder));
        levels.push_back({name, visitor.enterFolder(at)});
    }
}

} // namespace platform
