// What the core relies on in file services. The real ones and their fake behave alike.

#include "tests/contract/FilesWorld.h"

#include <gtest/gtest.h>

#include <algorithm>

using platform::FileType;
using tests::FilesWorld;

namespace {

struct World {
    const char* name;
    std::unique_ptr<FilesWorld> (*make)();
};

void PrintTo(const World& world, std::ostream* stream) {
    *stream << world.name;
}

class FilesContract : public testing::TestWithParam<World> {
protected:
    std::string at(const std::string& name) const { return world_->root() + '/' + name; }
    std::string lookAt(const std::string& name) { return world_->look(at(name)).value_or("nothing"); }

    // A folder with a file, a folder with a file, and a link of each kind.
    void addTree(const std::string& name) {
        world_->addFolder(at(name));
        world_->addFile(at(name + "/file"), "bytes");
        world_->addFile(at(name + "/folder/.hidden"), "below");
        world_->addLink(at(name + "/toFile"), "file");
        world_->addLink(at(name + "/toFolder"), "folder");
        world_->addLink(at(name + "/dangling"), "nowhere");
    }

    void expectTree(const std::string& name) {
        EXPECT_EQ(lookAt(name), "folder");
        EXPECT_EQ(lookAt(name + "/file"), "file bytes");
        EXPECT_EQ(lookAt(name + "/folder"), "folder");
        EXPECT_EQ(lookAt(name + "/folder/.hidden"), "file below");
        EXPECT_EQ(lookAt(name + "/toFile"), "link file");
        EXPECT_EQ(lookAt(name + "/toFolder"), "link folder");
        EXPECT_EQ(lookAt(name + "/dangling"), "link nowhere");
    }

