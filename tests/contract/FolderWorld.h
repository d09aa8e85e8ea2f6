#pragma once

#include "tests/contract/TestFolder.h"
#include "tests/support/FakeFiles.h"

#include <string>

namespace tests {

// A place for files that a contract's world has: a real folder.
struct FolderWorld {
    std::string folder() const { return place.path(); }
    void addFile(const std::string& path, const std::string& bytes = {}) const {
        place.write(path.substr(folder().size() + 1), bytes);
    }
    static bool has(const std::string& path) { return std::filesystem::exists(path); }

    TestFolder place;
};

// The same in memory.
struct FakeFolderWorld {
    static std::string folder() { return "/folder"; }
    void addFile(const std::string& path) { files.addFile(path); }
    bool has(const std::string& path) { return files.has(path); }

    FakeFiles files;
};

} // namespace tests
