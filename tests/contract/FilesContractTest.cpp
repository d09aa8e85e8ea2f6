// What callers rely on in file services: queries, and changes that overwrite nothing and say why they failed. Over the
// real services, with the calls of the system at hand, and over the fake.

#include "tests/contract/FilesTest.h"

#include <algorithm>

using platform::FileType;

namespace tests {

template <class World>
class FilesContract : public World {};
TYPED_TEST_SUITE_P(FilesContract);

TYPED_TEST_P(FilesContract, QueriesFollowLinksExceptForTheType) {
    this->addTree("tree");
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
        const std::string path = this->at(row.name);
        EXPECT_EQ(this->queries().fileExists(path), row.exists);
        EXPECT_EQ(this->queries().isReadableFile(path), row.exists);
        EXPECT_EQ(this->queries().isWritableFile(path), row.exists);
        EXPECT_EQ(this->queries().ownerOfItem(path).has_value(), row.exists);
        const auto attributes = this->queries().attributesOfItem(path);
        EXPECT_EQ(attributes ? std::optional(attributes->type) : std::nullopt, row.type);
    }
}

TYPED_TEST_P(FilesContract, ListingsHoldHiddenNamesAndEnterNoLinks) {
    this->addTree("tree");
    EXPECT_EQ(this->queries().contentsOfDirectory(this->at("tree"))->size(), 5U);
    EXPECT_EQ(this->queries().contentsOfDirectory(this->at("home")), std::vector<std::string>{});
    EXPECT_EQ(this->queries().contentsOfDirectory(this->at("tree/file")), std::nullopt);
    EXPECT_EQ(this->queries().contentsOfDirectory(this->at("missing")), std::nullopt);

    auto entries = this->queries().entriesBelow(this->at("tree"));
    const auto place = [&entries](const char* name) { return std::find(entries.begin(), entries.end(), name); };
    EXPECT_LT(place("folder"), place("folder/.hidden"));
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries,
              (std::vector<std::string>{"dangling", "file", "folder", "folder/.hidden", "toFile", "toFolder"}));
    EXPECT_TRUE(this->queries().entriesBelow(this->at("tree/file")).empty());
}

TYPED_TEST_P(FilesContract, CreatesCopiesAndMovesWithoutFollowingLinks) {
    this->addTree("tree");
    const auto before = this->traitsBelow("tree");
    EXPECT_EQ(this->create("new/deeper/deepest"), 0);
    EXPECT_TRUE(this->queries().attributesOfItem(this->at("new/deeper/deepest"))->type == FileType::Directory);
    EXPECT_EQ(this->create("tree/folder"), 0) << "it is there";
    EXPECT_NE(this->create("tree/toFolder"), 0);
    EXPECT_EQ(this->copy("tree", "copy"), 0);
    EXPECT_EQ(this->traitsBelow("copy"), before);
    EXPECT_EQ(this->traitsBelow("tree"), before);
    EXPECT_EQ(this->move("copy", "moved"), 0);
    EXPECT_EQ(this->traitsBelow("moved"), before);
    EXPECT_FALSE(this->queries().fileExists(this->at("copy")));
    EXPECT_EQ(this->copy("tree/toFolder", "copiedLink"), 0);
    EXPECT_EQ(this->move("moved/dangling", "movedLink"), 0);
    for (const char* name : {"copiedLink", "movedLink"})
        EXPECT_EQ(this->queries().attributesOfItem(this->at(name))->type, FileType::SymbolicLink) << name;
}

TYPED_TEST_P(FilesContract, NothingIsEverOverwritten) {
    this->addTree("tree");
    this->addTree("there");
    this->create("there/empty");
    const auto before = std::pair(this->traitsBelow("tree"), this->traitsBelow("there"));
    for (const char* source : {"tree", "tree/file", "tree/toFile"}) {
        for (const char* name : {"there", "there/file", "there/empty", "there/toFolder", "there/dangling"}) {
            EXPECT_EQ(this->copy(source, name), 516) << source << " to " << name;
            EXPECT_EQ(this->move(source, name), 516) << source << " to " << name;
        }
    }
    EXPECT_EQ(std::pair(this->traitsBelow("tree"), this->traitsBelow("there")), before);
}

