// Files of others, files without rights, and other volumes. Each test acts in a forked process, where it can give up
// the superuser's rights or have a volume of its own.

#include "tests/contract/FilesTest.h"

#include <cstdio>
#include <functional>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

class PosixFileRights : public tests::FilesTest {
protected:
    static bool isSuperuser() { return ::geteuid() == 0; }

    // The expectations of the steps are those of the test; the other process says itself which of them fail. Steps
    // that cannot be taken on this machine give false, and so does this.
    static bool inChild(const std::function<bool()>& steps) {
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            const bool taken = steps();
            std::fflush(nullptr);
            ::_exit(HasFailure() ? 1 : taken ? 0 : 2);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        const bool taken = !WIFEXITED(status) || WEXITSTATUS(status) != 2;
        EXPECT_TRUE(status == 0 || !taken) << status;
        return taken;
    }

    // The folder, as it stands, belongs to the user that the steps run as.
    void asUnprivilegedUser(const std::function<void()>& steps) const {
        if (isSuperuser()) {
            ::chown(at("").c_str(), nobody, nobody);
            for (const auto& entry : fs::recursive_directory_iterator(at("")))
                ::lchown(entry.path().c_str(), nobody, nobody);
        }
        EXPECT_TRUE(inChild([&] {
            if (isSuperuser() && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                return false;
            steps();
            return true;
        }));
    }
};

TEST_F(PosixFileRights, ReadOnlyFoldersAreCopiedAndRemoved) {
    folder_.write("tree/sub/deeper/file", "bytes");
    asUnprivilegedUser([this] {
        ::chmod(at("tree/sub/deeper/file").c_str(), 0400);
        for (const char* name : {"tree/sub/deeper", "tree/sub", "tree"})
            ::chmod(at(name).c_str(), 0555);
        EXPECT_EQ(copy("tree", "copy"), 0);
        EXPECT_EQ(traitsBelow("copy"), traitsBelow("tree"));
        ::chmod(at("copy/sub/deeper").c_str(), 0);
        EXPECT_EQ(remove("copy"), 0);
        EXPECT_FALSE(fs::exists(at("copy")));
    });
}

TEST_F(PosixFileRights, WithoutRightsNothingIsLost) {
    folder_.write("tree/secret", "x");
    folder_.write("tree/kept", "x");
    const std::string elsewhere = "/dev/shm/" + fs::path(at("")).filename().string();
    asUnprivilegedUser([&] {
        ::chmod(at("tree/secret").c_str(), 0);
        EXPECT_FALSE(queries_.isReadableFile(at("tree/secret")));
        EXPECT_EQ(copy("tree", "copy"), 257);
        // The copy of "tree" could be made, but "closed/tree" cannot go away.
        ::chmod(at("tree/secret").c_str(), 0600);
        fs::create_directory(at("closed"));
        fs::rename(at("tree"), at("closed/tree"));
        ::chmod(at("closed").c_str(), 0555);
        EXPECT_EQ(remove("closed/tree"), 513);
        EXPECT_FALSE(changes_.moveItem(at("closed/tree"), elsewhere));
        EXPECT_EQ(create("closed/new"), 513);
        EXPECT_TRUE(fs::exists(at("closed/tree/kept")) && fs::exists(at("closed/tree/secret")));
        EXPECT_FALSE(fs::exists(elsewhere));
        ::chmod(at("closed").c_str(), 0755);
    });
    fs::remove_all(elsewhere);
}

TEST_F(PosixFileRights, AnotherUsersFolderIsNeverTakenForOurs) {
    if (!isSuperuser())
        GTEST_SKIP() << "only the superuser can make another user's folder";
    folder_.write("theirs/file", "x");
    ASSERT_EQ(::chown(at("theirs").c_str(), nobody, nobody), 0);
    EXPECT_EQ(create("theirs"), 513);
    EXPECT_FALSE(changes_.removePrivateFolder(at("theirs")));
    EXPECT_TRUE(fs::exists(at("theirs/file")));
    EXPECT_EQ(queries_.ownerOfItem(at("theirs"))->userId, nobody);
}

// Whoever breaks the guard must not lose his machine by this test: "/" is a folder of its own here.
TEST_F(PosixFileRights, TheRootIsNeverRemoved) {
    if (!isSuperuser())
        GTEST_SKIP() << "only the superuser can give a process another root";
    folder_.write("tmp/own/file", "x");
    EXPECT_TRUE(inChild([this] {
        if (::chroot(at("").c_str()) != 0 || ::chdir("/") != 0)
            return false;
        platform::PosixFileChanges changes{{}};
        for (const char* path : {"/", "//", "/.", "/..", "/tmp/..", "/tmp/../", "/tmp/own/../.."}) {
            EXPECT_FALSE(changes.removePrivateFolder(path)) << path;
            EXPECT_FALSE(changes.removeItem(path)) << path;
        }
        EXPECT_TRUE(fs::exists("/tmp/own/file"));
        return true;
    }));
}

TEST_F(PosixFileRights, OtherVolumesAreNotEntered) {
    folder_.write("work/sub/file", "x");
    folder_.write("elsewhere/file", "x");
    fs::create_directory(at("work/memory"));
    fs::create_directory(at("work/view"));
    const bool mounted = inChild([this] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", at("work/memory").c_str(), "tmpfs", 0, nullptr) != 0 ||
            ::mount(at("elsewhere").c_str(), at("work/view").c_str(), nullptr, MS_BIND, nullptr) != 0)
            return false;
        folder_.write("work/memory/file", "x");
        for (const char* name : {"work/memory", "work/view"}) {
            EXPECT_FALSE(changes_.removePrivateFolder(at(name))) << name;
            EXPECT_NE(remove(name), 0) << name;
        }
        EXPECT_NE(remove("work"), 0);
        for (const char* name : {"work/memory/file", "work/view/file", "elsewhere/file"})
            EXPECT_TRUE(fs::exists(at(name))) << name;
        for (const std::string& entry : queries_.entriesBelow(at("work")))
            EXPECT_TRUE(entry.find("memory/") == std::string::npos && entry.find("view/") == std::string::npos)
                << entry;
        // A view of a folder above the copy: the copy would find itself in it again and again.
        fs::create_directories(at("outer/target"));
        fs::create_directories(at("source/view"));
        ::mount(at("outer").c_str(), at("source/view").c_str(), nullptr, MS_BIND, nullptr);
        EXPECT_NE(copy("source", "outer/target/copy"), 0);
        return true;
    });
    if (!mounted)
        GTEST_SKIP() << "this user may not mount anything";
}

} // namespace
