#include "download/TXDownloadController.h"

#include "tests/unit/CoreTest.h"

// Where the file goes, what is reported of its arrival, and what is left on disk. The transfer itself: the contract
// tests.

using foundation::Error;
using foundation::URL;

namespace {

const std::string folder = "/tmp/me/400000000123.tolvix";
const std::string file = folder + "/Tolvix.dmg";

struct RecordingDownloadDelegate : TXDownloadControllerDelegate {
    void downloadWillStartAtURL(const std::optional<URL>& url) override {
        messages.push_back("start " + (url ? url->absoluteString() : "nowhere"));
    }
    void downloadProgress(double progress) override { percentages.push_back(progress); }
    void downloadDidEndAtURL(const URL& url) override { messages.push_back("end " + url.absoluteString()); }
    void downloadDidFailWithError(const std::optional<Error>& error) override {
        messages.push_back(error ? "fail " + std::to_string(error->code) : "fail");
    }
    Texts messages;
    std::vector<double> percentages;
};

} // namespace

class DownloadControllerTest : public CoreTest {
protected:
    void start(const std::string& url = "https://h/Tolvix.dmg") {
        controller->startDownloadArchiveAtURL(*URL::withString(url));
    }
    FakeDownload& transfer() { return *system.transfers.downloads.back(); }
    Texts messages() { return std::exchange(delegate->messages, {}); }

    std::shared_ptr<RecordingDownloadDelegate> delegate = std::make_shared<RecordingDownloadDelegate>();
    std::shared_ptr<TXDownloadController> controller = std::make_shared<TXDownloadController>(delegate);
};

TEST_F(DownloadControllerTest, TheFileStaysInItsPrivateFolder) {
    start();
    EXPECT_TRUE(controller->downloadInProgress());
    EXPECT_EQ(messages(), Texts{"start " + file});
    EXPECT_EQ(transfer().destination, file);
    EXPECT_TRUE(transfer().overwrites);
    EXPECT_FALSE(transfer().unpacks());
    transfer().finish();
    EXPECT_EQ(messages(), Texts{"end " + file});
    EXPECT_FALSE(controller->downloadInProgress());
    EXPECT_TRUE(system.files.has(file));
    EXPECT_EQ(system.files.changes, Texts{"create " + folder});
}

TEST_F(DownloadControllerTest, AFailedDownloadLeavesNothingBehind) {
    start();
    system.files.addFile(file, "half of it");
    transfer().fail({foundation::urlErrorDomain, -1005, {}});
    EXPECT_EQ(messages(), (Texts{"start " + file, "fail -1005"}));
    EXPECT_FALSE(controller->downloadInProgress());
    EXPECT_FALSE(system.files.has(folder));
    EXPECT_TRUE(system.files.has("/tmp/me"));
}

TEST_F(DownloadControllerTest, ATransferThatCannotBeMadeFailsAtOnceAndTouchesNothing) {
    start();
    transfer().finish();
    messages();
    system.transfers.refusesDownloads = true;
    start();
    EXPECT_EQ(messages(), Texts{"fail"});
    EXPECT_FALSE(controller->downloadInProgress());
    EXPECT_TRUE(system.files.has(file)) << "the folder of the earlier download is not this one's";
}

TEST_F(DownloadControllerTest, UnusableNamesNeverCreateOrRemoveAnything) {
    for (const char* url : {"https://h", "https://h/", "https://h/a//", "https://h/..", "https://h/a/%2e%2e",
                            "https://h/%2E", "https://h/%2F", "https://h/..%2F..%2Fx.dmg", "https://h/a%2Fb.dmg",
                            "https://h/a%00.dmg", "https://h/%E9.dmg", "https://h/My%20App.dmg", "https://h/%C3%A9.dmg",
                            "https://h/[x].dmg", "https://h/100%25.dmg", "foo:bar"}) {
        SCOPED_TRACE(url);
        start(url);
        EXPECT_EQ(transfer().destination, std::nullopt);
        transfer().finish();
        EXPECT_EQ(messages(), (Texts{"start nowhere", "fail -3000"}));
        EXPECT_TRUE(system.files.changes.empty());
    }
}

TEST_F(DownloadControllerTest, AFolderThatIsNotOursIsLeftAlone) {
    system.files.addFile(folder + "/theirs");
    system.files.item(folder)->owner.userId = 0;
    start();
    transfer().finish();
    EXPECT_EQ(messages(), (Texts{"start nowhere", "fail -3000"}));
    EXPECT_TRUE(system.files.has(folder + "/theirs"));
}

TEST_F(DownloadControllerTest, ReportsPercentagesAsTheyCome) {
    struct Step {
        std::optional<std::int64_t> announced;
        std::uint64_t received;
    };
    struct Row {
        const char* name;
        std::vector<Step> course;
        std::vector<double> expected;
    };
    const Row rows[] = {{"half and whole", {{50000000, 25000000}, {{}, 25000000}}, {50.0, 100.0}},
                        {"neither rounded nor limited", {{3, 1}, {{}, 3}}, {1 / 3.0 * 100.0, 4 / 3.0 * 100.0}},
                        {"a second response starts again", {{100, 80}, {50, 10}}, {80.0, 20.0}},
                        {"unknown length", {{-1, 10}}, {}},
                        {"nothing announced", {{0, 10}}, {}},
                        {"no response", {{{}, 10}}, {}},
                        {"beyond 32 bits", {{8000000000, 4000000000}, {{}, 4000000000}}, {50.0, 100.0}}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        delegate->percentages.clear();
        start();
        for (const Step& step : row.course) {
            if (step.announced)
                transfer().respond(*step.announced);
            transfer().receive(step.received);
        }
        transfer().finish();
        EXPECT_EQ(delegate->percentages, row.expected);
        EXPECT_EQ(messages().back(), "end " + file);
    }
}

TEST_F(DownloadControllerTest, ASecondStartWhileDownloadingIsIgnored) {
    start();
    start("https://h/other.dmg");
    EXPECT_EQ(system.transfers.downloads.size(), 1U);
    EXPECT_EQ(messages(), Texts{"start " + file});
}

// Deliberate in the program: a started transfer goes on and still reports its end.
TEST_F(DownloadControllerTest, AnAbortedAndDroppedDownloadStillReports) {
    start();
    controller->abortDownloadArchive();
    EXPECT_TRUE(controller->downloadInProgress());
    controller.reset();
    transfer().finish();
    EXPECT_EQ(messages().back(), "end " + file);
}

TEST_F(DownloadControllerTest, AFileBesideTheInstallerIsCopiedLikeARemoteOne) {
    start(URL::fileURLWithPath("/a b/2001/Tolvix.dmg").absoluteString());
    EXPECT_EQ(transfer().url.absoluteString(), "file:///a%20b/2001/Tolvix.dmg");
    EXPECT_EQ(transfer().destination, file);
}