TYPED_TEST_P(FilesContract, ErrorsTellWhatWentWrong) {
    this->addTree("tree");
    this->link("alias", "tree/folder");
    for (const char* to : {"tree/new", "tree/folder/new", "alias/new"}) {
        EXPECT_EQ(this->copy("tree", to), 512) << "into itself, " << to;
        EXPECT_EQ(this->move("tree", to), 512) << "into itself, " << to;
    }
    EXPECT_EQ(this->copy("missing", "new"), 260);
    EXPECT_EQ(this->copy("tree", "missing/new"), 4);
    EXPECT_EQ(this->copy("tree", "tree/file/below"), 512);
    EXPECT_EQ(this->move("missing", "new"), 4);
    EXPECT_EQ(this->move("tree", "missing/new"), 4);
    EXPECT_EQ(this->remove("missing"), 4);
    EXPECT_EQ(this->create("tree/dangling"), 516);
    EXPECT_EQ(this->create("tree/file"), 516);
    EXPECT_EQ(this->queries().entriesBelow(this->at("tree")).size(), 6U);
    EXPECT_FALSE(this->queries().fileExists(this->at("new")) || this->queries().fileExists(this->at("missing")));
}

TYPED_TEST_P(FilesContract, RemovesLinksAndNeverTheirTargets) {
    this->addTree("tree");
    this->addTree("kept");
    const auto before = this->traitsBelow("kept");
    this->link("tree/folder/away", this->at("kept"));
    EXPECT_EQ(this->remove("tree/toFolder"), 0);
    EXPECT_TRUE(this->queries().fileExists(this->at("tree/folder/.hidden")));
    EXPECT_EQ(this->remove("tree/dangling"), 0);
    EXPECT_EQ(this->remove("tree"), 0);
    EXPECT_FALSE(this->queries().fileExists(this->at("tree")));
    EXPECT_EQ(this->traitsBelow("kept"), before);
}

TYPED_TEST_P(FilesContract, RemovesAPrivateFolderAndNothingThatCannotBeOne) {
    this->addTree("tmp/123.work");
    this->addTree("home/own");
    this->link("tmp/link", this->at("home/own"));
    const auto before = this->traitsBelow("");
    for (const char* name :
         {"", "/home", "/Applications", "/tmp", "/tmp/", "/tmp//", "/tmp/123.work/", "//tmp/123.work",
          "/tmp/./123.work", "/tmp/123.work/.", "/tmp/..", "/tmp/../home/own", "/tmp/123.work/../../home/own",
          "/tmp/missing", "/tmp/missing/../123.work", "/tmp/link", "/tmp/123.work/file", "/tmp/123.work/toFolder"})
        EXPECT_FALSE(this->changes().removePrivateFolder(this->at("") + name)) << name;
    EXPECT_FALSE(this->changes().removePrivateFolder(""));
    EXPECT_FALSE(this->changes().removePrivateFolder(this->at("tmp/123.work").substr(1)));
    EXPECT_EQ(this->traitsBelow(""), before);
    EXPECT_TRUE(this->changes().removePrivateFolder(this->at("tmp/123.work")));
    EXPECT_FALSE(this->queries().fileExists(this->at("tmp/123.work")));
    EXPECT_TRUE(this->queries().fileExists(this->at("tmp")));
}

// A path is used whole or not at all, and no removal begins at the place that names itself.
TYPED_TEST_P(FilesContract, RefusesPathsThatMeanSomethingElse) {
    this->write("a/file", "x");
    const std::string cut = this->at("a") + '\0' + "b";
    EXPECT_FALSE(this->changes().removeItem(cut));
    EXPECT_FALSE(this->changes().removePrivateFolder(cut));
    EXPECT_FALSE(this->changes().moveItem(cut, this->at("new")));
    EXPECT_FALSE(this->changes().createDirectory(this->at("new") + '\0'));
    EXPECT_FALSE(this->queries().fileExists(cut));
    for (const char* name : {"a/.", "a/..", "a/../.", "."})
        EXPECT_NE(this->remove(name), 0) << name;
    EXPECT_TRUE(this->queries().fileExists(this->at("a/file")));
    EXPECT_FALSE(this->queries().fileExists(this->at("new")));
}

REGISTER_TYPED_TEST_SUITE_P(FilesContract, QueriesFollowLinksExceptForTheType, ListingsHoldHiddenNamesAndEnterNoLinks,
                            CreatesCopiesAndMovesWithoutFollowingLinks, NothingIsEverOverwritten,
                            ErrorsTellWhatWentWrong, RemovesLinksAndNeverTheirTargets,
                            RemovesAPrivateFolderAndNothingThatCannotBeOne, RefusesPathsThatMeanSomethingElse);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FilesContract, FilesTest);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FilesContract, FakeFilesTest);

} // namespace tests
