#include "check/TXCheckController.h"

#include "app/TXAppDelegate.h"
#include "tests/unit/CoreTest.h"

// The feed query, every kind of answer to it, the image shipped beside the installer, and who is told when.

using foundation::URL;
using foundation::Value;

namespace {

const std::string feed = "https://binaries.example/q";

struct RecordingCheckDelegate : TXCheckControllerDelegate {
    explicit RecordingCheckDelegate(FakeThreads& fake) : threads(fake) {}
    void add(const std::string& message) { messages.push_back((threads.inBackground() ? "off main: " : "") + message); }
    void checkWillStart() override { add("start"); }
    void checkDidEndWithURL(const URL& url, const std::string& version) override {
        add("end " + url.absoluteString() + " " + version);
    }
    void checkDidFailWithError(const std::optional<foundation::Error>& error) override {
        add(error ? "fail " + error->domain + " " + std::to_string(error->code) : "fail");
        lastError = error;
    }
    FakeThreads& threads;
    Texts messages;
    std::optional<foundation::Error> lastError;
};

} // namespace

class CheckControllerTest : public CoreTest {
protected:
    void start() { controller->startCheckAtURL(URL::withString(feed)); }
    Texts check() {
        start();
        system.threads.runAll();
        return std::exchange(delegate->messages, {});
    }

    std::shared_ptr<RecordingCheckDelegate> delegate = std::make_shared<RecordingCheckDelegate>(system.threads);
    std::shared_ptr<TXCheckController> controller = std::make_shared<TXCheckController>(delegate);
};

