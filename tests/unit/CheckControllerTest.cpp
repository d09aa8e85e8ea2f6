#include "check/TXCheckController.h"

#include "app/TXAppDelegate.h"
#include "tests/unit/RecordingDelegate.h"

// The feed query, every kind of answer to it, the image shipped beside the installer, and who is told when.

using foundation::URL;
using foundation::Value;

namespace {

const std::string feed = "https://binaries.example/q";

} // namespace

class CheckControllerTest : public CoreTest {
protected:
    void start() { controller->startCheckAtURL(URL::withString(feed)); }
    Texts check() {
        start();
        system.threads.runAll();
        return delegate->taken();
    }

    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(system.threads);
    std::shared_ptr<TXCheckController> controller = std::make_shared<TXCheckController>(delegate);
};

TEST_F(CheckControllerTest, EveryAnswerEndsTheCheckOnce) {
    const std::string content = R"("content":{"download_url":"https://h/T.dmg","version":"5.1"}})";
    const std::string found = "end https://h/T.dmg 5.1";
    const std::pair<std::string, std::string> rows[] = {
        {R"({"code":200,)" + content, found},
        {R"({"code":"200 OK",)" + content, found},
        {R"([{"code":200,)" + content + "]",
         "fail TXBinariesServiceErrorDomain 0 The service's answer is not an object."},
        {"", "fail"},
        {"<html>", "fail NSCocoaErrorDomain 3840"},
        {R"({"code":404,"message":"Not found"})", "fail Not found 404"},
        {R"({"code":null,"message":"m"})", "fail m 0"},
        {R"({"code":{"a":200},"message":"m"})", "fail m 0"},
        {R"({"code":1e999,"message":"m"})", "fail m 9223372036854775807"},
        {R"({"code":404})", "fail TXBinariesServiceErrorDomain 404"},
        {R"({"code":404,"message":{"a":[1]}})", "fail TXBinariesServiceErrorDomain 404"},
        {R"({"code":200})", "fail"},
        {R"({"code":200,"content":["download_url"]})", "fail"},
        {R"({"code":200,"content":{"download_url":"a b","version":"5.1"}})", "fail"},
        {R"({"code":200,"content":{"download_url":5,"version":"5.1"}})", "fail"},
        {R"({"code":200,"content":{"download_url":"https://h/a"}})", "fail"},
        {R"({"code":200,"content":{"download_url":"https://h/a","version":5}})", "fail"},
        {R"({"code":200,"content":{"download_url":"","version":""}})", "end  "},
    };
    for (const auto& [answer, expected] : rows) {
        SCOPED_TRACE(answer);
        system.transfers.answers[feed] = answer;
        EXPECT_EQ(check(), (Texts{"start", expected}));
        EXPECT_FALSE(controller->checkInProgress());
    }
}

TEST_F(CheckControllerTest, TheWholeAnswerGoesIntoTheError) {
    system.transfers.answers[feed] = R"({"code":404,"message":"Not found"})";
    check();
    const Value::Dictionary answer{{"code", Value(std::int64_t{404})}, {"message", Value("Not found")}};
    EXPECT_EQ(delegate->lastError->userInfo, answer);
}

TEST_F(CheckControllerTest, WithoutAnswerOrAddressTheErrorIsAbsent) {
    EXPECT_EQ(check(), (Texts{"start", "fail"}));
    controller->startCheckAtURL(std::nullopt);
    system.threads.runAll();
    EXPECT_EQ(delegate->messages, (Texts{"start", "fail"}));
    EXPECT_EQ(system.transfers.fetched, Texts{feed});
}

// Deliberate in the program: the flag is set by the background step.
TEST_F(CheckControllerTest, AStartIsIgnoredOnlyOnceTheStepHasBegun) {
    start();
    EXPECT_FALSE(controller->checkInProgress());
    start();
    system.threads.runBackground(1);
    EXPECT_TRUE(controller->checkInProgress());
    start();
    system.threads.runAll();
    EXPECT_EQ(delegate->messages, (Texts{"start", "start", "fail", "fail"}));
}

TEST_F(CheckControllerTest, ChecksThatOverlapDoNotMixTheirResults) {
    const std::string first = R"({"code":200,"content":{"download_url":"https://h/1","version":"1"}})";
    for (const char* second :
         {R"({"code":200})", R"({"code":200,"content":{"download_url":"https://h/2","version":"2"}})"}) {
        start();
        start();
        system.transfers.answers[feed] = first;
        system.threads.runBackground();
        system.transfers.answers[feed] = second;
        system.threads.runBackground();
        const Texts messages = check();
        EXPECT_EQ(Texts(messages.begin(), messages.begin() + 3), (Texts{"start", "start", "end https://h/1 1"}));
        EXPECT_EQ(messages[3], std::string(second).size() < 20 ? "fail" : "end https://h/2 2");
    }
}

TEST_F(CheckControllerTest, WithoutAThreadTheCheckFails) {
    system.threads.threadsLeft = 0;
    EXPECT_EQ(check(), (Texts{"start", "fail NSPOSIXErrorDomain 11 No further thread could be started."}));
    EXPECT_FALSE(controller->checkInProgress());
}

// Deliberate in the program: a check that has begun delivers its result.
TEST_F(CheckControllerTest, AnAbortedAndDroppedCheckStillReports) {
    start();
    system.threads.runBackground();
    controller->abortChecking();
    EXPECT_TRUE(controller->checkInProgress());
    controller.reset();
    EXPECT_EQ(delegate->messages, Texts{"start"}) << "reported from the worker";
    system.threads.runAll();
    EXPECT_EQ(delegate->messages, (Texts{"start", "fail"}));
}

TEST_F(CheckControllerTest, AnImageBesideTheInstallerIsUsedUnasked) {
    system.files.addFile("/a b/2001/Tolvix.dmg");
    system.files.addFile("/a b/2001-beta/Tolvix.dmg");
    system.files.addFile("/a b/b7/Tolvix.dmg");
    const auto checkFrom = [this](const std::string& folder, const std::optional<std::string>& version) {
        system.bundles.path = folder + "/Installer.app";
        system.bundles.information.erase("CFBundleVersion");
        if (version)
            system.bundles.information.emplace("CFBundleVersion", Value(*version));
        return check().back();
    };
    EXPECT_EQ(checkFrom("/a b/2001", "2001"), "end file:///a%20b/2001/Tolvix.dmg 2001");
    EXPECT_TRUE(system.transfers.fetched.empty());
    EXPECT_EQ(checkFrom("/a b/2001", "2002"), "fail");
    EXPECT_EQ(checkFrom("/a b/2002", "2002"), "fail");
    EXPECT_EQ(checkFrom("/a b/2001-beta", "2001"), "fail");
    EXPECT_EQ(checkFrom("/a b/b7", "B7"), "fail");
    EXPECT_EQ(checkFrom("/a b/2001", {}), "fail");
    EXPECT_EQ(system.transfers.fetched.size(), 5U);
}

TEST_F(CheckControllerTest, GuessesVersionsFromPaths) {
    const auto guess = [](const char* text) { return TXCheckController::guessVersionFromURL(URL::withString(text)); };
    EXPECT_EQ(guess("https://h/a/1/4.5.1/Tolvix.dmg"), "4.5.1");
    EXPECT_EQ(guess("https://1.2.3/v4/x4?v=/1.2"), std::nullopt);
    EXPECT_EQ(guess("foo:1.2"), std::nullopt);
}

TEST_F(CheckControllerTest, TheFeedQueryEscapesItsValues) {
    const std::string beginning = "https://binaries.example/5/binaries/query?platform=launcher_macosx&target=archive"
                                  "&format=json&currentSoftwareVersion=2001&os=OS_X_10_9_0&partner=";
    const std::pair<const char*, const char*> rows[] = {
        {"a+b c%", "a%2Bb%20c%25"}, {"a&b=c/d?e#[f]", "a&b=c/d?e%23%5Bf%5D"}, {"caf\xC3\xA9+", "(null)"}};
    for (const auto& [partner, value] : rows) {
        system.preferences.stored.clear();
        TXInstallerConfig::setPartnerName(partner);
        EXPECT_EQ(TXAppDelegate::feedURL(), beginning + value);
        EXPECT_TRUE(URL::withString(TXAppDelegate::feedURL()));
    }
}
