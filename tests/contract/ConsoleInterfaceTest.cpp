#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <regex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The driver, with this test at the other end of its streams.
class Session {
public:
    enum class Streams { Terminal, Pipes };

    Session(const std::string& scene, Streams streams, unsigned short columns = 80) {
        std::array<int, 2> input{-1, -1};
        std::array<int, 2> output{-1, -1};
        if (streams == Streams::Pipes) {
            EXPECT_EQ(::pipe2(input.data(), O_CLOEXEC), 0);
            EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC), 0);
        }
        struct winsize size {
            24, columns, 0, 0
        };
        processId_ = streams == Streams::Terminal ? ::forkpty(&reading_, nullptr, nullptr, &size) : ::fork();
        if (processId_ == 0) {
            if (streams == Streams::Pipes) {
                ::dup2(input[0], STDIN_FILENO);
                ::dup2(output[1], STDOUT_FILENO);
                ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            }
            ::execl(CONSOLE_DRIVER, CONSOLE_DRIVER, scene.c_str(), nullptr);
            ::_exit(127);
        }
        writing_ = reading_;
        if (streams == Streams::Pipes) {
            reading_ = output[0];
            writing_ = input[1];
            ::close(input[0]);
            ::close(output[1]);
        }
    }
    ~Session() {
        if (processId_ > 0) {
            ::kill(processId_, SIGKILL);
            ::waitpid(processId_, nullptr, 0);
        }
        closeStreams();
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

    // Reads until the program ends; its exit status or the negative number of the signal that ended it.
    int readToEnd(std::string& rest) {
        while (readSome()) {
        }
        rest = std::move(unread_);
        return wait();
    }
    int wait() {
        int status = 0;
        ::waitpid(processId_, &status, 0);
        processId_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    void type(const std::string& text) const {
        EXPECT_EQ(::write(writing_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void signal(int number) const { ::kill(processId_, number); }
    void closeStreams() {
        ::close(reading_);
        if (writing_ != reading_) {
            ::close(writing_);
        }
        reading_ = writing_ = -1;
    }

private:
    bool readSome() {
        struct pollfd readable {
            reading_, POLLIN, 0
        };
        if (::poll(&readable, 1, 20000) <= 0) {
            ADD_FAILURE() << "no output: " << unread_;
            return false;
        }
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(reading_, buffer.data(), buffer.size());
        if (count > 0) {
            unread_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return count > 0;
    }

    pid_t processId_ = -1;
    int reading_ = -1;
    int writing_ = -1;
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
    for (const auto streams : {Session::Streams::Terminal, Session::Streams::Pipes}) {
        Session session("stages", streams);
        std::string output;
        EXPECT_EQ(session.readToEnd(output), 0);
        Lines expected{"Downloading", "Installing\\x1b[2J", "Done"};
        if (streams == Session::Streams::Terminal) {
            expected.emplace_back("log: logged");
        } else {
            EXPECT_EQ(output.find_first_of("\r\b[#"), output.find("[2J")) << "no bar without a terminal";
        }
        expected.emplace_back("");
        EXPECT_EQ(withoutBanners(screen(output)), expected) << output;
    }
}

TEST(ConsoleInterface, theBarStaysOnOneLine) {
    Session session("progress", Session::Streams::Terminal, 40);
    std::string output = session.readUntil(" 50%");
    EXPECT_EQ(screen(output), Lines{"[################                ]  50%"});
    EXPECT_LE(std::count(output.begin(), output.end(), '\r'), 6) << "50,000 steps are not as many drawings";
    output += session.readUntil("100%");
    EXPECT_EQ(withoutBanners(screen(output)), (Lines{"log: logged", "[################################] 100%"}));
    std::string rest;
    EXPECT_EQ(session.readToEnd(rest), 0);
    EXPECT_EQ(withoutBanners(screen(output + rest)), (Lines{"log: logged", "Installing", ""}));
}

TEST(ConsoleInterface, theBarShrinksWithTheTerminal) {
    for (const auto& [columns, expected] :
         std::vector<std::pair<unsigned short, std::string>>{{12, "[##  ]  50%"}, {10, " 50%"}, {4, " 50"}}) {
        Session session("progress", Session::Streams::Terminal, columns);
        std::string output;
        EXPECT_EQ(session.readToEnd(output), 0);
        const std::string half = output.substr(0, output.find("driver["));
        EXPECT_NE(half.find('\r' + expected), std::string::npos) << columns << half;
        for (const std::string& line : screen(half)) {
            EXPECT_LT(line.size(), std::max<std::size_t>(columns, 25)) << line;
        }
    }
}

TEST(ConsoleInterface, questionsAreAnsweredByNumber) {
    Session session("alert", Session::Streams::Terminal);
    std::string output = session.readUntil("the loop runs\r\n> ");
    EXPECT_EQ(withoutBanners(screen(output)),
              (Lines{"", "Title", "First line", "second \\x1b[31mline", "", "[1] Continue", "[2] Quit", "returned",
                     "log: the loop runs", ">"}));
    for (const char* wrong : {"", "0", "3", "two", "1x", "-1", "99999999999999999999"}) {
        session.type(std::string(wrong) + '\n');
        EXPECT_EQ(session.readUntil("[2] Quit\r\n\r> "), std::string(wrong) + "\r\n[1] Continue\r\n[2] Quit\r\n\r> ");
    }
    session.type(" 2 \n");
    std::string rest;
    EXPECT_EQ(session.readToEnd(rest), 0);
    EXPECT_EQ(rest, " 2 \r\ncode 1001\r\n");
}

TEST(ConsoleInterface, whereNobodyAnswersTheProgramEnds) {
    Session terminal("alert", Session::Streams::Terminal);
    terminal.readUntil("the loop runs\r\n> ");
    terminal.type("\x04");
    std::string rest;
    EXPECT_EQ(terminal.readToEnd(rest), 0);
    EXPECT_NE(rest.find("> 2\r\ncode 1001\r\n"), std::string::npos) << rest;

    Session pipes("alert", Session::Streams::Pipes);
    pipes.type("1\n");
    EXPECT_EQ(pipes.readToEnd(rest), 0);
    EXPECT_NE(rest.find("[2] Quit\nreturned\n> 2\ncode 1001\n"), std::string::npos) << rest;
}

TEST(ConsoleInterface, questionsWaitForEachOther) {
    Session session("two alerts", Session::Streams::Terminal);
    std::string output;
    for (const char* title : {"One", "Two", "Three"}) {
        output = session.readUntil("> ");
        EXPECT_NE(output.find(std::string("\r\n") + title + "\r\n"), std::string::npos) << output;
        EXPECT_EQ(output.find("[1]"), output.rfind("[1]")) << "one question at a time";
        session.type("1\n");
        session.readUntil(std::string(title) + " code 1000\r\n");
    }
    EXPECT_EQ(session.readToEnd(output), 0);
}

TEST(ConsoleInterface, signalsAskTheProgramToQuit) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Session session("signals", Session::Streams::Terminal);
        session.readUntil("ready\r\n");
        session.signal(number);
        session.readUntil("> ");
        session.type("1\n");
        session.readUntil("1\r\n");
        session.signal(number);
        session.readUntil("> ");
        session.signal(number);
        session.signal(number);
        session.type("2\n");
        std::string rest;
        EXPECT_EQ(session.readToEnd(rest), 0) << number;
    }
}

TEST(ConsoleInterface, aClosedPipeIsNoReasonToDie) {
    Session session("stages", Session::Streams::Pipes);
    session.closeStreams();
    EXPECT_EQ(session.wait(), 0);
}

} // namespace
