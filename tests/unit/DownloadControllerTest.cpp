#include "download/TXDownloadController.h"

#include "tests/unit/RecordingDelegate.h"

// Where the file goes, what is reported of its arrival, and what is left on disk. The transfer itself: the contract
// tests.

using foundation::URL;

namespace {

const std::string folder = "/tmp/me/400000000123.tolvix";
const std::string file = folder + "/Tolvix.dmg";

using Percentages = std::vector<double>;

} // namespace

class DownloadControllerTest : public CoreTest {
protected:
    void start(const std::string& url = "https://h/Tolvix.dmg") {
        controller->startDownloadArchiveAtURL(*URL::withString(url));
    }
    FakeDownload& transfer() { return *system.transfers.downloads.back(); }
    Texts messages() {
        system.threads.runAll();
        return delegate->taken();
    }

    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(system.threads);
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

TEST_F(DownloadControllerTest, AFailedDownloadRemovesItsOwnFolderAlone) {
    start();
    transfer().finish();
    messages();
    system.transfers.refusesDownloads = true;
    start();
    EXPECT_EQ(messages(), Texts{"fail"});
    EXPECT_FALSE(controller->downloadInProgress());
    EXPECT_TRUE(system.files.has(file)) << "the folder of the earlier download is not this one's";
    system.transfers.refusesDownloads = false;
    start();
    transfer().fail({foundation::urlErrorDomain, -1005, {}});
    EXPECT_EQ(delegate->taken(), (Texts{"start " + file, "fail NSURLErrorDomain -1005"})) << "all in one turn";
    EXPECT_FALSE(controller->downloadInProgress());
    EXPECT_FALSE(system.files.has(folder));
    EXPECT_TRUE(system.files.has("/tmp/me"));
}

// Deliberate in the program: such a download ends before the server is asked.
TEST_F(DownloadControllerTest, UnusableNamesNeverCreateOrRemoveAnything) {
    for (const char* url :
         {"https://h", "https://h/", "https://h/a//", "https://h/..", "https://h/a/%2e%2e", "https://h/%2E",
          "https://h/%2F", "https://h/..%2F..%2Fx.dmg", "https://h/a%00.dmg", "https://h/%E9.dmg",
          "https://h/My%20App.dmg", "https://h/%C3%A9.dmg", "https://h/[x].dmg", "https://h/100%25.dmg", "foo:bar"}) {
        start(url);
        EXPECT_EQ(transfer().destination, std::nullopt) << url;
        transfer().finish();
        EXPECT_EQ(messages(), (Texts{"start (null)", "fail NSURLErrorDomain -3000"})) << url;
        EXPECT_TRUE(system.files.changes.empty()) << url;
    }
}

TEST_F(DownloadControllerTest, AFolderThatCannotBeMadeIsTheReason) {
    system.files.addFile(folder + "/theirs");
    system.files.item(folder)->owner.userId = 0;
    start();
    transfer().finish();
    EXPECT_EQ(messages(), (Texts{"start (null)", "fail NSCocoaErrorDomain 513 no " + folder}));
    EXPECT_TRUE(system.files.has(folder + "/theirs"));
    system.files.removeTree(folder);
    system.files.failAt(FakeFiles::Operation::Create, folder);
    start();
    transfer().finish();
    EXPECT_EQ(messages(), (Texts{"start (null)", "fail NSCocoaErrorDomain 513 no " + folder}));
    start("https://h/..");
    transfer().finish();
    EXPECT_EQ(messages().back(), "fail NSURLErrorDomain -3000") << "the reason of an earlier download";
}

TEST_F(DownloadControllerTest, ReportsPercentagesAsTheyCome) {
    const auto reported = [this](std::optional<std::int64_t> announced) {
        start();
        if (announced)
            transfer().respond(*announced);
        transfer().receive(1);
        transfer().receive(3);
        transfer().finish();
        return std::exchange(delegate->percentages, {});
    };
    EXPECT_EQ(reported(8), (Percentages{12.5, 50.0}));
    EXPECT_EQ(reported(3), (Percentages{1 / 3.0 * 100.0, 4 / 3.0 * 100.0})) << "neither rounded nor limited";
    EXPECT_EQ(reported(8000000000), (Percentages{1 / 8e9 * 100.0, 4 / 8e9 * 100.0}));
    for (const auto& unknown : {std::optional<std::int64_t>(), {-1}, {0}})
        EXPECT_EQ(reported(unknown), Percentages()) << unknown.value_or(1);
    start();
    transfer().receive(80);
    transfer().respond(50);
    transfer().receive(10);
    EXPECT_EQ(delegate->percentages, Percentages{20.0}) << "a further response starts again";
}

// Deliberate in the program: a started transfer goes on and still reports its end.
TEST_F(DownloadControllerTest, NeitherASecondStartNorAnAbortChangesARunningDownload) {
    start();
    start("https://h/other.dmg");
    EXPECT_EQ(system.transfers.downloads.size(), 1U);
    controller->abortDownloadArchive();
    EXPECT_TRUE(controller->downloadInProgress());
    controller.reset();
    transfer().finish();
    EXPECT_EQ(messages(), (Texts{"start " + file, "end " + file}));
}
