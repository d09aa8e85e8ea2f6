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
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The driver, with this test at the other end of its streams.
class Session {
public:
    enum class Streams {
        Terminal,
        BackgroundOfTerminal, // of another job, which lets no other one write
        Socket                // standard error is a pipe that nobody reads
    };
    using Environment = std::vector<std::pair<const char*, const char*>>;

    Session(const std::string& scene, Streams streams, unsigned short columns = 80,
            const Environment& environment = {{"TERM", "xterm"}, {"LC_ALL", "C.UTF-8"}}) {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        struct winsize size {
            24, columns, 0, 0
        };
        std::array<int, 2> errors{-1, -1};
        EXPECT_EQ(::pipe2(errors.data(), O_CLOEXEC), 0);
        processId_ = streams == Streams::Socket ? ::fork() : ::forkpty(&stream_, nullptr, nullptr, &size);
        if (processId_ == 0) {
            for (const auto& [name, value] : environment)
                ::setenv(name, value, 1);
            if (streams == Streams::BackgroundOfTerminal)
                continueInBackground();
            if (streams == Streams::Socket) {
                ::dup2(ends[1], STDIN_FILENO);
                ::dup2(ends[1], STDOUT_FILENO);
                ::dup2(errors[1], STDERR_FILENO);
            }
            ::execl(CONSOLE_DRIVER, CONSOLE_DRIVER, scene.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(errors[1]);
        unreadErrors_ = errors[0];
        ::close(ends[1]);
        if (streams == Streams::Socket)
            stream_ = ends[0];
        else
            ::close(ends[0]);
    }
    ~Session() {
        if (processId_ > 0) {
            ::kill(processId_, SIGKILL);
            ::waitpid(processId_, nullptr, 0);
        }
        ::close(unreadErrors_);
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

    // Waits for what ends with a question, types the answer and waits for what it comes to, and for the end.
    void answer(const std::string& question, const std::string& typed, const std::string& outcome) {
        readUntil(question);
        type(typed);
        readUntil(outcome);
        expectSuccess();
    }

    void type(const std::string& text) const {
        EXPECT_EQ(::write(stream_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    // Lets the scene go on.
    void step() const { EXPECT_EQ(::kill(processId_, SIGUSR1), 0); }
    void closeStream() { ::close(std::exchange(stream_, -1)); }

private:
    // Returns in a job of its own. The first job keeps the terminal, and ends as the other one does.
    static void continueInBackground() {
        struct termios settings {};
        ::tcgetattr(STDIN_FILENO, &settings);
        settings.c_lflag |= TOSTOP;
        ::tcsetattr(STDIN_FILENO, TCSANOW, &settings);
        const pid_t job = ::fork();
        if (job == 0) {
            ::setpgid(0, 0);
            return;
        }
        int status = -1;
        ::waitpid(job, &status, WUNTRACED);
        ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 99);
    }

    bool readSome() {
        struct pollfd readable {
            stream_, POLLIN, 0
        };
        if (::poll(&readable, 1, 20000) <= 0) {
            ADD_FAILURE() << "no output: " << unread_;
            ::kill(processId_, SIGKILL); // so that nothing waits for its end
            return false;
        }
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(stream_, buffer.data(), buffer.size());
        if (count > 0)
            unread_.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    pid_t processId_ = -1;
    int stream_ = -1;
    int unreadErrors_ = -1;
    std::string unread_;
};

// What a person sees in the end: carriage returns move, "ESC [ K" clears the rest of the line, other bytes overwrite.
std::vector<std::string> screen(const std::string& output) {
    std::vector<std::string> lines{""};
    std::size_t column = 0;
    for (std::size_t at = 0; at < output.size(); ++at) {
        const char c = output[at];
        if (output.compare(at, 3, "\x1b[K") == 0) {
            lines.back().resize(std::min(lines.back().size(), column));
            at += 2;
        } else if (c == '\n') {
            lines.emplace_back();
            column = 0;
        } else if (c == '\r') {
            column = 0;
        } else {
            lines.back().resize(std::max(lines.back().size(), column + 1), ' ');
            lines.back()[column++] = c;
        }
    }
    for (std::string& line : lines)
        line.resize(line.find_last_not_of(' ') + 1);
    return lines;
}

// The lines without the date and process of log lines.
std::vector<std::string> withoutBanners(std::vector<std::string> lines) {
    for (std::string& line : lines)
        line = std::regex_replace(line, std::regex(R"(^\d{4}-\S+ \S+ driver\[\d+:\d+\] )"), "log: ");
    return lines;
}

using Lines = std::vector<std::string>;
using Streams = Session::Streams;

TEST(ConsoleInterfaceTest, StagesAreLinesOfTheirOwn) {
    Session terminal("stages", Streams::Terminal);
    EXPECT_EQ(withoutBanners(screen(terminal.readToEnd())),
              (Lines{"Downloading", "Installing\\x1b[2J\\xc2\\x9b\\x9b", "It’s é…", "log: logged", ""}));
    Session socket("stages", Streams::Socket);
    EXPECT_EQ(socket.readToEnd(), "Downloading\nInstalling\\x1b[2J\\xc2\\x9b\\x9b\nIt’s é…\n")
        << "no bar without a terminal";
}

TEST(ConsoleInterfaceTest, PlainTerminalsGetLinesOfAscii) {
    const Session::Environment environments[] = {{{"TERM", "dumb"}, {"LC_ALL", "C.UTF-8"}},
                                                 {{"TERM", "xterm"}, {"LC_ALL", "C"}},
                                                 {{"TERM", "xterm"}, {"LC_ALL", ""}, {"LC_CTYPE", "de_DE"}}};
    for (const auto& environment : environments) {
        Session stages("stages", Streams::Terminal, 80, environment);
        const std::string output = stages.readToEnd();
        EXPECT_EQ(withoutBanners(screen(output)),
                  (Lines{"Downloading", "Installing\\x1b[2J\\xc2\\x9b\\x9b", "It's ?...", "log: logged", ""}));
        EXPECT_EQ(std::count(output.begin(), output.end(), '\r'), std::count(output.begin(), output.end(), '\n'));
        EXPECT_EQ(output.find('\x1b'), std::string::npos);

        Session alert("alert", Streams::Terminal, 80, environment);
        alert.answer("[2] Quit\r\n[1-2, Return = 1] > ", "2\n", "code 1001\r\n");
    }
}

TEST(ConsoleInterfaceTest, TheBarStaysOnOneLine) {
    Session session("progress", Streams::Terminal, 40);
    std::string output = session.readUntil("  0%");
    session.step();
    output += session.readUntil(" 50%");
    EXPECT_EQ(screen(output), Lines{"[###############               ]  50%"});
    EXPECT_LE(std::count(output.begin(), output.end(), '\r'), 6) << "50,000 steps are not as many drawings";
    session.step();
    output += session.readUntil("100%");
    EXPECT_EQ(withoutBanners(screen(output)), (Lines{"log: logged", "[##############################] 100%"}));
    session.step();
    output += session.readToEnd();
    EXPECT_EQ(withoutBanners(screen(output)), (Lines{"log: logged", "Installing", ""}));
}

TEST(ConsoleInterfaceTest, LinesBreakBetweenWords) {
    Session session("long alert", Streams::Terminal, 20);
    const std::string output = session.readUntil("> ");
    const std::string e = "e\u0301";
    const std::string word = e + e + e + e;
    EXPECT_EQ(screen(output), (Lines{"", "Make sure there is", "enough free space", "インターネット接続と",
                                     "ディスクを確認。", word + ' ' + word + ' ' + word + ' ' + word, "end", "",
                                     "[1] Continue with", "    the installation", "[2] Quit", "[1-2, Return = 1] >"}));
    session.answer("", "\n", "code 1000\r\n");
}

TEST(ConsoleInterfaceTest, QuestionsAreAnsweredByNumber) {
    Session session("alert", Streams::Terminal);
    std::string output = session.readUntil("the loop runs\r\n[1-2, Return = 1] > ");
    EXPECT_EQ(withoutBanners(screen(output)),
              (Lines{"", "Title", "First line", "second \\x1b[31mline", "", "[1] Continue", "[2] Quit", "returned",
                     "log: the loop runs", "[1-2, Return = 1] >"}));
    for (const std::string wrong : {"0", "3", "1x", "-1", "99999999999999999999"}) {
        session.type(wrong + '\n');
        EXPECT_EQ(screen(session.readUntil("= 1] > ")),
                  (Lines{wrong, "[1] Continue", "[2] Quit", "[1-2, Return = 1] >"}));
    }
    session.type(" 2 \n");
    EXPECT_EQ(session.readToEnd(), " 2 \r\ncode 1001\r\n");
}

TEST(ConsoleInterfaceTest, AnAnswerCountsAsSoonAsTheQuestionStandsThere) {
    Session session("huge alert", Streams::Terminal);
    session.answer("Title", "2\n", "code 1001\r\n");
}

TEST(ConsoleInterfaceTest, WhereNobodyAnswersTheProgramEnds) {
    Session terminal("alert", Streams::Terminal);
    terminal.answer("the loop runs\r\n[1-2, Return = 1] > ", "\x04", "> 2\r\ncode 1001\r\n");

    Session socket("alert", Streams::Socket);
    socket.answer("", "1\n", "[2] Quit\nreturned\n> 2\ncode 1001\n");

    // Reading there, forgetting what was typed, and here writing, too, would stop the process.
    Session background("alert", Streams::BackgroundOfTerminal);
    background.answer("", "1\n", "> 2\r\ncode 1001\r\n");
}

TEST(ConsoleInterfaceTest, AnInterruptionLeavesNothingOnTheLine) {
    Session session("alert", Streams::Terminal);
    std::string output = session.readUntil("the loop runs\r\n[1-2, Return = 1] > ");
    session.type("\x03");
    output += session.readToEnd();
    EXPECT_NE(output.find("^C"), std::string::npos);
    EXPECT_EQ(withoutBanners(screen(output)).back(), "");
}

TEST(ConsoleInterfaceTest, QuestionsWaitForEachOther) {
    Session session("two alerts", Streams::Terminal);
    for (const std::string title : {"One", "Two", "Three"}) {
        const std::string output = session.readUntil("> ");
        EXPECT_NE(output.find("\r\n" + title + "\r\n"), std::string::npos) << output;
        EXPECT_EQ(output.find("[1]"), output.rfind("[1]")) << "one question at a time";
        session.type("1\n");
        session.readUntil(title + " code 1000\r\n");
    }
    session.expectSuccess();
}

TEST(ConsoleInterfaceTest, AStreamThatNobodyReadsHoldsNobodyUp) {
    Session session("noise", Streams::Socket);
    session.readUntil("not held up\n");
    session.expectSuccess();
}

TEST(ConsoleInterfaceTest, AClosedStreamIsNoReasonToDie) {
    Session session("stages", Streams::Socket);
    session.closeStream();
    session.expectSuccess();
}

} // namespace
