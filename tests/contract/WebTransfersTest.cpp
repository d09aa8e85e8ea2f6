// Downloads from a server that answers as each test tells it, and from local files.

#include "tests/contract/TransfersTest.h"

#include <sys/inotify.h>
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
        // Nothing packed is asked for; a loader that would ask for it by itself says so.
        const auto head = server.requests().back().head;
        const auto accepted = head.find("Accept-Encoding");
        EXPECT_TRUE(accepted == std::string::npos ||
                    head.substr(accepted).starts_with("Accept-Encoding: identity\r\n"));
    }
}

TEST_F(DownloadTest, FailsWithTheFittingCodeAndLeavesNoFile) {
    limits_.idleTimeout = 300ms;
    limits_.redirects = 2;
    const auto expectFailure = [this](const std::string& url, const std::string& messages) {
        const auto notes = download(url + "?key=secret");
        EXPECT_EQ(notes->text, messages);
        EXPECT_EQ(notes->error.domain, foundation::urlErrorDomain);
        EXPECT_NE(textOf(notes->error, foundation::localizedDescriptionKey), "");
        EXPECT_EQ(textOf(notes->error, foundation::localizedDescriptionKey).find("secret"), std::string::npos);
        EXPECT_NE(textOf(notes->error, "NSErrorFailingURLStringKey"), "");
        EXPECT_EQ(filesInFolder(), "");
    };
    std::string nobody;
    {
        LoopbackServer server;
        nobody = server.url("/");
        const std::pair<LoopbackServer::Answer, std::string> answers[] = {
            {answerOf("404 Not Found", "an error page"), failure(Code::fileDoesNotExist)},
            {{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234"},
             "response 10 data " + failure(Code::networkConnectionLost)},
            {{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab"},
             "response -1 data " + failure(Code::networkConnectionLost)},
            {{"", Ending::Reset}, failure(Code::networkConnectionLost)},
            {{""}, failure(Code::networkConnectionLost)},
            {{"", Ending::Silence}, failure(Code::timedOut)},
            {{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n1234", Ending::Silence},
             "response 10 data " + failure(Code::timedOut)},
            {{"not the web\r\n\r\n"}, failure(Code::unknown)},
            {redirectTo("/file"), failure(Code::tooManyRedirects)},
            {redirectTo("file:///etc/hostname"), failure(Code::unsupportedURL)},
            {redirectTo("ftp://127.0.0.1/x"), failure(Code::unsupportedURL)},
            {redirectTo("http:///127.0.0.1/x"), failure(Code::badURL)},
            {redirectTo("///127.0.0.1/x"), failure(Code::badURL)},
            {redirectTo("HTTP:/127.0.0.1/x"), failure(Code::badURL)},
        };
        for (const auto& [answer, messages] : answers) {
            SCOPED_TRACE(answer.bytes);
            server.answer("/file", answer);
            expectFailure(server.url("/file"), messages);
        }
        // A name and a password in the address are no reason to try again with them.
        server.answer("/locked", answerOf("401 No", "an error page", "WWW-Authenticate: Basic realm=\"x\"\r\n"));
        expectFailure("http://user:word@" + server.url("/locked").substr(7), failure(Code::fileDoesNotExist));
    }
    const std::pair<std::string, std::string> urls[] = {
        {nobody, failure(Code::cannotConnectToHost)},
        {"http://" + std::string(70, 'a') + "/", failure(Code::cannotFindHost)},
        {"http://127.0.0.1:99999/", failure(Code::badURL)},
        {"ftp://127.0.0.1/file", failure(Code::unsupportedURL)},
        {"127.0.0.1/file", failure(Code::unsupportedURL)},
        {"https:///127.0.0.1/file", failure(Code::badURL)},
        {"http:127.0.0.1/file", failure(Code::badURL)},
        {"http://user@:80/file", failure(Code::badURL)},
        {"http://", failure(Code::badURL)},
    };
    for (const auto& [url, messages] : urls) {
        SCOPED_TRACE(url);
        expectFailure(url, messages);
    }
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
    std::vector<std::optional<std::string>> cases{std::nullopt, "file", "",
                                                  folder_.path("cut") + std::string("\0x", 2)};
    for (const char* name : {"old", "absent/file", "old/file", "folder", "folder/", "link", "dangling", "pipe"})
        cases.emplace_back(folder_.path(name));
    for (const auto& path : cases) {
        SCOPED_TRACE(path.value_or("absent"));
        const auto notes = std::make_shared<TransferNotes>();
        const bool overwrites = path != folder_.path("old");
        transfers()
            .startDownload(*foundation::URL::withString(server.url("/file")), notes)
            ->setDestination(path, overwrites);
        EXPECT_EQ(notes->text, "") << "told in the call";
        EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
        EXPECT_EQ(notes->text, failure(Code::cannotCreateFile));
        EXPECT_EQ(filesInFolder(), before);
        EXPECT_EQ(folder_.read("old") + folder_.read("folder/inner"), "oldold");
    }
}

TEST_F(DownloadTest, ReplacesAFileButNotWhatOtherNamesMeanNorItsOwnSource) {
    LoopbackServer server;
    server.answer("/file", answerOf("200 OK", "new"));
    const std::string file = folder_.write("file", "old");
    std::filesystem::create_hard_link(file, folder_.path("other"));
    EXPECT_EQ(download("file://" + file)->text, failure(Code::cannotCreateFile));
    EXPECT_EQ(folder_.read("file"), "old");
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

TEST_F(DownloadTest, TellsOfDataInFineStepsOfTheWhole) {
    constexpr std::size_t size = 8U << 20;
    LoopbackServer server;
    auto answer = answerOf("200 OK", std::string(size, 'x'));
    answer.pauseAt = answer.bytes.size() - 1;
    server.answer("/file", answer);
    const auto notes = startDownload(server.url("/file"));
    EXPECT_TRUE(main_.runUntil([&] { return notes->received >= size - size / 100; }));
    EXPECT_LE(notes->lengths.size(), 256U);
    EXPECT_FALSE(notes->ended);
    server.resume();
    EXPECT_TRUE(main_.runUntil([&] { return notes->ended; }));
    EXPECT_EQ(notes->text, "response 8388608 data finish ");
    EXPECT_EQ(notes->received, size);
}

TEST_F(DownloadTest, CopiesLocalFiles) {
    std::string body = "disk image";
    body.resize(5 << 20, 'z');
    folder_.write("a b/Some%Image.dmg", body);
    folder_.write("empty", "");
    std::filesystem::create_symlink("a b/Some%Image.dmg", folder_.path("link"));
    const std::string before = filesInFolder();
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {folder_.path("a b/Some%Image.dmg"), "response 5242880 data finish ", body},
        {folder_.path("link"), "response 5242880 data finish ", body},
        {folder_.path("empty"), "response 0 finish ", ""},
        {folder_.path("absent"), failure(Code::fileDoesNotExist), ""},
        {folder_.path("empty/inner"), failure(Code::fileDoesNotExist), ""},
        {folder_.path("a b"), failure(Code::fileIsDirectory), ""},
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

} // namespace tests
