#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The driver, with this test at the other end of its streams.
class Session {
public:
    enum class Streams { Terminal, Socket };

    Session(const std::string& scene, Streams streams, unsigned short columns = 80) {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        struct winsize size {
            24, columns, 0, 0
        };
        processId_ = streams == Streams::Terminal ? ::forkpty(&stream_, nullptr, nullptr, &size) : ::fork();
        if (processId_ == 0) {
            if (streams == Streams::Socket) {
                ::dup2(ends[1], STDIN_FILENO);
                ::dup2(ends[1], STDOUT_FILENO);
                ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            }
            ::execl(CONSOLE_DRIVER, CONSOLE_DRIVER, scene.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        if (streams == Streams::Socket) {
            stream_ = ends[0];
        } else {
            ::close(ends[0]);
        }
    }
    ~Session() {
        if (processId_ > 0) {
            ::kill(processId_, SIGKILL);
            ::waitpid(processId_, nullptr, 0);
        }
        closeStream();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Reads until all that was written since the last call holds the text; that part of the output.
    std::string readUntil(const std::string& text) {
        while (unread_.find(text) == std::string::npos && readSome()) {
        }
        EXPECT_NE(unread_.find(text), std::string::npos) << unread_;
        const std::size_t end = std::min(unread_.find(text), unread_.size() - text.size()) + text.size();
        std::string part = unread_.substr(0, end);
        unread_.erase(0, end);
        return part;
    }

    // Reads until the program ends, as it must with success; what it wrote since the last call.
    std::string readToEnd() {
        while (readSome()) {
        }
        expectSuccess();
        return std::move(unread_);
    }
    void expectSuccess() {
        int status = -1;
        ::waitpid(std::exchange(processId_, -1), &status, 0);
        EXPECT_EQ(status, 0);
    }

    void type(const std::string& text) const {
        EXPECT_EQ(::write(stream_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeStream() { ::close(std::exchange(stream_, -1)); }

private:
    bool readSome() {
        struct pollfd readable {
            stream_, POLLIN, 0
        };
        if (::poll(&readable, 1, 20000) <= 0) {
            ADD_FAILURE() << "no output: " << unread_;
            return false;
        }
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(stream_, buffer.data(), buffer.size());
        if (count > 0) {
            unread_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return count > 0;
    }

    pid_t processId_ = -1;
    int stream_ = -1;
    std::string unread_;
};

// What a person sees in the end: carriage returns and backspaces move, other characters overwrite.
std::vector<std::string> screen(const std::string& output) {
    std::vector<std::string> lines{""};
    std::size_t column = 0;
    for (const char c : output) {
        if (c == '\n') {
            lines.emplace_back();
            column = 0;
        } else if (c == '\r') {
            column = 0;
        } else if (c == '\b') {
            column -= column > 0 ? 1 : 0;
        } else {
            lines.back().resize(std::max(lines.back().size(), column + 1), ' ');
            lines.back()[column++] = c;
        }
    }
    for (std::string& line : lines) {
        line.resize(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

// The lines without the date and process of log lines.
std::vector<std::string> withoutBanners(std::vector<std::string> lines) {
    for (std::string& line : lines) {
        line = std::regex_replace(line, std::regex(R"(^\d{4}-\S+ \S+ driver\[\d+:\d+\] )"), "log: ");
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(ConsoleInterface, stagesAreLinesOfTheirOwn) {
    Session terminal("stages", Session::Streams::Terminal);
    EXPECT_EQ(withoutBanners(screen(terminal.readToEnd())),
              (Lines{"Downloading", "Installing\\x1b[2J", "Done", "log: logged", ""}));
    Session socket("stages", Session::Streams::Socket);
    EXPECT_EQ(socket.readToEnd(), "Downloading\nInstalling\\x1b[2J\nDone\n") << "no bar without a terminal";
}

TEST(ConsoleInterface, theBarStaysOnOneLine) {
    Session session("progress", Session::Streams::Terminal, 40);
    std::string output = session.readUntil(" 50%");
    EXPECT_EQ(screen(output), Lines{"[################                ]  50%"});
    EXPECT_LE(std::count(output.begin(), output.end(), '\r'), 6) << "50,000 steps are not as many drawings";
    output += session.readUntil("100%");
    EXPECT_EQ(withoutBanners(screen(output)), (Lines{"log: logged", "[################################] 100%"}));
    output += session.readToEnd();
    EXPECT_EQ(withoutBanners(screen(output)), (Lines{"log: logged", "Installing", ""}));
}

TEST(ConsoleInterface, questionsAreAnsweredByNumber) {
    Session session("alert", Session::Streams::Terminal);
    std::string output = session.readUntil("the loop runs\r\n> ");
    EXPECT_EQ(withoutBanners(screen(output)),
              (Lines{"", "Title", "First line", "second \\x1b[31mline", "", "[1] Continue", "[2] Quit", "returned",
                     "log: the loop runs", ">"}));
    for (const char* wrong : {"", "0", "3", "1x", "-1", "99999999999999999999"}) {
        session.type(std::string(wrong) + '\n');
        EXPECT_EQ(session.readUntil("[2] Quit\r\n\r> "), std::string(wrong) + "\r\n[1] Continue\r\n[2] Quit\r\n\r> ");
    }
    session.type(" 2 \n");
    EXPECT_EQ(session.readToEnd(), " 2 \r\ncode 1001\r\n");
}

TEST(ConsoleInterface, whereNobodyAnswersTheProgramEnds) {
    Session terminal("alert", Session::Streams::Terminal);
    terminal.readUntil("the loop runs\r\n> ");
    terminal.type("\x04");
    terminal.readUntil("> 2\r\ncode 1001\r\n");
    terminal.expectSuccess();

    Session socket("alert", Session::Streams::Socket);
    socket.type("1\n");
    socket.readUntil("[2] Quit\nreturned\n> 2\ncode 1001\n");
    socket.expectSuccess();
}

TEST(ConsoleInterface, questionsWaitForEachOther) {
    Session session("two alerts", Session::Streams::Terminal);
    for (const std::string title : {"One", "Two", "Three"}) {
        const std::string output = session.readUntil("> ");
        EXPECT_NE(output.find("\r\n" + title + "\r\n"), std::string::npos) << output;
        EXPECT_EQ(output.find("[1]"), output.rfind("[1]")) << "one question at a time";
        session.type("1\n");
        session.readUntil(title + " code 1000\r\n");
    }
    session.expectSuccess();
}

TEST(ConsoleInterface, aClosedStreamIsNoReasonToDie) {
    Session session("stages", Session::Streams::Socket);
    session.closeStream();
    session.expectSuccess();
}

} // namespace