TEST_F(CheckControllerTest, EveryAnswerEndsTheCheckOnce) {
    const std::string good = R"({"code":200,"content":{"download_url":"https://h/T.dmg","version":"5.1"}})";
    const std::string found = "end https://h/T.dmg 5.1";
    struct Row {
        const char* name;
        std::string answer;
        std::string expected;
    };
    const Row rows[] = {
        {"success", good, found},
        {"code as text", R"({"code":"200 OK","content":{"download_url":"https://h/T.dmg","version":"5.1"}})", found},
        {"code with a fraction", R"({"code":200.9,"content":{"download_url":"https://h/T.dmg","version":"5.1"}})",
         found},
        {"trailing comma", good.substr(0, good.size() - 1) + ",}", found},
        {"empty URL text", R"({"code":200,"content":{"download_url":"","version":"5.1"}})", "end  5.1"},
        {"UTF-16", std::string("{\0}\0", 4), "fail TXBinariesServiceErrorDomain 0"},
        {"empty body", "", "fail"},
        {"not JSON", "<html>", "fail NSCocoaErrorDomain 3840"},
        {"hundred thousand brackets", std::string(100000, '['), "fail NSCocoaErrorDomain 3840"},
        {"top-level text", "\"200\"", "fail NSCocoaErrorDomain 3840"},
        {"top-level array", "[" + good + "]", "fail TXBinariesServiceErrorDomain 0"},
        {"other code", R"({"code":404,"message":"Not found"})", "fail Not found 404"},
        {"code missing", R"({"message":"m","content":{}})", "fail m 0"},
        {"code null", R"({"code":null,"message":"m"})", "fail m 0"},
        {"code an object", R"({"code":{"a":200},"message":"m"})", "fail m 0"},
        {"code true", R"({"code":true,"message":"m"})", "fail m 1"},
        {"code beyond all numbers", R"({"code":1e999,"message":"m"})", "fail m 9223372036854775807"},
        {"message missing", R"({"code":404})", "fail TXBinariesServiceErrorDomain 404"},
        {"message of another kind", R"({"code":404,"message":{"a":[1]}})", "fail TXBinariesServiceErrorDomain 404"},
        {"content missing", R"({"code":200})", "fail"},
        {"content null", R"({"code":200,"content":null})", "fail"},
        {"content an array", R"({"code":200,"content":["download_url"]})", "fail"},
        {"URL missing", R"({"code":200,"content":{"version":"5.1"}})", "fail"},
        {"URL malformed", R"({"code":200,"content":{"download_url":"a b","version":"5.1"}})", "fail"},
        {"URL a number", R"({"code":200,"content":{"download_url":5,"version":"5.1"}})", "fail"},
        {"version missing", R"({"code":200,"content":{"download_url":"https://h/a"}})", "fail"},
        {"version a number", R"({"code":200,"content":{"download_url":"https://h/a","version":5}})", "fail"},
        {"version empty", R"({"code":200,"content":{"download_url":"https://h/a","version":""}})", "end https://h/a "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        system.transfers.answers[feed] = row.answer;
        EXPECT_EQ(check(), (Texts{"start", row.expected}));
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

TEST_F(CheckControllerTest, ASecondStartWhileRunningIsIgnored) {
    start();
    system.threads.runBackground();
    EXPECT_TRUE(controller->checkInProgress());
    EXPECT_EQ(check(), (Texts{"start", "fail"}));
}

// Deliberate in the program: the flag is set by the background step.
TEST_F(CheckControllerTest, TwoStartsInQuickSuccessionBothRun) {
    start();
    EXPECT_FALSE(controller->checkInProgress());
    start();
    system.threads.runBackground(1);
    system.threads.runAll();
    EXPECT_EQ(delegate->messages, (Texts{"start", "start", "fail", "fail"}));
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
    struct Row {
        const char* name;
        std::string folder;
        std::optional<std::string> buildVersion;
        bool imageThere;
        bool used;
    };
    const Row rows[] = {{"folder of the build version", "/a b/2001", "2001", true, true},
                        {"image missing", "/a b/2002", "2002", false, false},
                        {"folder with more in its name", "/a b/2001-beta", "2001", true, false},
                        {"other build version", "/a b/2001", "2002", true, false},
                        {"case differs", "/a b/b7", "B7", true, false},
                        {"no build version", "/a b/2001", {}, true, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        system.bundles.path = row.folder + "/Installer.app";
        system.bundles.information.erase("CFBundleVersion");
        if (row.buildVersion)
            system.bundles.information.emplace("CFBundleVersion", Value(*row.buildVersion));
        if (row.imageThere)
            system.files.addFile(row.folder + "/Tolvix.dmg");
        system.transfers.fetched.clear();
        EXPECT_EQ(check(), (Texts{"start", row.used ? "end file:///a%20b/2001/Tolvix.dmg 2001" : "fail"}));
        EXPECT_EQ(system.transfers.fetched.empty(), row.used);
    }
}

TEST_F(CheckControllerTest, GuessesVersionsFromPaths) {
    const std::pair<const char*, std::optional<std::string>> rows[] = {{"https://h/a/4.5.1/Tolvix.dmg", "4.5.1"},
                                                                       {"https://h/5/binaries/query", "5"},
                                                                       {"https://h/1/2/x", "2"},
                                                                       {"https://h/a/../x", ".."},
                                                                       {"https://h/v4/x4", {}},
                                                                       {"https://1.2.3", {}},
                                                                       {"https://h/a?v=/1.2", {}},
                                                                       {"foo:1.2", {}},
                                                                       {"", {}}};
    for (const auto& [text, version] : rows)
        EXPECT_EQ(TXCheckController::guessVersionFromURL(URL::withString(text)), version) << text;
    EXPECT_EQ(TXCheckController::guessVersionFromURL(std::nullopt), std::nullopt);
}

TEST_F(CheckControllerTest, TheFeedQueryEscapesItsValues) {
    const std::string beginning = "https://binaries.example/5/binaries/query?platform=launcher_macosx&target=archive"
                                  "&format=json&currentSoftwareVersion=";
    const std::pair<const char*, const char*> rows[] = {{"a b", "a%20b"},           {"a+b++", "a%2Bb%2B%2B"},
                                                        {"a&b=c/d?e", "a&b=c/d?e"}, {"%", "%25"},
                                                        {"a#[b]", "a%23%5Bb%5D"},   {"caf\xC3\xA9+", "(null)"}};
    for (const auto& [partner, value] : rows) {
        system.preferences.stored.clear();
        TXInstallerConfig::setPartnerName(partner);
        EXPECT_EQ(TXAppDelegate::feedURL(), beginning + "2001&os=OS_X_10_9_5&partner=" + value);
        EXPECT_TRUE(URL::withString(TXAppDelegate::feedURL()));
    }
    FakePlatform bare;
    bare.bundles.information.erase("CFBundleVersion");
    TXInstallerConfig::setPartnerName(std::nullopt);
    EXPECT_EQ(TXAppDelegate::feedURL(), beginning + "&os=OS_X_10_9_5&partner=");
}
