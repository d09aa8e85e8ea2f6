#include "platform/macos/MacAuthorization.h"

#include "tests/contract/AuthorizationContract.h"
#include "tests/support/darwin/Security.h"

#include <gtest/gtest.h>

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

TEST_F(MacAuthorizationTest, GivesTheRightsBackWhenTheyAreDropped) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    EXPECT_EQ(service.references, 1);
    ref.reset();
    EXPECT_EQ(service.references, 0);
}

TEST_F(MacAuthorizationTest, FillsNothingWhenRefused) {
    service.createStatus = Authorization::denied;
    EXPECT_EQ(authorization.create(ref), Authorization::denied);
    EXPECT_EQ(ref, nullptr);
}

TEST_F(MacAuthorizationTest, HandsTheToolItsArgumentsInOrder) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    ASSERT_TRUE(authorization.executeWithPrivileges(*ref, "/bin/sh", {"-c", "exit 0", "first word", ""}));
    EXPECT_EQ(authorization.wait(), 0);
    EXPECT_EQ(service.commands, (std::vector<std::vector<std::string>>{{"/bin/sh", "-c", "exit 0", "first word", ""}}));
}

TEST_F(MacAuthorizationTest, StartsNothingWhenThePersonCancels) {
    ASSERT_EQ(authorization.create(ref), Authorization::success);
    service.executeStatus = -60006;
    EXPECT_FALSE(authorization.executeWithPrivileges(*ref, "/bin/sh", {"-c", "exit 0"}));
    EXPECT_EQ(authorization.wait(), std::nullopt);
}

namespace tests {

namespace {

struct MacWorld : RealTools<MacAuthorization> {
    MacWorld() { SecurityStandIn::shared() = {}; }
    static std::string missing() { return {}; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Mac, AuthorizationContract, MacWorld);

} // namespace

} // namespace tests
