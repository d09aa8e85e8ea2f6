// What the real file services promise beyond their fake: traits, odd items, and nothing touched that is not theirs.

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "platform/posix/UniqueRename.h"
#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class PosixFiles : public testing::Test {
protected:
    std::string at(const std::string& name) const { return folder_.path(name); }

    // The code of the error, or 0 for success.
    template <class Operation, class... Paths>
    std::int64_t codeOf(Operation operation, const Paths&... paths) {
        std::optional<foundation::Error> error;
        if ((changes_.*operation)(paths..., &error))
            return 0;
        if (!error || error->domain != "NSCocoaErrorDomain")
            return -1;
        return error->code;
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

    // Mode, times, owner, size and link target of an item and of all below it.
    std::map<std::string, std::string> traitsBelow(const std::string& name) {
        std::map<std::string, std::string> traits{{"", traitsOf(at(name))}};
        for (const std::string& entry : queries_.entriesBelow(at(name)))
            traits[entry] = traitsOf(at(name) + '/' + entry);
        return traits;
    }

    static std::string traitsOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        std::ostringstream text;
        text << std::oct << status.st_mode << std::dec << ' ' << status.st_uid << ' ' << status.st_mtim.tv_sec << '.'
             << status.st_mtim.tv_nsec;
        if (S_ISREG(status.st_mode))
            text << ' ' << status.st_size;
        if (S_ISLNK(status.st_mode))
            text << ' ' << fs::read_symlink(path).string();
        return text.str();
    }

    static void setTime(const std::string& path, long seconds, long nanoseconds) {
        const std::array<timespec, 2> times{timespec{seconds, 0}, timespec{seconds, nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
    }

    tests::TestFolder folder_;
    platform::PosixFileQueries queries_;
    platform::PosixFileChanges changes_{{{}, {}, folder_.path()}};
};

TEST_F(PosixFiles, ErrorsTellWhatWentWrong) {
    folder_.write("file", "x");
    fs::create_symlink("nowhere", at("dangling"));
    EXPECT_EQ(copy("missing", "new"), 260);
    EXPECT_EQ(copy("file", "missing/new"), 4);
    EXPECT_EQ(copy("file", "dangling"), 516);
    EXPECT_EQ(copy("file", "file/below"), 512);
    EXPECT_EQ(move("missing", "new"), 4);
    EXPECT_EQ(move("file", "dangling"), 516);
    EXPECT_EQ(remove("missing"), 4);
    EXPECT_EQ(create("dangling"), 516);
    EXPECT_EQ(create("file"), 516);

    std::optional<foundation::Error> error;
    EXPECT_FALSE(changes_.copyItem(at("missing"), at("new"), &error));
    EXPECT_EQ(*error->userInfo.at("NSLocalizedDescription").string(),
              "could not copy '" + at("missing") + "': No such file or directory");
    EXPECT_EQ(error->userInfo.at(platform::posixErrorCodeKey).integerValue(), ENOENT);
}

// A path is used whole or not at all, and no removal begins at the place that names itself.
TEST_F(PosixFiles, RefusesPathsThatMeanSomethingElse) {
    folder_.write("a/file", "x");
    const std::string cut = at("a") + '\0' + "b";
    EXPECT_FALSE(changes_.removeItem(cut));
    EXPECT_FALSE(changes_.removePrivateFolder(cut));
    EXPECT_FALSE(changes_.moveItem(cut, at("new")));
    EXPECT_FALSE(changes_.createDirectory(at("new") + '\0'));
    EXPECT_FALSE(queries_.fileExists(cut));
    for (const char* name : {"a/.", "a/..", "a/../.", "."})
        EXPECT_NE(remove(name), 0) << name;
    EXPECT_TRUE(fs::exists(at("a/file")));
    EXPECT_FALSE(fs::exists(at("new")));
}

TEST_F(PosixFiles, CopyKeepsTraitsButNoSetIdBits) {
    folder_.write("tree/sub/file", std::string(70000, 'x'));
    folder_.write("tree/empty", "");
    folder_.write("tree/\xff\xfe\n", "names are bytes");
    fs::create_symlink("sub/file", at("tree/link"));
    struct Mode {
        const char* name;
        mode_t mode;
        const char* copied;
    };
    const std::array<Mode, 4> modes{{{"tree/sub/file", 06755, "100755"},
                                     {"tree/empty", 01400, "100400"},
                                     {"tree/sub", 02555, "40555"},
                                     {"tree", 01777, "41777"}}};
    for (const Mode& mode : modes)
        ASSERT_EQ(::chmod(at(mode.name).c_str(), mode.mode), 0);
    long second = 1000000000;
    for (const char* name : {"tree/sub/file", "tree/link", "tree/empty", "tree/sub", "tree"})
        setTime(at(name), ++second, 123456789);

    ASSERT_EQ(copy("tree", "copy"), 0);
    for (const Mode& mode : modes) {
        const std::string name = "copy" + std::string(mode.name).substr(4);
        EXPECT_EQ(traitsOf(at(name)).substr(0, std::string(mode.copied).size()), mode.copied) << name;
        ASSERT_EQ(::chmod(at(mode.name).c_str(), mode.mode & (S_ISVTX | 0777)), 0);
    }
    ASSERT_EQ(::chmod(at("tree/empty").c_str(), 0400), 0);
    EXPECT_EQ(traitsBelow("copy"), traitsBelow("tree"));
    EXPECT_EQ(folder_.read("copy/sub/file"), folder_.read("tree/sub/file"));
}

TEST_F(PosixFiles, ExtendedAttributesAreCopiedAndRemovedByName) {
    const char* const name = "user.com.example.mark";
    folder_.write("tree/file", "x");
    folder_.write("target", "x");
    fs::create_symlink("../target", at("tree/link"));
    const std::string longValue(2000, 'v');
    if (::setxattr(at("tree").c_str(), name, "folder", 6, 0) != 0)
        GTEST_SKIP() << "this file system has no extended attributes";
    ASSERT_EQ(::setxattr(at("tree/file").c_str(), name, longValue.data(), longValue.size(), 0), 0);
    ASSERT_EQ(::setxattr(at("target").c_str(), name, "t", 1, 0), 0);
    ASSERT_EQ(copy("tree", "copy"), 0);

    std::array<char, 4096> value{};
    EXPECT_EQ(::getxattr(at("copy").c_str(), name, value.data(), value.size()), 6);
    ASSERT_EQ(::getxattr(at("copy/file").c_str(), name, value.data(), value.size()), 2000);
    EXPECT_EQ(std::string(value.data(), 2000), longValue);

    EXPECT_EQ(changes_.removeExtendedAttribute(at("copy/file"), "com.example.mark", platform::xattrNoFollow), 0);
    EXPECT_EQ(changes_.removeExtendedAttribute(at("copy/file"), "com.example.mark", 0), -1);
    EXPECT_EQ(errno, ENODATA);
    EXPECT_EQ(changes_.removeExtendedAttribute(at("tree/link"), "com.example.mark", platform::xattrNoFollow), -1);
    EXPECT_EQ(::getxattr(at("target").c_str(), name, value.data(), value.size()), 1);
    EXPECT_EQ(changes_.removeExtendedAttribute(at("tree/link"), "com.example.mark", 0), 0);
    EXPECT_EQ(::getxattr(at("target").c_str(), name, value.data(), value.size()), -1);
    EXPECT_EQ(changes_.removeExtendedAttribute(at("tree") + '\0', "com.example.mark", 0), -1);
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(::getxattr(at("tree").c_str(), name, value.data(), value.size()), 6);
}

// Opening a FIFO would wait for ever.
TEST_F(PosixFiles, SpecialFilesAreNeverOpenedAndFailTheCopy) {
    folder_.write("tree/sub/file", "x");
    ASSERT_EQ(::mkfifo(at("tree/sub/fifo").c_str(), 0600), 0);
    EXPECT_EQ(copy("tree", "copy"), 256);
    EXPECT_EQ(copy("tree/sub/fifo", "new"), 256);
    EXPECT_FALSE(fs::exists(at("new")));
    EXPECT_TRUE(queries_.isReadableFile(at("tree/sub/fifo")));
    EXPECT_EQ(queries_.attributesOfItem(at("tree/sub/fifo"))->type, platform::FileType::Other);
    EXPECT_EQ(remove("tree"), 0);
}

TEST_F(PosixFiles, CopyIntoItselfIsRefusedBeforeAnythingIsMade) {
    folder_.write("tree/sub/file", "x");
    fs::create_directory_symlink("tree/sub", at("alias"));
    for (const char* to : {"tree/new", "tree/sub/new", "alias/new"}) {
        EXPECT_EQ(copy("tree", to), 512) << to;
        EXPECT_EQ(move("tree", to), 512) << to;
        EXPECT_FALSE(fs::exists(at(to))) << to;
    }
    EXPECT_EQ(copy("tree", "treeNew"), 0);
    EXPECT_EQ(copy("tree/sub", "tree/new"), 0);
}

TEST_F(PosixFiles, TreesOfManyFilesAreCopiedWhole) {
    for (int index = 0; index < 6000; ++index) {
        const std::string name = std::to_string(index);
        folder_.write("tree/" + std::to_string(index % 37) + '/' + std::to_string(index % 11) + '/' + name, name);
    }
    ASSERT_EQ(copy("tree", "copy"), 0);
    const auto traits = traitsBelow("copy");
    EXPECT_EQ(traits.size(), 1 + 37 + 37 * 11 + 6000);
    EXPECT_EQ(traits, traitsBelow("tree"));
    for (const auto& [name, ignored] : traits) {
        if (!fs::is_regular_file(at("copy/" + name)))
            continue;
        EXPECT_EQ(folder_.read("copy/" + name), fs::path(name).filename().string());
    }
    EXPECT_EQ(remove("copy"), 0);
}

// Deeper than any path text can be, with fewer descriptors than levels.
TEST_F(PosixFiles, DeepTreesNeedFewDescriptors) {
    constexpr int depth = 600;
    const char* const name = "a-folder";
    fs::create_directory(at("tree"));
    int folder = ::open(at("tree").c_str(), O_PATH | O_CLOEXEC);
    for (int level = 0; level < depth; ++level) {
        ASSERT_EQ(::mkdirat(folder, name, 0755), 0);
        ::close(::openat(folder, "f", O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
        const int next = ::openat(folder, name, O_PATH | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{128, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_EQ(copy("tree", "copy"), 0);
    EXPECT_EQ(queries_.entriesBelow(at("copy")).size(), 2U * depth);
    EXPECT_EQ(remove("copy"), 0);
    EXPECT_EQ(remove("tree"), 0);
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(PosixFiles, RenamingWithoutTheOneCallOverwritesNothingEither) {
    folder_.write("file", "file");
    folder_.write("folder/in", "in");
    folder_.write("there", "there");
    fs::create_directory(at("empty"));
    fs::create_symlink("nowhere", at("dangling"));
    const auto rename = [this](const char* from, const char* to) {
        using platform::ItemPlace;
        constexpr auto writing = platform::FileAccess::Writing;
        return platform::renameOverPlaceholder(ItemPlace::of(at(from), writing), ItemPlace::of(at(to), writing));
    };
    for (const char* from : {"file", "folder", "dangling"})
        for (const char* to : {"there", "empty", "dangling"})
            EXPECT_EQ(rename(from, to), EEXIST) << from << ' ' << to;
    EXPECT_EQ(rename("folder", "folder/new"), EINVAL);
    EXPECT_FALSE(fs::exists(at("folder/new")));
    EXPECT_EQ(rename("file", "newFile"), 0);
    EXPECT_EQ(rename("folder", "newFolder"), 0);
    EXPECT_EQ(rename("dangling", "newLink"), 0);
    EXPECT_EQ(folder_.read("newFile"), "file");
    EXPECT_EQ(folder_.read("newFolder/in"), "in");
    EXPECT_EQ(fs::read_symlink(at("newLink")), "nowhere");
    EXPECT_EQ(folder_.read("there"), "there");
}

TEST_F(PosixFiles, AMoveToAnotherVolumeIsWholeOrNotAtAll) {
    const std::string other = "/dev/shm/platform-test-" + std::to_string(::getpid());
    struct stat here {};
    struct stat there {};
    ::stat(at("").c_str(), &here);
    if (::stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev || ::mkdir(other.c_str(), 0700) != 0)
        GTEST_SKIP() << "there is no second volume to write to";
    folder_.write("tree/sub/file", "bytes");
    ASSERT_EQ(::mkfifo(at("tree/fifo").c_str(), 0600), 0);
    EXPECT_FALSE(changes_.moveItem(at("tree"), other + "/moved"));
    EXPECT_FALSE(fs::exists(other + "/moved"));
    fs::remove(at("tree/fifo"));
    fs::create_symlink("nowhere", other + "/there");
    EXPECT_FALSE(changes_.moveItem(at("tree"), other + "/there"));
    EXPECT_TRUE(fs::is_symlink(other + "/there"));
    EXPECT_EQ(folder_.read("tree/sub/file"), "bytes");

    const auto before = traitsBelow("tree");
    EXPECT_TRUE(changes_.moveItem(at("tree"), other + "/moved"));
    EXPECT_FALSE(fs::exists(at("tree")));
    EXPECT_TRUE(changes_.moveItem(other + "/moved", at("back")));
    EXPECT_EQ(traitsBelow("back"), before);
    fs::remove_all(other);
}

TEST_F(PosixFiles, PrivateFoldersAreKnownByWhatTheyAreNotByTheirText) {
    folder_.write("root/home/own/file", "x");
    fs::create_directory_symlink("root", at("alias"));
    platform::PosixFileChanges changes({at("alias/home"), {}, at("root/tmp")});
    // The same folders by the name that was not given, and what holds the link.
    for (const char* name : {"root/home", "root", "alias/home"})
        EXPECT_FALSE(changes.removePrivateFolder(at(name)));
    EXPECT_FALSE(changes.removePrivateFolder(folder_.path()));
    EXPECT_TRUE(fs::exists(at("root/home/own/file")));
    EXPECT_TRUE(changes.removePrivateFolder(at("alias/home/own")));
    EXPECT_FALSE(fs::exists(at("root/home/own")));
    EXPECT_TRUE(fs::exists(at("alias")));
}

TEST_F(PosixFiles, LeftoversAreTheFoldersThatWereMadeHere) {
    const std::string temporary = at("tmp");
    platform::PosixFileChanges changes({{}, {}, temporary + '/'});
    folder_.write("tmp/others/file", "x");
    for (const char* name : {"tmp/a/mount", "tmp/a/mount/deeper", "tmp/others/mine", "tmp/gone", "tmp/swapped", "out"})
        ASSERT_TRUE(changes.createDirectory(at(name))) << name;
    for (const char* name : {"tmp/a", "tmp/a/mount"})
        EXPECT_EQ(fs::status(at(name)).permissions(), fs::perms::owner_all) << name;
    folder_.write("tmp/a/mount/file", "x");
    ASSERT_TRUE(changes.removePrivateFolder(at("tmp/gone")));
    fs::create_directory(at("tmp/gone"));
    fs::rename(at("tmp/swapped"), at("tmp/moved"));
    folder_.write("tmp/swapped/file", "x");

    EXPECT_TRUE(changes.removeLeftovers());
    EXPECT_FALSE(fs::exists(at("tmp/a")));
    EXPECT_FALSE(fs::exists(at("tmp/others/mine")));
    for (const char* name : {"tmp/others/file", "tmp/gone", "tmp/swapped/file", "out"})
        EXPECT_TRUE(fs::exists(at(name))) << name;
    EXPECT_TRUE(changes.removeLeftovers());
}

TEST_F(PosixFiles, LeftoversGoAlthoughOthersAreAtWorkInThem) {
    for (int index = 0; index < 300; ++index)
        folder_.write("tree/" + std::to_string(index % 20) + "/f" + std::to_string(index), "x");
    platform::PosixFileChanges changes({{}, {}, at("tmp")});
    fs::create_directory(at("tmp"));
    ASSERT_TRUE(changes.createDirectory(at("tmp/own")));
    ASSERT_TRUE(changes.copyItem(at("tree"), at("tmp/own/first")));
    std::thread copying([&] { changes.copyItem(at("tree"), at("tmp/own/second")); });
    std::thread removing([&] { changes.removeItem(at("tmp/own/first")); });
    EXPECT_TRUE(changes.removeLeftovers());
    copying.join();
    removing.join();
    EXPECT_FALSE(fs::exists(at("tmp/own")));
    EXPECT_TRUE(fs::exists(at("tmp")));
}

} // namespace
