#pragma once

#include "tests/support/TestCertificate.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A web server on the loopback interface that gives each path the answer it was told and keeps what it was asked. It
// serves one connection after the other, one request on each unless an answer keeps it.
class LoopbackServer {
public:
    // Keep waits for the next request on the connection.
    enum class Ending : std::uint8_t { Close, Reset, Silence, Keep };

    struct Answer {
        // All that is sent, from the status line on.
        std::string bytes;
        Ending ending = Ending::Close;
        // After that many bytes the server waits for resume().
        std::size_t pauseAt = std::string::npos;
    };

    struct Request {
        std::string head;
        std::string body;
    };

    // With a certificate it speaks TLS, of that version at most (0: any).
    explicit LoopbackServer(const TestCertificate* certificate = nullptr, int newestVersion = 0);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    void answer(const std::string& path, Answer answer);
    std::string url(const std::string& path) const;
    std::vector<Request> requests() const;
    void resume();

private:
    class Connection;

    void run();
    // Serves one request; whether the connection is kept.
    bool serve(Connection& connection);
    bool setCurrent(int connection);

    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> tls_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool stopping_ = false;
    bool resumed_ = false;
    int current_ = -1;
    std::map<std::string, Answer> answers_;
    std::vector<Request> requests_;
    std::thread thread_;
};

// An answer with the status, header lines ("name: value\r\n" each) and body, and its length announced.
LoopbackServer::Answer answerOf(const std::string& status, const std::string& body, const std::string& headers = {});

// An answer that sends the client on.
LoopbackServer::Answer redirectTo(const std::string& url, const std::string& status = "302 Found");
