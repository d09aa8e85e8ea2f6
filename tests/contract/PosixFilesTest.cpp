// What the real file services promise beyond the usual: traits, odd items, large trees, and other volumes.

#include "platform/posix/FileFailure.h"
#include "platform/posix/ForsakenFolders.h"
#include "platform/posix/TreeRemoval.h"
#include "platform/posix/UniqueRename.h"
#include "tests/contract/FilesTest.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using PosixFiles = tests::FilesTest;

TEST_F(PosixFiles, ErrorsNameThePathAndTheSystemsReason) {
    std::optional<foundation::Error> error;
    EXPECT_FALSE(changes_.copyItem(at("missing"), at("new"), &error));
    EXPECT_EQ(*error->userInfo.at("NSLocalizedDescription").string(),
              "could not copy '" + at("missing") + "': No such file or directory");
    EXPECT_EQ(error->userInfo.at(platform::posixErrorCodeKey).integerValue(), ENOENT);
}

TEST_F(PosixFiles, CopyKeepsTraitsButNoSetIdBits) {
    folder_.write("tree/sub/file", std::string(70000, 'x'));
    folder_.write("tree/empty", "");
    folder_.write("tree/\xff\xfe\n", "names are bytes");
    fs::create_symlink("sub/file", at("tree/link"));
    const std::pair<const char*, mode_t> modes[] = {
        {"tree/sub/file", 06755}, {"tree/empty", 01400}, {"tree/sub", 02555}, {"tree", 01777}};
    for (const auto& [name, mode] : modes)
        ASSERT_EQ(::chmod(at(name).c_str(), mode), 0);
    long second = 1000000000;
    for (const char* name : {"tree/sub/file", "tree/link", "tree/empty", "tree/sub", "tree"}) {
        const std::array<timespec, 2> times{timespec{++second, 0}, timespec{second, 123456789}};
        ASSERT_EQ(::utimensat(AT_FDCWD, at(name).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
    }
    ASSERT_EQ(copy("tree", "copy"), 0);
    ASSERT_EQ(::chmod(at("tree/sub/file").c_str(), 0755), 0);
    ASSERT_EQ(::chmod(at("tree/empty").c_str(), 0400), 0);
    ASSERT_EQ(::chmod(at("tree/sub").c_str(), 0555), 0);
    EXPECT_EQ(traitsBelow("copy"), traitsBelow("tree"));
}

TEST_F(PosixFiles, ExtendedAttributesAreCopiedAndRemovedByName) {
    const auto value = [this](const char* name) {
        std::string bytes(4096, '\0');
        const ssize_t size = ::getxattr(at(name).c_str(), "user.com.example.mark", bytes.data(), bytes.size());
        return size < 0 ? "none" : bytes.substr(0, static_cast<std::size_t>(size));
    };
    const auto removeFrom = [this](const std::string& name, int options) {
        return changes_.removeExtendedAttribute(at(name), "com.example.mark", options);
    };
    folder_.write("tree/file", "x");
    folder_.write("target", "x");
    fs::create_symlink("../target", at("tree/link"));
    const std::string longValue(2000, 'v');
    for (const char* name : {"tree", "tree/file", "target"})
        if (::setxattr(at(name).c_str(), "user.com.example.mark", longValue.data(), longValue.size(), 0) != 0)
            GTEST_SKIP() << "this file system has no extended attributes";
    ASSERT_EQ(copy("tree", "copy"), 0);
    EXPECT_EQ(value("copy"), longValue);
    EXPECT_EQ(value("copy/file"), longValue);

    EXPECT_EQ(removeFrom("copy/file", platform::xattrNoFollow), 0);
    EXPECT_EQ(removeFrom("copy/file", 0), -1);
    EXPECT_EQ(errno, ENODATA);
    EXPECT_EQ(removeFrom("tree/link", platform::xattrNoFollow), -1);
    EXPECT_EQ(removeFrom("tree/link", platform::xattrNoFollow | 2), -1) << "the option is one bit of several";
    EXPECT_EQ(value("target"), longValue);
    EXPECT_EQ(removeFrom("tree/link", 0), 0);
    EXPECT_EQ(value("target"), "none");
    EXPECT_EQ(removeFrom(std::string("tree\0", 5), 0), -1);
    EXPECT_EQ(value("tree"), longValue);
}

// Opening a FIFO would wait for ever.
TEST_F(PosixFiles, SpecialFilesAreNeverOpenedAndFailTheCopy) {
    folder_.write("tree/sub/file", "x");
    ASSERT_EQ(::mkfifo(at("tree/sub/fifo").c_str(), 0600), 0);
    EXPECT_EQ(copy("tree", "copy"), 256);
    EXPECT_EQ(copy("tree/sub/fifo", "new"), 256);
    EXPECT_FALSE(fs::exists(at("copy")) || fs::exists(at("new"))) << "a failed copy takes back what it made";
    EXPECT_TRUE(queries_.isReadableFile(at("tree/sub/fifo")));
    EXPECT_EQ(queries_.attributesOfItem(at("tree/sub/fifo"))->type, platform::FileType::Other);
    EXPECT_EQ(remove("tree"), 0);
}

TEST_F(PosixFiles, TreesOfManyFilesAreCopiedWhole) {
    for (int index = 0; index < 6000; ++index) {
        const std::string name = std::to_string(index);
        folder_.write("tree/" + std::to_string(index % 37) + '/' + std::to_string(index % 11) + '/' + name, name);
    }
    ASSERT_EQ(copy("tree", "copy"), 0);
    EXPECT_EQ(queries_.entriesBelow(at("copy")).size(), 37U + 37 * 11 + 6000);
    EXPECT_EQ(traitsBelow("copy"), traitsBelow("tree"));
    EXPECT_EQ(remove("copy"), 0);
}

TEST_F(PosixFiles, DeepTreesNeedFewDescriptors) {
    std::string deepest = "tree";
    for (int level = 0; level < 300; ++level)
        deepest += "/folder";
    folder_.write(deepest + "/file", "bytes");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{128, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_EQ(copy("tree", "copy"), 0);
    EXPECT_EQ(queries_.entriesBelow(at("copy")).size(), 301U);
    EXPECT_EQ(remove("copy"), 0);
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(PosixFiles, RenamingWithoutTheOneCallOverwritesNothingEither) {
    addTree("tree");
    addTree("there");
    fs::create_directory(at("there/empty"));
    const auto before = traitsBelow("there");
    const auto rename = [this](const std::string& from, const std::string& to) {
        using platform::ItemPlace;
        constexpr auto writing = platform::FileAccess::Writing;
        return platform::renameOverPlaceholder(ItemPlace::of(at(from), writing), ItemPlace::of(at(to), writing));
    };
    EXPECT_EQ(rename("tree/folder", "tree/folder/new"), EINVAL);
    const auto moved = traitsBelow("tree");
    fs::create_directory(at("new"));
    for (const std::string from : {"file", "folder", "dangling"}) {
        for (const char* to : {"there/file", "there/empty", "there/dangling"})
            EXPECT_EQ(rename("tree/" + from, to), EEXIST) << from << ' ' << to;
        EXPECT_EQ(rename("tree/" + from, "new/" + from), 0) << from;
        EXPECT_EQ(traitsOf("new/" + from), moved.at('/' + from));
    }
    EXPECT_EQ(traitsBelow("there"), before);
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
    platform::PosixFileChanges changes({{}, {}, at("tmp/")});
    folder_.write("tmp/others/file", "x");
    for (const char* name : {"tmp/a/mount", "tmp/a/mount/deeper", "tmp/others/mine", "tmp/gone", "tmp/swapped", "out"})
        ASSERT_TRUE(changes.createDirectory(at(name))) << name;
    EXPECT_EQ(fs::status(at("tmp/a")).permissions(), fs::perms::owner_all);
    folder_.write("tmp/a/mount/file", "x");
    ASSERT_TRUE(changes.removePrivateFolder(at("tmp/gone")));
    fs::create_directory(at("tmp/gone"));
    fs::rename(at("tmp/swapped"), at("tmp/moved"));
    folder_.write("tmp/swapped/file", "x");

    EXPECT_TRUE(changes.removeLeftovers({at("tmp/a/mount/file"), at("out/x")}));
    EXPECT_TRUE(fs::exists(at("tmp/a/mount/file"))) << "a tool of the administrator is at work there";
    EXPECT_TRUE(changes.removeLeftovers());
    EXPECT_FALSE(fs::exists(at("tmp/a")));
    EXPECT_FALSE(fs::exists(at("tmp/others/mine")));
    for (const char* name : {"tmp/others/file", "tmp/gone", "tmp/swapped/file", "out"})
        EXPECT_TRUE(fs::exists(at(name))) << name;
    EXPECT_TRUE(changes.removeLeftovers());
}

TEST_F(PosixFiles, ALargeRemovalHoldsNobodyAndIsDoneAtTheEnd) {
    platform::PosixFileChanges changes({{}, {}, at("tmp/")}, std::chrono::milliseconds(0));
    const std::string own = at("tmp/700000000000.tolvix");
    folder_.write("tmp/0700000000000.tolvix/file", "x");
    ASSERT_TRUE(changes.createDirectory(own));
    folder_.write("tmp/700000000000.tolvix/deep/file", "x");
    EXPECT_TRUE(changes.removePrivateFolder(own));
    EXPECT_FALSE(changes.removePrivateFolder(own));
    EXPECT_FALSE(fs::exists(own)) << "another message about the same failure would find it again";
    const std::string aside = "tmp/00700000000000.tolvix";
    EXPECT_TRUE(fs::exists(at(aside + "/deep/file")));
    platform::removeForsakenFolders(
        at("tmp"), [](const std::string& /*path*/) { return false; }, std::chrono::seconds(0));
    EXPECT_TRUE(fs::exists(at(aside))) << "it is not forsaken yet";
    EXPECT_FALSE(fs::exists(at("tmp/0700000000000.tolvix")));
    EXPECT_TRUE(changes.removeLeftovers());
    EXPECT_FALSE(fs::exists(at(aside)));

    folder_.write("tmp/700000000000.tolvix/file", "x");
    EXPECT_TRUE(changes.removePrivateFolder(own)) << "one that this run did not make";
    EXPECT_EQ(fs::directory_iterator(at("tmp")), fs::directory_iterator());
}

TEST_F(PosixFiles, LeftoversGoAlthoughOthersAreAtWorkInThem) {
    for (int index = 0; index < 300; ++index)
        folder_.write("tree/" + std::to_string(index % 20) + "/f" + std::to_string(index), "x");
    ASSERT_EQ(create("tmp/own"), 0);
    ASSERT_EQ(copy("tree", "tmp/own/first"), 0);
    std::thread copying([&] { copy("tree", "tmp/own/second"); });
    std::thread removing([&] { remove("tmp/own/first"); });
    EXPECT_TRUE(changes_.removeLeftovers());
    copying.join();
    removing.join();
    EXPECT_FALSE(fs::exists(at("tmp/own")));
}

// What somebody else puts in the place of a half copy is his.
TEST_F(PosixFiles, OnlyTheItemThatWasMadeIsTakenBack) {
    addTree("tree");
    const auto place = platform::ItemPlace::of(at("tree"), platform::FileAccess::Writing);
    const auto made = platform::identityOf(place.status(platform::FileAccess::Writing));
    ASSERT_EQ(move("tree", "aside"), 0);
    addTree("tree");
    const auto before = traitsBelow("tree");
    platform::removeIfSame(place, made);
    EXPECT_EQ(traitsBelow("tree"), before);
    ASSERT_EQ(remove("tree"), 0);
    ASSERT_EQ(move("aside", "tree"), 0);
    platform::removeIfSame(place, made);
    EXPECT_FALSE(fs::exists(at("tree")));
}

TEST_F(PosixFiles, AMovedItemIsRecognisedWhereverItIs) {
    const auto other = fs::path("/dev/shm") / fs::path(at("x")).parent_path().filename();
    const auto shell = [](const std::string& command) { return std::system(command.c_str()) == 0; };
    if (!fs::is_directory("/dev/shm"))
        GTEST_SKIP() << "needs a second volume";
    addTree("Some.app");
    addTree("there/Some.app");
    const auto identity = [this](const std::string& path) { return queries_.identityOfItem(path).value(); };
    const auto before = identity(at("Some.app"));
    EXPECT_FALSE(isSameItem(before, identity(at("there/Some.app"))));
    EXPECT_FALSE(queries_.identityOfItem(at("missing")));
    fs::create_directory(other);
    EXPECT_TRUE(shell("mv -f '" + at("Some.app") + "' '" + (other / "Some.app").string() + "'"));
    EXPECT_TRUE(isSameItem(before, identity(other / "Some.app")));
    EXPECT_TRUE(shell("mv -f '" + at("there/Some.app") + "' '" + (other / "Some.app").string() + "'"));
    EXPECT_FALSE(isSameItem(before, identity(other / "Some.app"))) << "something was moved into it";
    fs::remove_all(other);
}

// A run that was killed leaves its folders, but no process that keeps them.
TEST_F(PosixFiles, FoldersOfKilledRunsAreFoundByTheirNameAndLock) {
    const std::string unique = "01234567-89AB-4DEF-8123-456789ABCDEF-1234-00000000DEADBEE";
    const std::string download = "tmp/700000000000.tolvix";
    const std::string inUse = "tmp/" + unique + "1";
    const std::string kept = "tmp/" + unique + "2";
    const std::string mounted = "tmp/" + unique + "3";
    for (const std::string& name :
         {download, inUse, mounted, "tmp/" + unique, std::string("tmp/a.tolvix"), "out/" + unique + "4"})
        folder_.write(name + "/product/file", "x");
    ASSERT_EQ(::chmod(at(mounted + "/product").c_str(), 0), 0);
    ASSERT_EQ(::chmod(at(mounted).c_str(), 01555), 0);
    fs::create_directory_symlink(at("out/" + unique + "4"), at("tmp/" + unique + "5"));
    ASSERT_EQ(create(kept), 0);
    const auto clean = [this, &inUse](std::chrono::seconds youngest) {
        platform::removeForsakenFolders(
            at("tmp") + '/', [&](const std::string& path) { return path == at(inUse); }, youngest);
    };
    clean(std::chrono::seconds(100));
    EXPECT_TRUE(fs::exists(at(download)));
    clean(std::chrono::seconds(0));
    EXPECT_FALSE(fs::exists(at(download)) || fs::exists(at(mounted)));
    for (const std::string& name :
         {inUse, kept, "tmp/" + unique, std::string("tmp/a.tolvix"), "tmp/" + unique + "5", "out/" + unique + "4"})
        EXPECT_TRUE(fs::exists(at(name))) << name;
}
