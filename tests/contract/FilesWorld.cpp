#include "tests/contract/FilesWorld.h"

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakeFiles.h"

namespace tests {

namespace {

namespace fs = std::filesystem;

class RealFiles : public FilesWorld {
public:
    RealFiles() {
        for (const char* name : {"home", "Applications", "tmp"})
            fs::create_directory(folder_.path(name));
    }

    platform::FileQueries& queries() override { return queries_; }
    platform::FileChanges& changes() override { return changes_; }
    std::string root() const override { return folder_.path(); }
    void addFolder(const std::string& path) override { fs::create_directories(path); }
    void addFile(const std::string& path, const std::string& bytes) override {
        folder_.write(fs::path(path).lexically_relative(root()), bytes);
    }
    void addLink(const std::string& path, const std::string& target) override { fs::create_symlink(target, path); }

    std::optional<std::string> look(const std::string& path) override {
        switch (fs::symlink_status(path).type()) {
        case fs::file_type::not_found:
            return std::nullopt;
        case fs::file_type::directory:
            return "folder";
        case fs::file_type::symlink:
            return "link " + fs::read_symlink(path).string();
        default:
            return "file " + folder_.read(fs::path(path).lexically_relative(root()));
        }
    }

private:
    TestFolder folder_;
    platform::PosixFileQueries queries_;
    platform::PosixFileChanges changes_{{folder_.path("home"), folder_.path("Applications"), folder_.path("tmp")}};
};

class FakeFilesWorld : public FilesWorld {
public:
    FakeFilesWorld() {
        for (const char* name : {"home", "Applications", "tmp"}) {
            files_.addFolder(root() + '/' + name);
            files_.sharedFolders.insert(root() + '/' + name);
        }
    }

    platform::FileQueries& queries() override { return files_; }
    platform::FileChanges& changes() override { return files_; }
    std::string root() const override { return "/world"; }
    void addFolder(const std::string& path) override { files_.addFolder(path); }
    void addFile(const std::string& path, const std::string& bytes) override { files_.addFile(path, bytes); }
    void addLink(const std::string& path, const std::string& target) override { files_.addLink(path, target); }

    std::optional<std::string> look(const std::string& path) override {
        const FakeFiles::Item* item = files_.item(path);
        if (item == nullptr)
            return std::nullopt;
        if (item->type == platform::FileType::Directory)
            return "folder";
        return (item->type == platform::FileType::Regular ? "file " : "link ") + item->content;
    }

private:
    FakeFiles files_;
};

} // namespace

std::unique_ptr<FilesWorld> makeRealFiles() {
    return std::make_unique<RealFiles>();
}
std::unique_ptr<FilesWorld> makeFakeFiles() {
    return std::make_unique<FakeFilesWorld>();
}

} // namespace tests