    std::unique_ptr<FilesWorld> world_ = GetParam().make();
    platform::FileQueries& queries_ = world_->queries();
    platform::FileChanges& changes_ = world_->changes();
};

INSTANTIATE_TEST_SUITE_P(Services, FilesContract,
                         testing::Values(World{"Real", tests::makeRealFiles}, World{"Fake", tests::makeFakeFiles}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(FilesContract, QueriesFollowLinksExceptForTheType) {
    addTree("tree");
    struct Row {
        const char* name;
        bool exists;
        std::optional<FileType> type;
    };
    for (const Row& row :
         {Row{"tree", true, FileType::Directory}, Row{"tree/file", true, FileType::Regular},
          Row{"tree/toFile", true, FileType::SymbolicLink}, Row{"tree/toFolder", true, FileType::SymbolicLink},
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
    EXPECT_FALSE(queries_.fileExists(""));
}

TEST_P(FilesContract, ListingsHoldHiddenNamesAndEnterNoLinks) {
    addTree("tree");
    auto names = queries_.contentsOfDirectory(at("tree")).value();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"dangling", "file", "folder", "toFile", "toFolder"}));
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
    EXPECT_TRUE(queries_.entriesBelow(at("missing")).empty());
}

TEST_P(FilesContract, CreatesFoldersAndAcceptsOnlyRealOnesThatAreThere) {
    addTree("tree");
    EXPECT_TRUE(changes_.createDirectory(at("new/deeper/deepest")));
    EXPECT_EQ(lookAt("new/deeper/deepest"), "folder");
    EXPECT_TRUE(changes_.createDirectory(at("tree/folder")));
    expectTree("tree");
    for (const char* name : {"tree/file", "tree/toFolder", "tree/dangling", "tree/file/below"})
        EXPECT_FALSE(changes_.createDirectory(at(name))) << name;
    expectTree("tree");
}

TEST_P(FilesContract, CopiesAndMovesWholeTreesAndLinksThemselves) {
    addTree("tree");
    EXPECT_TRUE(changes_.copyItem(at("tree"), at("copy")));
    expectTree("copy");
    expectTree("tree");
    EXPECT_TRUE(changes_.copyItem(at("tree/toFolder"), at("copiedLink")));
    EXPECT_EQ(lookAt("copiedLink"), "link folder");
    EXPECT_TRUE(changes_.moveItem(at("copy"), at("moved")));
    expectTree("moved");
    EXPECT_EQ(lookAt("copy"), "nothing");
    EXPECT_TRUE(changes_.moveItem(at("moved/dangling"), at("movedLink")));
    EXPECT_EQ(lookAt("movedLink"), "link nowhere");
}

TEST_P(FilesContract, NothingIsEverOverwritten) {
    addTree("tree");
    addTree("there");
    world_->addFolder(at("there/empty"));
    for (const char* source : {"tree", "tree/file", "tree/toFile"}) {
        for (const char* name : {"there", "there/file", "there/empty", "there/toFolder", "there/dangling"}) {
            EXPECT_FALSE(changes_.copyItem(at(source), at(name))) << source << " to " << name;
            EXPECT_FALSE(changes_.moveItem(at(source), at(name))) << source << " to " << name;
        }
    }
    expectTree("tree");
    expectTree("there");
    EXPECT_EQ(lookAt("there/empty"), "folder");
}

TEST_P(FilesContract, CopyAndMoveNeedASourceAndAFolderToGoTo) {
    addTree("tree");
    for (const auto& [from, to] : std::initializer_list<std::pair<const char*, const char*>>{
             {"missing", "new"}, {"tree", "missing/new"}, {"tree", "tree/file/new"}}) {
        EXPECT_FALSE(changes_.copyItem(at(from), at(to))) << to;
        EXPECT_FALSE(changes_.moveItem(at(from), at(to))) << to;
    }
    expectTree("tree");
    EXPECT_EQ(lookAt("new"), "nothing");
    EXPECT_EQ(lookAt("missing"), "nothing");
}

TEST_P(FilesContract, RemovesLinksAndNeverTheirTargets) {
    addTree("tree");
    addTree("kept");
    world_->addLink(at("tree/folder/away"), at("kept"));
    EXPECT_TRUE(changes_.removeItem(at("tree/toFolder")));
    EXPECT_EQ(lookAt("tree/folder/.hidden"), "file below");
    EXPECT_TRUE(changes_.removeItem(at("tree/dangling")));
    EXPECT_TRUE(changes_.removeItem(at("tree/file")));
    EXPECT_TRUE(changes_.removeItem(at("tree")));
    EXPECT_EQ(lookAt("tree"), "nothing");
    EXPECT_FALSE(changes_.removeItem(at("tree")));
    expectTree("kept");
}

TEST_P(FilesContract, RemovesAPrivateFolderAndNothingThatCannotBeOne) {
    addTree("tmp/123.work");
    addTree("home/own");
    world_->addLink(at("tmp/link"), at("home/own"));
    const std::string root = world_->root();
    for (const std::string& path : {std::string(),
                                    root,
                                    root + "/home",
                                    root + "/Applications",
                                    root + "/tmp",
                                    root + "/tmp/",
                                    root + "/tmp//",
                                    root + "/tmp/123.work/",
                                    root + "//tmp/123.work",
                                    root + "/tmp/./123.work",
                                    root + "/tmp/123.work/.",
                                    root + "/tmp/..",
                                    root + "/tmp/../home/own",
                                    root + "/tmp/123.work/../../home/own",
                                    root + "/tmp/missing",
                                    root + "/tmp/missing/../123.work",
                                    root + "/tmp/link",
                                    root + "/tmp/123.work/file",
                                    root + "/tmp/123.work/toFolder",
                                    root.substr(1) + "/tmp/123.work"}) {
        EXPECT_FALSE(changes_.removePrivateFolder(path)) << path;
    }
    expectTree("tmp/123.work");
    expectTree("home/own");
    EXPECT_TRUE(changes_.removePrivateFolder(at("tmp/123.work")));
    EXPECT_EQ(lookAt("tmp/123.work"), "nothing");
    EXPECT_EQ(lookAt("tmp"), "folder");
}

} // namespace
