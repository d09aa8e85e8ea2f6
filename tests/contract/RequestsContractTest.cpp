// Requests with a body, and fetches into memory, against a server that answers as each test tells it.

#include "tests/contract/TransfersTest.h"

namespace tests {

namespace {

namespace Code = platform::URLErrorCode;
using Ending = LoopbackServer::Ending;
using namespace std::chrono_literals;

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

TEST_F(PostTest, IsNotSentAgainWhenNoAnswerComes) {
    LoopbackServer server;
    server.answer("/log", {""});
    EXPECT_EQ(post(server.url("/log"))->text, failure(Code::networkConnectionLost));
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(FetchTest, AnyStatusWillDoAndNoAnswerOrALongOneFails) {
    limits_.idleTimeout = 300ms;
    limits_.answerBytes = 1000;
    LoopbackServer server;
    const struct {
        LoopbackServer::Answer answer;
        std::optional<std::string> fetched;
        std::string posted; // how the messages of a request end
    } cases[] = {
        {answerOf("200 OK", "{}"), "{}", "response data finish "},
        {answerOf("200 OK", ""), "", "response finish "},
        {answerOf("500 Oh", "page"), "page", "response data finish "},
        {answerOf("200 OK", std::string(1000, 'x')), std::string(1000, 'x'), "response data finish "},
        {answerOf("200 OK", std::string(1001, 'x')), std::nullopt, failure(Code::dataLengthExceedsMaximum)},
        {{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n1"}, std::nullopt, failure(Code::networkConnectionLost)},
        {{"", Ending::Silence}, std::nullopt, failure(Code::timedOut)},
    };
    for (const auto& [answer, fetched, posted] : cases) {
        SCOPED_TRACE(answer.bytes);
        server.answer("/query", answer);
        EXPECT_EQ(fetch(server.url("/query")), fetched);
        const auto text = post(server.url("/query"))->text;
        EXPECT_TRUE(text.ends_with(posted)) << text;
    }
    EXPECT_EQ(post("file:///etc/hostname")->text, failure(Code::unsupportedURL));
    EXPECT_EQ(fetch("ftp://127.0.0.1/"), std::nullopt);
    EXPECT_EQ(fetch(""), std::nullopt);
}

} // namespace tests
