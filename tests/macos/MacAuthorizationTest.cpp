#include "platform/macos/MacAuthorization.h"

#include "tests/support/darwin/Security.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>

using platform::Authorization;
using platform::MacAuthorization;

namespace {

class MacAuthorizationTest : public testing::Test {
protected:
    MacAuthorizationTest() { service = {}; }

    SecurityStandIn& service = SecurityStandIn::shared();
    MacAuthorization authorization;
    std::shared_ptr<platform::AuthorizationRef> ref;
};

} // namespace

TEST_F(MacAuthorizationTest, givesTheRightsBackWhenTheyAreDropped) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    EXPECT_EQ(service.references, 1);
    ref.reset();
    EXPECT_EQ(service.references, 0);
}

TEST_F(MacAuthorizationTest, fillsNothingWhenRefused) {
    service.createStatus = Authorization::denied;
    EXPECT_EQ(authorization.create(ref), Authorization::denied);
    EXPECT_EQ(ref, nullptr);
}

TEST_F(MacAuthorizationTest, runsToolsOneAfterTheOtherAndSeesHowTheyEnd) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    const std::vector<std::vector<std::string>> arguments{{"-c", "exit 0", "first word", ""}, {"-c", "exit 7"}};
    std::vector<int> ends;
    for (const auto& words : arguments) {
        ASSERT_TRUE(authorization.executeWithPrivileges(*ref, "/bin/sh", words));
        const auto status = authorization.wait();
        ASSERT_TRUE(status && WIFEXITED(*status));
        ends.push_back(WEXITSTATUS(*status));
    }
    EXPECT_EQ(ends, (std::vector{0, 7}));
    EXPECT_EQ(authorization.wait(), std::nullopt);
    EXPECT_EQ(service.commands, (std::vector<std::vector<std::string>>{{"/bin/sh", "-c", "exit 0", "first word", ""},
                                                                       {"/bin/sh", "-c", "exit 7"}}));
}

TEST_F(MacAuthorizationTest, startsNothingWhenThePersonCancelsOrTheCommandIsNone) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    for (const std::string tool : {"relative/tool", ""})
        EXPECT_FALSE(authorization.executeWithPrivileges(*ref, tool, {}));
    EXPECT_FALSE(authorization.executeWithPrivileges(*ref, "/bin/sh", {std::string("cut\0short", 9)}));
    EXPECT_TRUE(service.commands.empty());
    service.executeStatus = -60006;
    EXPECT_FALSE(authorization.executeWithPrivileges(*ref, "/bin/sh", {"-c", "exit 0"}));
    EXPECT_EQ(authorization.wait(), std::nullopt);
}

TEST_F(MacAuthorizationTest, waitsForToolsAlthoughTheChildSignalWasIgnored) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    auto changed = authorization.useDefaultChildSignal();
    ASSERT_TRUE(authorization.executeWithPrivileges(*ref, "/bin/sh", {"-c", "exit 3"}));
    const auto status = authorization.wait();
    changed.reset();
    EXPECT_EQ(std::signal(SIGCHLD, before), SIG_IGN);
    ASSERT_TRUE(status.has_value());
    EXPECT_EQ(WEXITSTATUS(*status), 3);
}
