#include "install/NSFileManager+ExtendedAttributes.h"

#include "foundation/PathString.h"
#include "platform/Platform.h"

#include <cerrno>

namespace NSFileManager::ExtendedAttributes {

namespace {

constexpr const char* quarantineName = "com.apple.quarantine";

} // namespace

int removeXAttr(const char* name, const std::string& fromFile, int options) {
    if (fromFile.find('\0') != std::string::npos) {
        errno = EDOM;
        return -1;
    }
    return platform::current().fileChanges->removeExtendedAttribute(fromFile, name, options);
}

void releaseFromQuarantine(const std::string& path) {
    removeXAttr(quarantineName, path, platform::xattrNoFollow);
    const auto attributes = platform::current().fileQueries->attributesOfItem(path);
    if (!attributes || attributes->type != platform::FileType::Directory)
        return;
    for (const std::string& entry : platform::current().fileQueries->entriesBelow(path))
        removeXAttr(quarantineName, foundation::path::appendingPathComponent(path, entry), platform::xattrNoFollow);
}

} // namespace NSFileManager::ExtendedAttributes
