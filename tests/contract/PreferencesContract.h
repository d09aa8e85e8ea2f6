#pragma once

#include "platform/Preferences.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tests {

// What all preferences do. A `World` has `run(step)`, which calls the step with the preferences of a new run of the
// program; what a run has stored is there in the next.
template <class World>
class PreferencesContract : public testing::Test {
protected:
    // Leaves nothing stored, for where all tests share one place.
    void TearDown() override {
        run([](platform::Preferences& preferences) {
            for (const std::string& key : keys())
                preferences.setValue(std::nullopt, key, "example.agent");
            preferences.synchronize("example.agent");
        });
        run([](platform::Preferences& preferences) {
            for (const std::string& key : keys())
                EXPECT_EQ(preferences.appValue(key, "example.agent"), std::nullopt) << key;
        });
    }

    void run(const std::function<void(platform::Preferences&)>& step) { world_.run(step); }

    static std::vector<std::string> texts() {
        return {"",
                "  two words ",
                "a=b;c,d \"e\" \\ % # \\n",
                "@Invalid()",
                "@@x",
                "one\ntwo\r\n\tthree\x01\x7F"
                "a\x1F",
                "Zoë 安装 😀",
                "[General]"};
    }
    static std::vector<std::string> keys() {
        std::vector<std::string> keys{"key", "other"};
        for (const std::string& text : texts())
            keys.push_back("key" + text);
        return keys;
    }

    static foundation::Value text(const std::string& bytes) { return foundation::Value(bytes); }

private:
    World world_;
};
TYPED_TEST_SUITE_P(PreferencesContract);

TYPED_TEST_P(PreferencesContract, ChangesAreSeenAtOnceAndStoredBySynchronize) {
    const auto text = &TestFixture::text;
    this->run([&](platform::Preferences& preferences) {
        EXPECT_EQ(preferences.appValue("key", "example.agent"), std::nullopt);
        preferences.setValue(text("old"), "key", "example.agent");
        EXPECT_EQ(preferences.appValue("key", "example.agent"), text("old"));
        preferences.synchronize("example.agent");
        preferences.setValue(text("new"), "key", "example.agent");
        preferences.setValue(text("other"), "other", "example.agent");
        preferences.synchronize("example.agent");
        EXPECT_EQ(preferences.appValue("key", "example.agent"), text("new"));
        EXPECT_EQ(preferences.appValue("key", "example.other"), std::nullopt);
    });
    this->run([&](platform::Preferences& preferences) {
        EXPECT_EQ(preferences.appValue("key", "example.agent"), text("new"));
        EXPECT_EQ(preferences.appValue("key", "example.other"), std::nullopt);
        preferences.setValue(std::nullopt, "key", "example.agent");
        EXPECT_EQ(preferences.appValue("key", "example.agent"), std::nullopt);
        preferences.synchronize("example.agent");
    });
    this->run([&](platform::Preferences& preferences) {
        EXPECT_EQ(preferences.appValue("key", "example.agent"), std::nullopt);
        EXPECT_EQ(preferences.appValue("other", "example.agent"), text("other"));
    });
}

TYPED_TEST_P(PreferencesContract, KeepsTextsOfEveryKind) {
    const auto texts = TestFixture::texts();
    this->run([&](platform::Preferences& preferences) {
        for (const std::string& each : texts)
            preferences.setValue(foundation::Value(each), "key" + each, "example.agent");
        preferences.synchronize("example.agent");
    });
    this->run([&](platform::Preferences& preferences) {
        for (const std::string& each : texts)
            EXPECT_EQ(preferences.appValue("key" + each, "example.agent"), foundation::Value(each));
    });
}

REGISTER_TYPED_TEST_SUITE_P(PreferencesContract, ChangesAreSeenAtOnceAndStoredBySynchronize, KeepsTextsOfEveryKind);

} // namespace tests
