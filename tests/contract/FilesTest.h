#pragma once

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakeFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tests {

// File services at work in a new folder. In it are the folders that no removal of a private folder may reach.
class FilesFixture : public testing::Test {
protected:
    virtual platform::FileChanges& changes() = 0;
    virtual std::string at(const std::string& name) const = 0;
    virtual void write(const std::string& name, const std::string& bytes) = 0;
    virtual void link(const std::string& name, const std::string& target) = 0;

    // A folder with a file, a folder with a file, and a link of each kind.
    void addTree(const std::string& name) {
        write(name + "/file", "bytes");
        write(name + "/folder/.hidden", "below");
        link(name + "/toFile", "file");
        link(name + "/toFolder", "folder");
        link(name + "/dangling", "nowhere");
    }

    // The code of the error, or 0 for success.
    template <class Operation, class... Paths>
    std::int64_t codeOf(Operation operation, const Paths&... paths) {
        std::optional<foundation::Error> error;
        if ((changes().*operation)(paths..., &error))
            return 0;
        return error && error->domain == "NSCocoaErrorDomain" ? error->code : -1;
    }
    std::int64_t copy(const std::string& from, const std::string& to) {
        return codeOf(&platform::FileChanges::copyItem, at(from), at(to));
    }
    std::int64_t move(const std::string& from, const std::string& to) {
        return codeOf(&platform::FileChanges::moveItem, at(from), at(to));
    }
    std::int64_t remove(const std::string& name) { return codeOf(&platform::FileChanges::removeItem, at(name)); }
    std::int64_t create(const std::string& name) { return codeOf(&platform::FileChanges::createDirectory, at(name)); }
};

// The real services.
class FilesTest : public FilesFixture {
protected:
    FilesTest() {
        for (const char* name : {"home", "Applications", "tmp"})
            std::filesystem::create_directory(at(name));
    }

    platform::FileQueries& queries() { return queries_; }
    platform::FileChanges& changes() override { return changes_; }
    std::string at(const std::string& name) const override { return folder_.path(name); }
    void write(const std::string& name, const std::string& bytes) override { folder_.write(name, bytes); }
    void link(const std::string& name, const std::string& target) override {
        std::filesystem::create_symlink(target, at(name));
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

// The services of files in memory.
class FakeFilesTest : public FilesFixture {
protected:
    FakeFilesTest() {
        for (const char* name : {"home", "Applications", "tmp"}) {
            files_.addFolder(at(name));
            files_.sharedFolders.insert(at(name));
        }
    }

    platform::FileQueries& queries() { return files_; }
    platform::FileChanges& changes() override { return files_; }
    std::string at(const std::string& name) const override { return name.empty() ? "/scratch" : "/scratch/" + name; }
    void write(const std::string& name, const std::string& bytes) override { files_.addFile(at(name), bytes); }
    void link(const std::string& name, const std::string& target) override { files_.addLink(at(name), target); }

    std::map<std::string, std::string> traitsBelow(const std::string& name) {
        std::map<std::string, std::string> traits{{"", ""}};
        for (const std::string& below : files_.entriesBelow(at(name))) {
            const FakeFiles::Item& item = *files_.item(at(name) + '/' + below);
            traits['/' + below] = std::to_string(static_cast<int>(item.type)) + ' ' + item.content;
        }
        return traits;
    }

private:
    FakeFiles files_;
};

} // namespace tests
