// What callers rely on in file services: queries, and changes that overwrite nothing and say why they failed.

#include "platform/posix/FileFailure.h"
#include "tests/contract/FilesTest.h"

#include <algorithm>
#include <cerrno>

namespace fs = std::filesystem;
using FilesContract = tests::FilesTest;
using platform::FileType;

TEST_F(FilesContract, QueriesFollowLinksExceptForTheType) {
    addTree("tree");
    struct Row {
        const char* name;
        bool exists;
        std::optional<FileType> type;
    };
    for (const Row& row :
         {Row{"tree", true, FileType::Directory}, Row{"tree/toFile", true, FileType::SymbolicLink},
          Row{"tree/toFolder/.hidden", true, FileType::Regular}, Row{"tree/dangling", false, FileType::SymbolicLink},
          Row{"tree/missing", false, std::nullopt}, Row{"tree/file/below", false, std::nullopt}}) {
        SCOPED_TRACE(row.name);
        const std::string path = at(row.name);
        EXPECT_EQ(queries_.fileExists(path), row.exists);
        EXPECT_EQ(queries_.isReadableFile(path), row.exists);
        EXPECT_EQ(queries_.isWritableFile(path), row.exists);
        EXPECT_EQ(queries_.ownerOfItem(path).has_value(), row.exists);
        const auto attributes = queries_.attributesOfItem(path);
        EXPECT_EQ(attributes ? std::optional(attributes->type) : std::nullopt, row.type);
    }
}

TEST_F(FilesContract, ListingsHoldHiddenNamesAndEnterNoLinks) {
    addTree("tree");
    EXPECT_EQ(queries_.contentsOfDirectory(at("tree"))->size(), 5U);
    EXPECT_EQ(queries_.contentsOfDirectory(at("home")), std::vector<std::string>{});
    EXPECT_EQ(queries_.contentsOfDirectory(at("tree/file")), std::nullopt);
    EXPECT_EQ(queries_.contentsOfDirectory(at("missing")), std::nullopt);

    auto entries = queries_.entriesBelow(at("tree"));
    const auto place = [&entries](const char* name) { return std::find(entries.begin(), entries.end(), name); };
    EXPECT_LT(place("folder"), place("folder/.hidden"));
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries,
              (std::vector<std::string>{"dangling", "file", "folder", "folder/.hidden", "toFile", "toFolder"}));
    EXPECT_TRUE(queries_.entriesBelow(at("tree/file")).empty());
}

TEST_F(FilesContract, CreatesCopiesAndMovesWithoutFollowingLinks) {
    addTree("tree");
    const auto before = traitsBelow("tree");
    EXPECT_EQ(create("new/deeper/deepest"), 0);
    EXPECT_TRUE(fs::is_directory(at("new/deeper/deepest")));
    EXPECT_EQ(create("tree/folder"), 0) << "it is there";
    EXPECT_NE(create("tree/toFolder"), 0);
    EXPECT_EQ(copy("tree", "copy"), 0);
    EXPECT_EQ(traitsBelow("copy"), before);
    EXPECT_EQ(traitsBelow("tree"), before);
    EXPECT_EQ(move("copy", "moved"), 0);
    EXPECT_EQ(traitsBelow("moved"), before);
    EXPECT_FALSE(fs::exists(at("copy")));
    EXPECT_EQ(copy("tree/toFolder", "copiedLink"), 0);
    EXPECT_EQ(move("moved/dangling", "movedLink"), 0);
    EXPECT_EQ(fs::read_symlink(at("copiedLink")), "folder");
    EXPECT_EQ(fs::read_symlink(at("movedLink")), "nowhere");
}

TEST_F(FilesContract, NothingIsEverOverwritten) {
    addTree("tree");
    addTree("there");
    fs::create_directory(at("there/empty"));
    const auto before = std::pair(traitsBelow("tree"), traitsBelow("there"));
    for (const char* source : {"tree", "tree/file", "tree/toFile"}) {
        for (const char* name : {"there", "there/file", "there/empty", "there/toFolder", "there/dangling"}) {
            EXPECT_EQ(copy(source, name), 516) << source << " to " << name;
            EXPECT_EQ(move(source, name), 516) << source << " to " << name;
        }
    }
    EXPECT_EQ(std::pair(traitsBelow("tree"), traitsBelow("there")), before);
}

