// Requests with a body, and fetches into memory, against a server that answers as each test tells it.

#include "tests/contract/TransfersTest.h"

namespace tests {

namespace {

namespace Code = platform::URLErrorCode;
using Ending = LoopbackServer::Ending;
using namespace std::chrono_literals;

// Packed by gzip: "packed", and the letter x 1,001 times.
const std::string
    packed("\037\213\010\000\000\000\000\000\002\003\053\110\114\316\116\115\001\000\020\264\366\041\006\000\000\000",
           26);
const std::string packedLetters("\037\213\010\000\000\000\000\000\002\003\253\250\030\005\243\140\024\014\173\000\000"
                                "\007\020\216\305\351\003\000\000",
                                29);

using PostTest = TransfersTest;
using FetchTest = TransfersTest;

} // namespace

TEST_F(PostTest, SendsTheRequestAsGiven) {
    LoopbackServer server;
    server.answer("/log", answerOf("200 OK", "fine"));
    for (const std::string& body :
         {std::string(), std::string("k=\xc3\xa9&l=\xc3"), std::string("a\0b", 3), std::string(3 << 20, 'x')}) {
        const auto notes = post(server.url("/log"), body);
        EXPECT_EQ(notes->text, "response data finish ");
        EXPECT_EQ(notes->answer, "fine");
        const auto request = server.requests().back();
        EXPECT_TRUE(request.body == body) << body.size();
        EXPECT_TRUE(request.head.starts_with("POST /log HTTP/1.1\r\n"));
        EXPECT_NE(request.head.find("\r\nContent-Length: " + std::to_string(body.size()) + "\r\n"), std::string::npos);
        EXPECT_NE(request.head.find("\r\ncontent-type: text/x-test\r\n"), std::string::npos);
        EXPECT_EQ(request.head.find("Content-Type"), std::string::npos);
        EXPECT_EQ(request.head.find("Expect"), std::string::npos);
        EXPECT_EQ(request.head.find("Cookie"), std::string::npos);
        EXPECT_EQ(request.head.find("Accept-Encoding"), std::string::npos);
    }
}

TEST_F(PostTest, RedirectsKeepTheMethodOnlyWhenTheServerSaysSo) {
    LoopbackServer server;
    server.answer("/end", answerOf("200 OK", "fine"));
    const std::pair<const char*, const char*> cases[] = {
        {"301 Moved", "GET "}, {"302 Found", "GET "}, {"307 Temporary", "POST "}, {"308 Permanent", "POST "}};
    for (const auto& [status, method] : cases) {
        SCOPED_TRACE(status);
        server.answer("/log", redirectTo("/end", status));
        EXPECT_EQ(post(server.url("/log"))->text, "response data finish ");
        const auto request = server.requests().back();
        EXPECT_TRUE(request.head.starts_with(std::string(method) + "/end "));
        EXPECT_EQ(request.body, method[0] == 'P' ? "a=b" : "");
    }
}

TEST_F(PostTest, AnEndlessAnswerIsReadNoFurtherThanTheLimit) {
    limits_.answerBytes = 1000;
    LoopbackServer server;
    server.answer("/log",
                  {"HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n" + std::string(2000, 'x'), Ending::Silence});
    const auto notes = post(server.url("/log"));
    EXPECT_EQ(notes->text, "response data finish ");
    EXPECT_EQ(notes->answer.size(), 1000U);
}

TEST_F(PostTest, IsNotSentAgainWhenNoAnswerComes) {
    LoopbackServer server;
    server.answer("/first", {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", Ending::Keep});
    server.answer("/onward", {"HTTP/1.1 307 On\r\nContent-Length: 0\r\nLocation: /log\r\n\r\n", Ending::Keep});
    server.answer("/log", {""});
    EXPECT_EQ(post(server.url("/log"))->text, failure(Code::networkConnectionLost));
    EXPECT_EQ(server.requests().size(), 1U);
    // Over a connection that is kept, and then closed by the server.
    for (const auto* path : {"/log", "/onward"}) {
        const auto before = server.requests().size();
        EXPECT_EQ(post(server.url("/first"))->text, "response finish ");
        EXPECT_EQ(post(server.url(path))->text, failure(Code::networkConnectionLost));
        EXPECT_EQ(server.requests().size() - before, path[1] == 'l' ? 2U : 3U);
    }
}

TEST_F(PostTest, FailsWhereTheSystemHasNoMeansForIt) {
    class NoLoader final : public platform::transfers::Loader {
        bool start() override { return false; }
        void load(platform::transfers::WebRequest /*request*/,
                  std::unique_ptr<platform::transfers::Sink> /*sink*/) override {}
        void copy(std::unique_ptr<platform::transfers::FileCopy> /*copy*/) override {}
    };
    use(std::make_unique<platform::transfers::LoaderTransfers>(main_, limits_, std::make_shared<NoLoader>()));
    EXPECT_EQ(post("http://127.0.0.1/")->text, failure(Code::unknown));
    EXPECT_EQ(download("http://127.0.0.1/")->text, failure(Code::unknown));
    EXPECT_EQ(download("file:///etc/hostname")->text, failure(Code::unknown));
    EXPECT_EQ(fetch("http://127.0.0.1/"), std::nullopt);
    EXPECT_EQ(filesInFolder(), "");
}

TEST_F(FetchTest, AnyStatusWillDoAndNoAnswerOrALongOneFails) {
    limits_.idleTimeout = 300ms;
    limits_.answerBytes = 1000;
    limits_.headerBytes = 2000;
    LoopbackServer server;
    const struct {
        LoopbackServer::Answer answer;
        std::optional<std::string> fetched;
        std::string posted; // how the messages of a request end
    } cases[] = {
        {answerOf("200 OK", "{}"), "{}", "response data finish "},
        {answerOf("200 OK", ""), "", "response finish "},
        {answerOf("500 Oh", "page"), "page", "response data finish "},
        {answerOf("200 OK", packed, "Content-Encoding: gzip\r\n"), "packed", "response data finish "},
        {answerOf("200 OK", packedLetters, "Content-Encoding: gzip\r\n"), std::nullopt, "response data finish "},
        {answerOf("200 OK", "not packed", "Content-Encoding: gzip\r\n"), std::nullopt, "response data finish "},
        {answerOf("200 OK", "{}", "X: " + std::string(3000, 'x') + "\r\n"), std::nullopt, "response finish "},
        {answerOf("200 OK", std::string(1000, 'x')), std::string(1000, 'x'), "response data finish "},
        {answerOf("200 OK", std::string(9000, 'x')), std::nullopt, "response data finish "},
        {{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n1"}, std::nullopt, failure(Code::networkConnectionLost)},
        {{"", Ending::Silence}, std::nullopt, failure(Code::timedOut)},
    };
    for (const auto& [answer, fetched, posted] : cases) {
        SCOPED_TRACE(answer.bytes);
        server.answer("/query", answer);
        EXPECT_EQ(fetch(server.url("/query")), fetched);
        EXPECT_NE(server.requests().back().head.find("\r\nAccept-Encoding: gzip\r\n"), std::string::npos);
        const auto text = post(server.url("/query"))->text;
        EXPECT_TRUE(text.ends_with(posted)) << text;
    }
    EXPECT_EQ(post("file:///etc/hostname")->text, failure(Code::unsupportedURL));
    EXPECT_EQ(post("https:///127.0.0.1")->text, failure(Code::badURL));
    EXPECT_EQ(fetch("ftp://127.0.0.1/"), std::nullopt);
    EXPECT_EQ(fetch(""), std::nullopt);
}

TEST_F(FetchTest, HeaderLinesCountFromTheFirstRedirectOn) {
    limits_.headerBytes = 2000;
    const std::string many = "X: " + std::string(1500, 'x') + "\r\n";
    LoopbackServer server;
    server.answer("/end", answerOf("200 OK", "{}", many));
    server.answer("/redirect", answerOf("302 On", "", many + "Location: /end\r\n"));
    EXPECT_EQ(fetch(server.url("/end")), "{}");
    EXPECT_EQ(fetch(server.url("/redirect")), std::nullopt);
}

TEST_F(FetchTest, HeaderLinesBehindTheBodyCount) {
    limits_.headerBytes = 2000;
    LoopbackServer server;
    server.answer("/query", {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\nX: " +
                             std::string(3000, 'x') + "\r\n\r\n"});
    EXPECT_EQ(fetch(server.url("/query")), std::nullopt);
    EXPECT_EQ(post(server.url("/query"))->text, "response data finish ");
}

} // namespace tests
