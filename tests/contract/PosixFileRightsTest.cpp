// Files of others, files without rights, and other volumes. Each test acts in a forked process, where it can give up
// the superuser's rights or have a volume of its own.

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixFileQueries.h"
#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

// Collects what is not as expected, a line each.
class Expectations {
public:
    void require(bool holds, const std::string& what) {
        if (!holds)
            text_ += what + '\n';
    }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

class PosixFileRights : public testing::Test {
protected:
    std::string at(const std::string& name) const { return folder_.path(name); }

    static bool isSuperuser() { return ::geteuid() == 0; }

    // What the steps in the other process found wrong.
    static std::string inChild(const std::function<void(Expectations&)>& steps) {
        int ends[2];
        if (::pipe(ends) != 0)
            return "no pipe";
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(ends[0]);
            Expectations expectations;
            steps(expectations);
            const std::string& text = expectations.text();
            ::_exit(::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
        }
        ::close(ends[1]);
        std::string text;
        char byte = 0;
        while (::read(ends[0], &byte, 1) == 1)
            text += byte;
        ::close(ends[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        return status == 0 ? text : text + "the process failed";
    }

    // The folder, as it stands, belongs to the user that the steps run as.
    std::string asUnprivilegedUser(const std::function<void(Expectations&)>& steps) {
        if (isSuperuser()) {
            ::chown(at("").c_str(), nobody, nobody);
            for (const auto& entry : fs::recursive_directory_iterator(at("")))
                ::lchown(entry.path().c_str(), nobody, nobody);
        }
        return inChild([&](Expectations& expectations) {
            if (isSuperuser() && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                return expectations.require(false, "the rights stay");
            steps(expectations);
        });
    }

    tests::TestFolder folder_;
    platform::PosixFileQueries queries_;
    platform::PosixFileChanges changes_{{}};
};

TEST_F(PosixFileRights, ReadOnlyFoldersAreCopiedAndRemoved) {
    folder_.write("tree/sub/deeper/file", "bytes");
    const std::string wrong = asUnprivilegedUser([this](Expectations& expect) {
        ::chmod(at("tree/sub/deeper/file").c_str(), 0400);
        for (const char* name : {"tree/sub/deeper", "tree/sub", "tree"})
            ::chmod(at(name).c_str(), 0555);
        expect.require(changes_.copyItem(at("tree"), at("copy")), "copy");
        expect.require(folder_.read("copy/sub/deeper/file") == "bytes", "content");
        for (const char* name : {"copy/sub/deeper", "copy/sub", "copy"})
            expect.require(fs::status(at(name)).permissions() == fs::perms(0555), name);
        ::chmod(at("copy/sub/deeper").c_str(), 0);
        expect.require(changes_.removeItem(at("copy")) && !fs::exists(at("copy")), "remove");
    });
    EXPECT_EQ(wrong, "");
}

TEST_F(PosixFileRights, WithoutRightsNothingIsLost) {
    folder_.write("tree/secret", "x");
    folder_.write("tree/kept", "x");
    const std::string elsewhere = "/dev/shm/" + fs::path(at("")).filename().string();
    const std::string wrong = asUnprivilegedUser([&](Expectations& expect) {
        std::optional<foundation::Error> error;
        ::chmod(at("tree/secret").c_str(), 0);
        expect.require(!queries_.isReadableFile(at("tree/secret")), "unreadable");
        expect.require(!changes_.copyItem(at("tree"), at("copy"), &error) && error->code == 257, "read error");
        // The copy of "tree" could be made, but "closed/tree" cannot go away.
        ::chmod(at("tree/secret").c_str(), 0600);
        fs::create_directory(at("closed"));
        fs::rename(at("tree"), at("closed/tree"));
        ::chmod(at("closed").c_str(), 0555);
        expect.require(!changes_.removeItem(at("closed/tree"), &error) && error->code == 513, "remove error");
        expect.require(!changes_.moveItem(at("closed/tree"), elsewhere, &error), "move");
        expect.require(!changes_.createDirectory(at("closed/new"), &error) && error->code == 513, "create error");
        expect.require(fs::exists(at("closed/tree/kept")) && fs::exists(at("closed/tree/secret")), "kept");
        expect.require(!fs::exists(elsewhere), "made");
        ::chmod(at("closed").c_str(), 0755);
    });
    EXPECT_EQ(wrong, "");
    fs::remove_all(elsewhere);
}

TEST_F(PosixFileRights, AnotherUsersFolderIsNeverTakenForOurs) {
    if (!isSuperuser())
        GTEST_SKIP() << "only the superuser can make another user's folder";
    folder_.write("theirs/file", "x");
    ASSERT_EQ(::chown(at("theirs").c_str(), nobody, nobody), 0);
    std::optional<foundation::Error> error;
    EXPECT_FALSE(changes_.createDirectory(at("theirs"), &error));
    EXPECT_EQ(error->code, 513);
    EXPECT_FALSE(changes_.removePrivateFolder(at("theirs")));
    EXPECT_TRUE(fs::exists(at("theirs/file")));
    EXPECT_EQ(queries_.ownerOfItem(at("theirs"))->userId, nobody);
}

// Whoever breaks the guard must not lose his machine by this test: "/" is a folder of its own here.
TEST_F(PosixFileRights, TheRootIsNeverRemoved) {
    if (!isSuperuser())
        GTEST_SKIP() << "only the superuser can give a process another root";
    folder_.write("tmp/own/file", "x");
    const std::string wrong = inChild([this](Expectations& expect) {
        if (::chroot(at("").c_str()) != 0 || ::chdir("/") != 0)
            return expect.require(false, "no root of its own");
        for (const char* path : {"/", "//", "/.", "/..", "/tmp/..", "/tmp/../", "/tmp/own/../.."}) {
            expect.require(!changes_.removePrivateFolder(path), path);
            expect.require(!changes_.removeItem(path), path);
        }
        expect.require(fs::exists("/tmp/own/file"), "kept");
    });
    EXPECT_EQ(wrong, "");
}

TEST_F(PosixFileRights, OtherVolumesAreNotEntered) {
    folder_.write("work/sub/file", "x");
    folder_.write("elsewhere/file", "x");
    fs::create_directory(at("work/memory"));
    fs::create_directory(at("work/view"));
    const std::string wrong = inChild([this](Expectations& expect) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", at("work/memory").c_str(), "tmpfs", 0, nullptr) != 0 ||
            ::mount(at("elsewhere").c_str(), at("work/view").c_str(), nullptr, MS_BIND, nullptr) != 0)
            return expect.require(false, "skip");
        folder_.write("work/memory/file", "x");
        for (const char* name : {"work/memory", "work/view"}) {
            expect.require(!changes_.removePrivateFolder(at(name)), name);
            expect.require(!changes_.removeItem(at(name)), name);
        }
        expect.require(!changes_.removeItem(at("work")), "work");
        for (const char* name : {"work/memory/file", "work/view/file", "elsewhere/file"})
            expect.require(fs::exists(at(name)), name);
        for (const std::string& entry : queries_.entriesBelow(at("work")))
            expect.require(entry.find("memory/") == std::string::npos && entry.find("view/") == std::string::npos,
                           entry);
        // A view of a folder above the copy: the copy would find itself in it again and again.
        fs::create_directories(at("outer/target"));
        fs::create_directories(at("source/view"));
        ::mount(at("outer").c_str(), at("source/view").c_str(), nullptr, MS_BIND, nullptr);
        expect.require(!changes_.copyItem(at("source"), at("outer/target/copy")), "endless copy");
    });
    if (wrong.rfind("skip", 0) == 0)
        GTEST_SKIP() << "this user may not mount anything";
    EXPECT_EQ(wrong, "");
}

} // namespace