TEST_F(FilesContract, ErrorsTellWhatWentWrong) {
    addTree("tree");
    fs::create_directory_symlink("tree/folder", at("alias"));
    for (const char* to : {"tree/new", "tree/folder/new", "alias/new"}) {
        EXPECT_EQ(copy("tree", to), 512) << "into itself, " << to;
        EXPECT_EQ(move("tree", to), 512) << "into itself, " << to;
    }
    EXPECT_EQ(copy("missing", "new"), 260);
    EXPECT_EQ(copy("tree", "missing/new"), 4);
    EXPECT_EQ(copy("tree", "tree/file/below"), 512);
    EXPECT_EQ(move("missing", "new"), 4);
    EXPECT_EQ(move("tree", "missing/new"), 4);
    EXPECT_EQ(remove("missing"), 4);
    EXPECT_EQ(create("tree/dangling"), 516);
    EXPECT_EQ(create("tree/file"), 516);
    EXPECT_EQ(queries_.entriesBelow(at("tree")).size(), 6U);
    EXPECT_FALSE(fs::exists(at("new")) || fs::exists(at("missing")));

    std::optional<foundation::Error> error;
    EXPECT_FALSE(changes_.copyItem(at("missing"), at("new"), &error));
    EXPECT_EQ(*error->userInfo.at("NSLocalizedDescription").string(),
              "could not copy '" + at("missing") + "': No such file or directory");
    EXPECT_EQ(error->userInfo.at(platform::posixErrorCodeKey).integerValue(), ENOENT);
}

TEST_F(FilesContract, RemovesLinksAndNeverTheirTargets) {
    addTree("tree");
    addTree("kept");
    const auto before = traitsBelow("kept");
    fs::create_symlink(at("kept"), at("tree/folder/away"));
    EXPECT_EQ(remove("tree/toFolder"), 0);
    EXPECT_TRUE(fs::exists(at("tree/folder/.hidden")));
    EXPECT_EQ(remove("tree/dangling"), 0);
    EXPECT_EQ(remove("tree"), 0);
    EXPECT_FALSE(fs::exists(at("tree")));
    EXPECT_EQ(traitsBelow("kept"), before);
}

TEST_F(FilesContract, RemovesAPrivateFolderAndNothingThatCannotBeOne) {
    addTree("tmp/123.work");
    addTree("home/own");
    fs::create_symlink(at("home/own"), at("tmp/link"));
    const auto before = traitsBelow("");
    for (const char* name :
         {"", "/home", "/Applications", "/tmp", "/tmp/", "/tmp//", "/tmp/123.work/", "//tmp/123.work",
          "/tmp/./123.work", "/tmp/123.work/.", "/tmp/..", "/tmp/../home/own", "/tmp/123.work/../../home/own",
          "/tmp/missing", "/tmp/missing/../123.work", "/tmp/link", "/tmp/123.work/file", "/tmp/123.work/toFolder"})
        EXPECT_FALSE(changes_.removePrivateFolder(folder_.path() + name)) << name;
    EXPECT_FALSE(changes_.removePrivateFolder(""));
    EXPECT_FALSE(changes_.removePrivateFolder(at("tmp/123.work").substr(1)));
    EXPECT_EQ(traitsBelow(""), before);
    EXPECT_TRUE(changes_.removePrivateFolder(at("tmp/123.work")));
    EXPECT_FALSE(fs::exists(at("tmp/123.work")));
    EXPECT_TRUE(fs::exists(at("tmp")));
}

// A path is used whole or not at all, and no removal begins at the place that names itself.
TEST_F(FilesContract, RefusesPathsThatMeanSomethingElse) {
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
