#include "telemetry/TXInstallerLogController.h"

#include "app/StepCode.h"
#include "tests/unit/CoreTest.h"

#include <cstdlib>

// What an event carries, how its body is written, and that each start is matched by one end.

namespace {

struct RecordingLogDelegate : TXInstallerLogControllerDelegate, TXInstallerLogRequestDelegate {
    void installerLogRequestWillStart() override { ++started; }
    void installerLogRequestDidFinish() override { ++finished; }
    void requestDidFinish(const TXInstallerLogRequest& /*request*/) override { ++finished; }
    int started = 0;
    int finished = 0;
};

} // namespace

class LogControllerTest : public CoreTest {
protected:
    std::shared_ptr<TXInstallerLogController> makeController() const {
        return std::make_shared<TXInstallerLogController>(delegate);
    }

    // The fields of an event that a new controller posts.
    std::map<std::string, std::string> event() {
        makeController()->installerLogToServerWithCode("23.11");
        return fields(system.transfers.posts.size() - 1);
    }

    // What goes out for the arguments alone.
    std::string posted(const std::optional<TXInstallerLogRequest::Arguments>& arguments) {
        const auto url = *foundation::URL::withString("https://log.example/x");
        std::make_shared<TXInstallerLogRequest>(delegate)->sendRequest(url, arguments);
        return system.transfers.posts.back().request.body;
    }

    std::shared_ptr<RecordingLogDelegate> delegate = std::make_shared<RecordingLogDelegate>();
};

TEST_F(LogControllerTest, AnEventDescribesTheInstallation) {
    event();
    const platform::PostRequest& request = system.transfers.posts[0].request;
    EXPECT_EQ(request.body, "anonymouscomputerid=00000000-0000-4000-8000-000000000001&buildVersion=2001&content={}"
                            "&country=CH&freshInstall=1&lang=fr-CH&launcherVersion=2.0.1&os=launcher_macosx"
                            "&oscountry=CH&oslang=fr-CH&osversion=OS_X_10_9_0&step=23.11&version=");
    EXPECT_EQ(request.url.absoluteString(), "https://log.example/1/installerlog/create");
    EXPECT_EQ(request.headerName + ": " + request.headerValue, "content-type: application/x-www-form-urlencoded");
    system.files.addFolder("/Applications/Tolvix.app");
    EXPECT_EQ(event()["freshInstall"], "0");
}

// Deliberate in the program: a locale without a country sends the first four arguments alone.
TEST_F(LogControllerTest, TheArgumentListEndsAtItsFirstMissingValue) {
    const auto sent = [this] {
        std::string keys;
        for (const auto& [key, value] : event())
            keys += key + " ";
        return keys;
    };
    system.bundles.information.erase("CFBundleVersion");
    EXPECT_EQ(sent(), "anonymouscomputerid content country lang launcherVersion os oscountry oslang osversion step "
                      "version ");
    system.locale.languages.clear();
    EXPECT_EQ(sent(), "anonymouscomputerid content country os oscountry osversion step version ");
    system.locale.country.reset();
    EXPECT_EQ(sent(), "anonymouscomputerid content os osversion step version ");
    system.preferences.stored.clear();
    system.processInfo.hasRandomNumbers = false;
    EXPECT_EQ(sent(), "content step ") << "nobody is identified";
    makeController()->installerLogToServerWithCode(std::nullopt);
    EXPECT_EQ(system.transfers.posts.back().request.body, "content={}") << "no step";
}

// Deliberate in the program: every event goes out at once, without a flush as well.
TEST_F(LogControllerTest, PrecisionsOverrideSharedOnesInTheirEventAlone) {
    TXInstallerConfig::setPartnerName("acme");
    TXInstallerConfig::setPartnerID("7");
    TXInstallerConfig::setCampaignID("spring");
    const auto controller = makeController();
    controller->setVersion("5.1.0-dmg");
    controller->setVersion(std::nullopt);
    const TXInstallerLogController::Precisions precisions{{"partnerName", "other"}, {"autoStart", "1"}};
    controller->installerLogToServerWithCode("23.01", precisions, false);
    controller->installerLogToServerWithCode("23.11");
    EXPECT_EQ(fields(0)["content"], R"({"autoStart":"1","campaignId":"spring","partnerId":"7","partnerName":"other"})");
    EXPECT_EQ(fields(1)["content"], R"({"campaignId":"spring","partnerId":"7","partnerName":"acme"})");
    EXPECT_EQ(fields(1)["version"], "5.1.0-dmg");
}

