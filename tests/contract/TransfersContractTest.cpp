// Downloads from a server that answers as each test tells it, and from local files.

#include "tests/contract/TransfersTest.h"

#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace tests {

namespace {

namespace Code = platform::URLErrorCode;
using Ending = LoopbackServer::Ending;
using namespace std::chrono_literals;

using DownloadTest = TransfersTest;

std::string textOf(const foundation::Error& error, const char* key) {
    const auto* value = member(error.userInfo, key);
    return value == nullptr || value->string() == nullptr ? "" : *value->string();
}

} // namespace

TEST_F(DownloadTest, StoresWhatIsServed) {
    LoopbackServer server;
    const std::string gzip("\x1f\x8b\x08\0raw", 7);
    const struct {
        LoopbackServer::Answer answer;
        const char* messages;
        std::string stored;
    } cases[] = {
        {answerOf("200 OK", "12345"), "response 5 data finish ", "12345"},
        {{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"},
         "response -1 data finish ",
         "abcde"},
        {{"HTTP/1.1 200 OK\r\n\r\nuntil the end"}, "response -1 data finish ", "until the end"},
        {answerOf("200 OK", ""), "response 0 finish ", ""},
        {{"HTTP/1.1 200 OK\r\n\r\n"}, "response -1 finish ", ""},
        {answerOf("200 OK", gzip, "Content-Encoding: gzip\r\n"), "response 7 data finish ", gzip},
        {redirectTo("/end"), "response 3 data finish ", "end"},
    };
    server.answer("/end", answerOf("200 OK", "end"));
    for (const auto& each : cases) {
        SCOPED_TRACE(each.answer.bytes);
        server.answer("/file", each.answer);
        const auto notes = download(server.url("/file"));
        EXPECT_EQ(notes->text, each.messages);
        EXPECT_EQ(notes->received, each.stored.size());
        EXPECT_EQ(folder_.read("file"), each.stored);
        struct stat status {};
        EXPECT_EQ(::stat(folder_.path("file").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
        EXPECT_EQ(server.requests().back().head.find("Accept-Encoding"), std::string::npos);
    }
}

TEST_F(DownloadTest, FailsWithTheFittingCodeAndLeavesNoFile) {
    limits_.idleTimeout = 300ms;
    limits_.redirects = 2;
    LoopbackServer server;
    server.answer("/gone", answerOf("404 Not Found", "an error page"));
    server.answer("/broken", answerOf("500 Oh", "an error page"));
    server.answer("/locked", answerOf("401 No", "an error page", "WWW-Authenticate: Basic realm=\"x\"\r\n"));
    server.answer("/short", {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234"});
    server.answer("/shortChunk", {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab"});
    server.answer("/reset", {"", Ending::Reset});
    server.answer("/nothing", {""});
    server.answer("/mute", {"", Ending::Silence});
    server.answer("/stalled", {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234", Ending::Silence});
    server.answer("/noise", {"not the web\r\n\r\n"});
    server.answer("/loop", redirectTo("/loop"));
    server.answer("/toFile", redirectTo("file:///etc/hostname"));
    server.answer("/toFTP", redirectTo("ftp://127.0.0.1/x"));
    std::string locked = server.url("/locked");
    locked.insert(locked.find("127"), "user:word@");
    const std::pair<std::string, std::string> cases[] = {
        {server.url("/gone"), failure(Code::fileDoesNotExist)},
        {server.url("/broken"), failure(Code::fileDoesNotExist)},
        {locked, failure(Code::fileDoesNotExist)},
        {server.url("/short"), "response 10 data " + failure(Code::networkConnectionLost)},
        {server.url("/shortChunk"), "response -1 data " + failure(Code::networkConnectionLost)},
        {server.url("/reset"), failure(Code::networkConnectionLost)},
        {server.url("/nothing"), failure(Code::networkConnectionLost)},
        {server.url("/mute"), failure(Code::timedOut)},
        {server.url("/stalled"), "response 10 data " + failure(Code::timedOut)},
        {server.url("/noise"), failure(Code::unknown)},
        {server.url("/loop"), failure(Code::tooManyRedirects)},
        {server.url("/toFile"), failure(Code::unsupportedURL)},
        {server.url("/toFTP"), failure(Code::unsupportedURL)},
        {"http://" + std::string(70, 'a') + "/", failure(Code::cannotFindHost)},
        {"http://127.0.0.1:99999/", failure(Code::badURL)},
        {"ftp://127.0.0.1/file", failure(Code::unsupportedURL)},
        {"127.0.0.1/file", failure(Code::unsupportedURL)},
    };
    for (const auto& [url, messages] : cases) {
        SCOPED_TRACE(url);
        const auto notes = download(url + "?key=secret");
        EXPECT_EQ(notes->text, messages);
        EXPECT_EQ(notes->error.domain, foundation::urlErrorDomain);
        EXPECT_NE(textOf(notes->error, foundation::localizedDescriptionKey), "");
        EXPECT_EQ(textOf(notes->error, foundation::localizedDescriptionKey).find("secret"), std::string::npos);
        EXPECT_NE(textOf(notes->error, "NSErrorFailingURLStringKey"), "");
        EXPECT_EQ(filesInFolder(), "");
    }
    const auto gone = download(server.url("/gone"));
    EXPECT_NE(textOf(gone->error, foundation::localizedDescriptionKey).find("404"), std::string::npos);
}

TEST_F(DownloadTest, FailsWhenNobodyListens) {
    std::string url;
    {
        const LoopbackServer server;
        url = server.url("/");
    }
    EXPECT_EQ(download(url)->text, failure(Code::cannotConnectToHost));
}

TEST_F(DownloadTest, RefusesDestinationsThatAreNotItsToWrite) {
    LoopbackServer server;
    server.answer("/file", answerOf("200 OK", "new"));
    folder_.write("old", "old");
    folder_.write("folder/inner", "old");
    std::filesystem::create_symlink("old", folder_.path("link"));
    std::filesystem::create_symlink("absent", folder_.path("dangling"));
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    const std::string before = filesInFolder();
    const std::pair<std::optional<std::string>, bool> cases[] = {
        {std::nullopt, true},
        {folder_.path("old"), false},
        {folder_.path("absent/file"), true},
        {folder_.path("old/file"), true},
        {folder_.path("folder"), true},
        {folder_.path("folder/"), true},
        {folder_.path("folder/.."), true},
        {folder_.path("link"), true},
        {folder_.path("dangling"), true},
        {folder_.path("pipe"), true},
        {folder_.path("cut") + std::string("\0short", 6), true},
        {"file", true},
        {"", true},
    };
    for (const auto& [path, allowOverwrite] : cases) {
        SCOPED_TRACE(path.value_or("absent"));
        const auto notes = std::make_shared<DownloadNotes>();
        transfers()
            .startDownload(*foundation::URL::withString(server.url("/file")), notes)
            ->setDestination(path, allowOverwrite);
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
        EXPECT_EQ(notes->text, failure(Code::cannotCreateFile));
        EXPECT_EQ(filesInFolder(), before);
        EXPECT_EQ(folder_.read("old") + folder_.read("folder/inner"), "oldold");
    }
}

TEST_F(DownloadTest, FailsLaterWhenNoDestinationIsSet) {
    const auto notes = std::make_shared<DownloadNotes>();
    const auto kept = transfers().startDownload(*foundation::URL::withString("http://127.0.0.1/"), notes);
    EXPECT_EQ(notes->text, "");
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
    EXPECT_EQ(notes->text, failure(Code::cannotCreateFile));
    kept->setDestination(folder_.path("file"), true);
    EXPECT_EQ(filesInFolder(), "");
}

TEST_F(DownloadTest, ReplacesAFileButNotWhatOtherNamesMean) {
    LoopbackServer server;
    server.answer("/file", answerOf("200 OK", "new"));
    std::filesystem::create_hard_link(folder_.write("file", "old"), folder_.path("other"));
    EXPECT_EQ(download(server.url("/file"))->text, "response 3 data finish ");
    EXPECT_EQ(folder_.read("file") + folder_.read("other"), "newold");
}

TEST_F(DownloadTest, FailureLeavesAFileThatHasTakenItsPlace) {
    LoopbackServer server;
    LoopbackServer::Answer answer{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n1234"};
    answer.pauseAt = answer.bytes.size() - 1;
    server.answer("/file", answer);
    const auto notes = startDownload(server.url("/file"));
    EXPECT_TRUE(main_.runUntil([&] { return notes->received > 0; }));
    std::filesystem::remove(folder_.path("file"));
    folder_.write("file", "another's");
    server.resume();
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
    EXPECT_EQ(notes->error.code, Code::networkConnectionLost);
    EXPECT_EQ(folder_.read("file"), "another's");
}

TEST_F(DownloadTest, FullDiskIsAnErrorWithTheSystemsText) {
    LoopbackServer server;
    const std::string body(1 << 20, 'x');
    server.answer("/file", answerOf("200 OK", body));
    rlimit unlimited{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const rlimit limited{100'000, unlimited.rlim_max};
    for (const auto& source : {server.url("/file"), "file://" + folder_.write("source", body)}) {
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        const auto notes = download(source);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
        EXPECT_EQ(notes->error.code, Code::cannotWriteToFile) << source;
        EXPECT_NE(textOf(notes->error, foundation::localizedDescriptionKey).find("File too large"), std::string::npos);
        EXPECT_EQ(filesInFolder(), "source ");
    }
}

TEST_F(DownloadTest, GathersDataMessages) {
    limits_.progressInterval = 1h;
    LoopbackServer server;
    server.answer("/file", answerOf("200 OK", std::string(20 << 20, 'x')));
    const auto notes = download(server.url("/file"));
    EXPECT_EQ(notes->text, "response 20971520 data finish ");
    EXPECT_EQ(notes->received, 20u << 20);
    EXPECT_EQ(notes->lengths.size(), 2u);
}

TEST_F(DownloadTest, SendsGatheredDataWhileTheServerPauses) {
    limits_.progressInterval = 50ms;
    LoopbackServer server;
    auto answer = answerOf("200 OK", std::string(8 << 20, 'x'));
    answer.pauseAt = answer.bytes.size() - 1;
    server.answer("/file", answer);
    const auto notes = startDownload(server.url("/file"));
    EXPECT_TRUE(main_.runUntil([&] { return notes->received == (8u << 20) - 1; }));
    server.resume();
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
    EXPECT_EQ(notes->received, 8u << 20);
}

TEST_F(DownloadTest, CopiesLocalFiles) {
    std::string body = "disk image";
    body.resize(5 << 20, 'z');
    folder_.write("a b/Some%Image.dmg", body);
    folder_.write("empty", "");
    std::filesystem::create_symlink("a b/Some%Image.dmg", folder_.path("link"));
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    const std::string before = filesInFolder();
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {folder_.path("a b/Some%Image.dmg"), "response 5242880 data finish ", body},
        {folder_.path("link"), "response 5242880 data finish ", body},
        {folder_.path("empty"), "response 0 finish ", ""},
        {folder_.path("absent"), failure(Code::fileDoesNotExist), ""},
        {folder_.path("empty/inner"), failure(Code::fileDoesNotExist), ""},
        {folder_.path("a b"), failure(Code::fileIsDirectory), ""},
        {folder_.path("pipe"), failure(Code::fileDoesNotExist), ""},
        {"/dev/zero", failure(Code::fileDoesNotExist), ""},
    };
    for (const auto& [source, messages, stored] : cases) {
        SCOPED_TRACE(source);
        const auto url = foundation::URL::fileURLWithPath(source).absoluteString();
        const auto notes = download(url);
        EXPECT_EQ(notes->text, messages);
        EXPECT_EQ(notes->received, stored.size());
        EXPECT_EQ(folder_.read("file"), stored);
        EXPECT_EQ(fetch(url).value_or(""), stored.size() > limits_.answerBytes ? "" : stored);
        std::filesystem::remove(folder_.path("file"));
        EXPECT_EQ(filesInFolder(), before);
    }
    EXPECT_EQ(download("file://elsewhere/etc/hostname")->text, failure(Code::badURL));
    EXPECT_EQ(folder_.read("a b/Some%Image.dmg"), body);
}

TEST_F(DownloadTest, FailsWhenTheSourceIsCutDuringTheCopy) {
    const auto source = folder_.write("source", "disk image");
    std::filesystem::resize_file(source, std::uintmax_t{64} << 30);
    const auto notes = startDownload("file://" + source);
    EXPECT_TRUE(main_.runUntil([&] { return notes->received > 0; }));
    std::filesystem::resize_file(source, 10);
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
    EXPECT_EQ(notes->error.code, Code::networkConnectionLost);
    EXPECT_EQ(filesInFolder(), "source ");
}

TEST_F(DownloadTest, NeverOpensAPipe) {
    const auto pipe = folder_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(watch, pipe.c_str(), IN_OPEN), 0);
    EXPECT_EQ(download("file://" + pipe)->text, failure(Code::fileDoesNotExist));
    inotify_event event{};
    EXPECT_EQ(::read(watch, &event, sizeof event), -1) << "it was opened";
    ::close(watch);
}

TEST_F(DownloadTest, NeverReplacesItsOwnSource) {
    const auto source = folder_.write("file", "disk image");
    EXPECT_EQ(download("file://" + source)->text, failure(Code::cannotCreateFile));
    EXPECT_EQ(folder_.read("file"), "disk image");
}

} // namespace tests
