#pragma once

#include "platform/Files.h"

#include <memory>
#include <optional>
#include <string>

namespace tests {

// File services to test, and another way to the same files.
class FilesWorld {
public:
    virtual ~FilesWorld() = default;

    virtual platform::FileQueries& queries() = 0;
    virtual platform::FileChanges& changes() = 0;

    // A folder of this user. In it are the folders "home", "Applications" and "tmp" alone, which no removal of a
    // private folder may reach.
    virtual std::string root() const = 0;

    virtual void addFolder(const std::string& path) = 0;
    virtual void addFile(const std::string& path, const std::string& bytes) = 0;
    virtual void addLink(const std::string& path, const std::string& target) = 0;

    // "folder", or "file " and its bytes, or "link " and its target, or nothing.
    virtual std::optional<std::string> look(const std::string& path) = 0;
};

std::unique_ptr<FilesWorld> makeRealFiles();
std::unique_ptr<FilesWorld> makeFakeFiles();

} // namespace tests
