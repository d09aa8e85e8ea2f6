#pragma once

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tests {

// The real file services at work in a new folder. In it are the folders that no removal of a private folder may reach.
class FilesTest : public testing::Test {
protected:
    FilesTest() {
        for (const char* name : {"home", "Applications", "tmp"})
            std::filesystem::create_directory(at(name));
    }

    std::string at(const std::string& name) const { return folder_.path(name); }

    // A folder with a file, a folder with a file, and a link of each kind.
    void addTree(const std::string& name) const {
        folder_.write(name + "/file", "bytes");
        folder_.write(name + "/folder/.hidden", "below");
        std::filesystem::create_symlink("file", at(name + "/toFile"));
        std::filesystem::create_symlink("folder", at(name + "/toFolder"));
        std::filesystem::create_symlink("nowhere", at(name + "/dangling"));
    }

    // The code of the error, or 0 for success.
    template <class Operation, class... Paths>
    std::int64_t codeOf(Operation operation, const Paths&... paths) {
        std::optional<foundation::Error> error;
        if ((changes_.*operation)(paths..., &error))
            return 0;
        return error && error->domain == "NSCocoaErrorDomain" ? error->code : -1;
    }
    std::int64_t copy(const std::string& from, const std::string& to) {
        return codeOf(&platform::PosixFileChanges::copyItem, at(from), at(to));
    }
    std::int64_t move(const std::string& from, const std::string& to) {
        return codeOf(&platform::PosixFileChanges::moveItem, at(from), at(to));
    }
    std::int64_t remove(const std::string& name) { return codeOf(&platform::PosixFileChanges::removeItem, at(name)); }
    std::int64_t create(const std::string& name) {
        return codeOf(&platform::PosixFileChanges::createDirectory, at(name));
    }

    // Mode, owner, time, and bytes or link target of an item and of all below it.
    std::map<std::string, std::string> traitsBelow(const std::string& name) const {
        std::map<std::string, std::string> traits{{"", traitsOf(name)}};
        for (const auto& entry : std::filesystem::recursive_directory_iterator(at(name))) {
            const std::string below = entry.path().string().substr(at(name).size());
            traits[below] = traitsOf(name + below);
        }
        return traits;
    }
    std::string traitsOf(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat(at(name).c_str(), &status), 0) << name;
        std::ostringstream text;
        text << std::oct << status.st_mode << std::dec << ' ' << status.st_uid << ' ' << status.st_mtim.tv_sec << '.'
             << status.st_mtim.tv_nsec << ' ';
        if (S_ISREG(status.st_mode))
            text << folder_.read(name);
        if (S_ISLNK(status.st_mode))
            text << std::filesystem::read_symlink(at(name)).string();
        return text.str();
    }

    TestFolder folder_;
    platform::PosixFileQueries queries_;
    platform::PosixFileChanges changes_{{at("home"), at("Applications"), at("tmp")}};
};

} // namespace tests
