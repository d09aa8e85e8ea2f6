#pragma once

#include "platform/Authorization.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tests {

// What all authorizations do. A `World` has `authorization`, `arguments(status)`, with which /bin/sh ends so, and
// `missing()`: what this machine lacks to show it, or nothing.
template <class World>
class AuthorizationContract : public testing::Test {
protected:
    void SetUp() override {
        if (!world_.missing().empty())
            GTEST_SKIP() << "needs " << world_.missing();
        ASSERT_EQ(world_.authorization.create(reference_), platform::Authorization::success);
    }
    bool execute(const std::string& tool, const std::vector<std::string>& arguments) {
        return world_.authorization.executeWithPrivileges(*reference_, tool, arguments);
    }
    std::optional<int> rawStatus(int status) {
        return execute("/bin/sh", world_.arguments(status)) ? world_.authorization.wait() : std::nullopt;
    }

    World world_;
    std::shared_ptr<platform::AuthorizationRef> reference_;
};
TYPED_TEST_SUITE_P(AuthorizationContract);

// A world of tools that really run.
template <class Service>
struct RealTools {
    static std::vector<std::string> arguments(int status) { return {"-c", "exit " + std::to_string(status)}; }

    Service authorization;
};

TYPED_TEST_P(AuthorizationContract, RawStatusesComeBackOneAfterTheOther) {
    EXPECT_EQ(this->rawStatus(0), 0);
    EXPECT_EQ(this->rawStatus(3), 0x0300);
    EXPECT_EQ(this->world_.authorization.wait(), std::nullopt) << "no child is left";
}

TYPED_TEST_P(AuthorizationContract, OnlyWholeAbsolutePathsAreStarted) {
    for (const std::string& tool : {std::string(), std::string("sh"), std::string("/bin/sh\0x", 9)})
        EXPECT_FALSE(this->execute(tool, {})) << tool;
    EXPECT_FALSE(this->execute("/bin/sh", {"-c", std::string("exit 0\0x", 8)})) << "it would be cut";
    EXPECT_EQ(this->world_.authorization.wait(), std::nullopt);
}

TYPED_TEST_P(AuthorizationContract, TheChildSignalIsSetBackExactly) {
    struct sigaction before {};
    before.sa_handler = SIG_IGN;
    before.sa_flags = SA_RESTART | SA_NOCLDWAIT;
    struct sigaction original {};
    ::sigaction(SIGCHLD, &before, &original);
    auto defaultSignal = this->world_.authorization.useDefaultChildSignal();
    EXPECT_EQ(this->rawStatus(5), 0x0500) << "it would vanish unseen otherwise";
    defaultSignal.reset();
    struct sigaction after {};
    ::sigaction(SIGCHLD, &original, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
    EXPECT_EQ(after.sa_flags & (SA_RESTART | SA_NOCLDWAIT), SA_RESTART | SA_NOCLDWAIT);
}

REGISTER_TYPED_TEST_SUITE_P(AuthorizationContract, RawStatusesComeBackOneAfterTheOther,
                            OnlyWholeAbsolutePathsAreStarted, TheChildSignalIsSetBackExactly);

} // namespace tests