TEST_F(LogControllerTest, AContentThatIsNoTextIsSentEmpty) {
    TXInstallerConfig::setPartnerName("\xFF");
    EXPECT_EQ(event()["content"], "{}");
    ASSERT_EQ(system.console.messages.size(), 1U);
    EXPECT_EQ(system.console.messages[0].rfind("JSON serialization failed with error: Error Domain=", 0), 0U);
}

TEST_F(LogControllerTest, EventsArePrintedOnlyWhereAsked) {
    system.locale.country.reset();
    event();
    EXPECT_TRUE(system.console.messages.empty());
    system.preferences.stored["example.tolvix.agent"].emplace("TXDumpUsageLogs", foundation::Value(true));
    event();
    ASSERT_EQ(system.console.messages.size(), 1U);
    const std::string& printed = system.console.messages[0];
    EXPECT_EQ(printed.rfind("[INSTALLER_LOG] 23.11\n{\n", 0), 0U) << printed;
    EXPECT_NE(printed.find("    step = \"23.11\";\n    version = \"\";\n}\n"), std::string::npos) << printed;
}

TEST_F(LogControllerTest, EachStartIsMatchedByOneEnd) {
    for (int i = 0; i < 3; ++i)
        event();
    EXPECT_EQ(delegate->started, 3);
    EXPECT_EQ(delegate->finished, 0);
    system.transfers.finishPost(2);
    EXPECT_TRUE(system.console.messages.empty());
    system.transfers.failPost(0, {foundation::urlErrorDomain, -1004, {}});
    EXPECT_EQ(system.console.messages,
              Texts{"Request did fail with error: Error Domain=NSURLErrorDomain Code=-1004 \"(null)\""});
    EXPECT_EQ(delegate->finished, 2);
}

// In a process of its own, because other tests make the shared controller.
TEST_F(LogControllerTest, EventsBeforeTheControllerIsMadeAreNone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto log = [this] {
        logStep(StepCode::checkWillStart);
        std::_Exit(system.transfers.posts.empty() ? 0 : 1);
    };
    EXPECT_EXIT(log(), testing::ExitedWithCode(0), "");
}

TEST_F(LogControllerTest, AnEventWithoutAnAddressIsAFailedRequest) {
    std::make_shared<TXInstallerLogRequest>(delegate)->sendRequest(std::nullopt, "body");
    EXPECT_EQ(delegate->finished, 0) << "never inside the call";
    system.threads.runAll();
    EXPECT_EQ(delegate->finished, 1);
    EXPECT_TRUE(system.transfers.posts.empty());
    EXPECT_EQ(system.console.messages,
              Texts{"Request did fail with error: Error Domain=NSURLErrorDomain Code=-1000 \"(null)\""});
}

// Deliberate in the program: the service reads the body as it is, and a body beyond ASCII loses as many bytes at its
// end as it has more than UTF-16 units.
TEST_F(LogControllerTest, TheBodyIsRawAndCutToItsUtf16Length) {
    EXPECT_EQ(posted(std::nullopt), "");
    EXPECT_EQ(posted({{{"a", "x&y=%41 +z\n"}, {"b", "{\"c\":\"d\"}"}}}), "a=x&y=%41 +z\n&b={\"c\":\"d\"}");
    EXPECT_EQ(posted({{{"l", "\xE2\x82\xACuros"}}}), "l=\xE2\x82\xACur");
    EXPECT_EQ(posted({{{"l", "\xF0\x9F\x98\x80!!"}}}), "l=\xF0\x9F\x98\x80");
}
