#include "tests/support/LoopbackServer.h"

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <pthread.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

// One accepted connection, encrypted or not.
class LoopbackServer::Connection {
public:
    Connection(int socket, SSL_CTX* context) : socket_(socket), tls_(nullptr, &SSL_free) {
        if (context == nullptr)
            return;
        tls_.reset(SSL_new(context));
        SSL_set_fd(tls_.get(), socket_);
        ready_ = SSL_accept(tls_.get()) == 1;
    }

    bool isReady() const { return ready_; }

    // How many bytes came; 0 when the client is gone.
    std::size_t read(char* bytes, std::size_t size) {
        const auto count = tls_ ? SSL_read(tls_.get(), bytes, static_cast<int>(size)) : ::recv(socket_, bytes, size, 0);
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }

    bool write(std::string_view bytes) {
        if (bytes.empty())
            return true;
        // Both block until all is on its way.
        const auto count = tls_ ? SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()))
                                : ::send(socket_, bytes.data(), bytes.size(), 0);
        return count == static_cast<ssize_t>(bytes.size());
    }

    void end(Ending ending) {
        if (ending == Ending::Silence) {
            char byte = 0;
            while (read(&byte, 1) > 0) {
            }
        } else if (ending == Ending::Reset) {
            const linger atOnce{1, 0};
            ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        } else if (tls_) {
            SSL_shutdown(tls_.get());
        }
    }

private:
    int socket_;
    std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
    bool ready_ = true;
};

LoopbackServer::LoopbackServer(const TestCertificate* certificate, int newestVersion) : tls_(nullptr, &SSL_CTX_free) {
    if (certificate != nullptr) {
        tls_.reset(SSL_CTX_new(TLS_server_method()));
        // Old versions of the protocol need signatures that are off by default.
        SSL_CTX_set_cipher_list(tls_.get(), "DEFAULT@SECLEVEL=0");
        SSL_CTX_set_min_proto_version(tls_.get(), 0);
        SSL_CTX_set_max_proto_version(tls_.get(), newestVersion);
        certificate->install(*tls_);
    }
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, generic, length) != 0 || ::listen(listener_, 16) != 0 ||
        ::getsockname(listener_, generic, &length) != 0)
        throw std::runtime_error("no port to listen on");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
}

LoopbackServer::~LoopbackServer() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        ::shutdown(listener_, SHUT_RDWR);
        if (current_ >= 0)
            ::shutdown(current_, SHUT_RDWR);
        changed_.notify_all();
    }
    thread_.join();
    ::close(listener_);
}

void LoopbackServer::answer(const std::string& path, Answer answer) {
    const std::lock_guard lock(mutex_);
    answers_[path] = std::move(answer);
}

std::string LoopbackServer::url(const std::string& path) const {
    return std::string(tls_ ? "https" : "http") + "://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void LoopbackServer::resume() {
    const std::lock_guard lock(mutex_);
    resumed_ = true;
    changed_.notify_all();
}

bool LoopbackServer::setCurrent(int connection) {
    const std::lock_guard lock(mutex_);
    current_ = connection;
    return !stopping_;
}

void LoopbackServer::run() {
    // A client that has gone must not end the tests.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
    while (true) {
        const int accepted = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const bool serving = setCurrent(accepted);
        if (accepted >= 0 && serving) {
            Connection connection(accepted, tls_.get());
            while (connection.isReady() && serve(connection)) {
            }
        }
        setCurrent(-1);
        if (accepted >= 0)
            ::close(accepted);
        if (!serving)
            return;
    }
}

namespace {

std::size_t announcedLength(const std::string& head) {
    const std::string name = "Content-Length: ";
    const auto at = head.find(name);
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + name.size()));
}

} // namespace

bool LoopbackServer::serve(Connection& connection) {
    std::string received;
    std::size_t headEnd = std::string::npos;
    while (headEnd == std::string::npos || received.size() < headEnd + announcedLength(received)) {
        char bytes[16384];
        const std::size_t count = connection.read(bytes, sizeof bytes);
        if (count == 0)
            return false;
        received.append(bytes, count);
        headEnd = received.find("\r\n\r\n");
        if (headEnd != std::string::npos)
            headEnd += 4;
    }
    const auto pathBegin = received.find(' ') + 1;
    const auto path = received.substr(pathBegin, received.find_first_of(" ?", pathBegin) - pathBegin);
    std::unique_lock lock(mutex_);
    requests_.push_back({received.substr(0, headEnd), received.substr(headEnd)});
    const Answer answer = answers_.contains(path) ? answers_[path] : answerOf("404 Not Found", "no such path");
    lock.unlock();
    const std::string_view bytes = answer.bytes;
    if (!connection.write(bytes.substr(0, answer.pauseAt)))
        return false;
    if (answer.pauseAt < bytes.size()) {
        lock.lock();
        changed_.wait(lock, [this] { return resumed_ || stopping_; });
        lock.unlock();
        connection.write(bytes.substr(answer.pauseAt));
    }
    connection.end(answer.ending);
    return answer.ending == Ending::Keep;
}

LoopbackServer::Answer answerOf(const std::string& status, const std::string& body, const std::string& headers) {
    return {"HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n" +
            headers + "\r\n" + body};
}

LoopbackServer::Answer redirectTo(const std::string& url, const std::string& status) {
    return answerOf(status, "moved", "Location: " + url + "\r\n");
}
