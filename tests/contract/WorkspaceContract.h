#pragma once

#include "platform/Workspace.h"

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace tests {

// What all desktops do. A `World` has `workspace`, a `folder()`, and `addFile(path)` and `has(path)` for what lies in
// it.
template <class World>
class WorkspaceContract : public testing::Test {
protected:
    World world_;
};
TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, DestroysOnlyWhatIsNamedAndThere) {
    auto& world = this->world_;
    platform::Workspace& workspace = world.workspace;
    const std::string place = world.folder() + "/place";
    for (const char* name : {"/file", "/tree/deep/file", "/kept"})
        world.addFile(place + name);
    world.addFile(world.folder() + "/outside");
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("tree/deep"),
                                    std::string("../outside"), std::string("file\0x", 6)})
        EXPECT_FALSE(workspace.destroyFiles(place, {"file", name})) << name;
    EXPECT_TRUE(world.has(place + "/file")) << "nothing is touched when a name is wrong";
    EXPECT_FALSE(workspace.destroyFiles("", {"file"}));
    EXPECT_FALSE(workspace.destroyFiles(place, {"missing", "file"}));
    EXPECT_FALSE(world.has(place + "/file")) << "the others go all the same";
    EXPECT_TRUE(workspace.destroyFiles(place, {"tree"}));
    EXPECT_FALSE(world.has(place + "/tree"));
    EXPECT_TRUE(world.has(place + "/kept") && world.has(world.folder() + "/outside"));
}

TYPED_TEST_P(WorkspaceContract, ShowsAndLaunchesNothingThatIsNotThere) {
    platform::Workspace& workspace = this->world_.workspace;
    for (const std::string& path : {this->world_.folder() + "/Missing.app", std::string("relative"), std::string()}) {
        EXPECT_FALSE(workspace.selectFile(path, "")) << path;
        EXPECT_FALSE(workspace.launchApplication(path)) << path;
    }
}

TYPED_TEST_P(WorkspaceContract, FindsNoCopiesOfWhatDoesNotRunAndLeavesOthersAlone) {
    EXPECT_TRUE(this->world_.workspace.runningApplications("example.nothing").empty());
    // Its number is taken, but by a process with another start.
    this->world_.workspace.terminate({::getpid(), 1});
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceContract, DestroysOnlyWhatIsNamedAndThere, ShowsAndLaunchesNothingThatIsNotThere,
                            FindsNoCopiesOfWhatDoesNotRunAndLeavesOthersAlone);

} // namespace tests
