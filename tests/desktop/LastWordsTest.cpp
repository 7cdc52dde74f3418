// What the built program says when a signal ends it, and that it ends as the signal has it.

#include "desktop/Program.h"
#include "support/Wait.h"

#include <array>
#include <chrono>
#include <csignal>
#include <string_view>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// An error output that somebody keeps and does not empty.
class Unread {
public:
    Unread() { EXPECT_EQ(::pipe2(m_ends, O_NONBLOCK | O_CLOEXEC), 0); }
    ~Unread() {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    /// For who opens it anew, and then waits for room.
    [[nodiscard]] QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_ends[1]); }
    /// As little room as a pipe can have.
    [[nodiscard]] int makeSmall() { return ::fcntl(m_ends[1], F_SETPIPE_SZ, 1); }
    [[nodiscard]] bool write(std::string_view text) { return ::write(m_ends[1], text.data(), text.size()) > 0; }
    /// All that is in it.
    [[nodiscard]] std::string read() {
        std::string text;
        std::array<char, 4096> bytes{};
        for (ssize_t count = 0; (count = ::read(m_ends[0], bytes.data(), bytes.size())) > 0;)
            text.append(bytes.data(), size_t(count));
        return text;
    }

private:
    int m_ends[2] = {};
};

class LastWords : public testing::Test {
protected:
    /// Starts it and waits until it runs.
    void start(const QString &errors = {}) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);         // of this test and what it starts
        for (const int number : {SIGINT, SIGQUIT}) // a shell ignores them for what it starts in the background
            ::signal(number, SIG_DFL);
        process.setProcessEnvironment(program.environment);
        if (!errors.isEmpty())
            process.setStandardErrorFile(errors);
        process.start(QStringLiteral(TAVRINE_BINARY), QStringList());
        m_pid = static_cast<pid_t>(
            process.processId()); // of one that has ended the toolkit says 0, to a signal a whole group
        QByteArray said;
        ASSERT_TRUE(waitUntil(
            [&] { return (said += process.readAllStandardOutput()).contains("Registering Hotkeys..."); }, 30s));
        static_cast<void>(process.readAllStandardError());
    }
    [[nodiscard]] pid_t pid() const { return m_pid; }
    /// Waits for the end, which is the signal's, and gives what was said.
    std::string wordsAtEndBy(int number) {
        EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(10'000));
        EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
        EXPECT_EQ(process.exitCode(), number);
        return process.readAllStandardError().toStdString();
    }

    ~LastWords() override {
        process.kill();
        process.waitForFinished();
    }

    Program program; // its home
    QProcess process;

private:
    pid_t m_pid = 0;
};

// Sanitizers tell of faults themselves, and want to be loaded before everything else.
#ifndef TAVRINE_SANITIZED

class Fault : public LastWords {
protected:
    void startWithFaults() {
        program.environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(TAVRINE_FAULT_ON_SIGNAL));
        start();
    }
    void makeFault(int number) const {
        sigval value{};
        value.sival_int = number;
        ASSERT_EQ(::sigqueue(pid(), SIGRTMIN, value), 0);
    }
};

class LastWordsAtFault : public Fault, public testing::WithParamInterface<std::pair<int, const char *>> {};

TEST_P(LastWordsAtFault, aFaultIsToldWithThePlaceOfIt) {
    const auto [number, line] = GetParam();
    startWithFaults();
    makeFault(number);
    const std::string words = wordsAtEndBy(number);
    EXPECT_THAT(words, StartsWith(line));
    EXPECT_THAT(words, HasSubstr("fault_on_signal"));
    EXPECT_THAT(words, HasSubstr("bin/tavrine("));
}

INSTANTIATE_TEST_SUITE_P(Each, LastWordsAtFault,
                         testing::Values(std::pair{SIGSEGV, "tavrine: ended by signal 11 (SEGV)\n"},
                                         std::pair{SIGABRT, "tavrine: ended by signal 6 (ABRT)\n"},
                                         std::pair{SIGFPE, "tavrine: ended by signal 8 (FPE)\n"},
                                         std::pair{SIGILL, "tavrine: ended by signal 4 (ILL)\n"},
                                         std::pair{SIGBUS, "tavrine: ended by signal 7 (BUS)\n"},
                                         std::pair{SIGTRAP, "tavrine: ended by signal 5 (TRAP)\n"},
                                         std::pair{SIGSYS, "tavrine: ended by signal 31 (SYS)\n"},
                                         std::pair{SIGXCPU, "tavrine: ended by signal 24 (XCPU)\n"},
                                         std::pair{SIGXFSZ, "tavrine: ended by signal 25 (XFSZ)\n"}));

TEST_F(Fault, aFullStackIsToldAsWell) {
    startWithFaults();
    makeFault(SIGSTKFLT);
    EXPECT_THAT(wordsAtEndBy(SIGSEGV), StartsWith("tavrine: ended by signal 11 (SEGV)\n"));
}

TEST_F(Fault, aForkOfTheProgramSaysNothingAndEndsAllTheSame) {
    startWithFaults();
    makeFault(SIGCHLD);
    QByteArray said;
    ASSERT_TRUE(
        waitUntil([&] { return (said += process.readAllStandardOutput()).contains("The child was aborted."); }, 10s));
    ASSERT_EQ(::kill(pid(), SIGTERM), 0);
    EXPECT_THAT(wordsAtEndBy(SIGTERM), StartsWith("tavrine: ended by signal 15 (TERM)"));
}

TEST_F(Fault, anErrorOutputThatIsFullHalfWayCutsTheWayThereOffAndHoldsUpNoEnd) {
    Unread output;
    program.environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(TAVRINE_FAULT_ON_SIGNAL));
    ::signal(SIGALRM, SIG_IGN); // whatever the starter has of it
    start(output.path());
    ::signal(SIGALRM, SIG_DFL);
    static_cast<void>(output.read()); // of the start
    const int room = output.makeSmall();
    ASSERT_GT(room, 0);
    makeFault(SIGSTKFLT);
    static_cast<void>(wordsAtEndBy(SIGALRM)); // who waits is ended
    const std::string words = output.read();
    EXPECT_THAT(words, StartsWith("tavrine: ended by signal 11 (SEGV)\n"));
    EXPECT_THAT(words, HasSubstr("fault_on_signal"));
    EXPECT_GT(words.size() + 512, size_t(room)); // it was full, but for the line that found no room any more
}

#endif

class LastWordsAtRequest : public LastWords, public testing::WithParamInterface<std::pair<int, const char *>> {};

TEST_P(LastWordsAtRequest, whoEndsItIsTold) {
    const auto [number, name] = GetParam();
    start();
    ASSERT_EQ(::kill(pid(), number), 0);
    const std::string sender = std::to_string(::getpid()) + " (desktop_last_wo)"; // as far as the system knows names
    EXPECT_EQ(wordsAtEndBy(number), "tavrine: ended by signal " + std::to_string(number) + " (" + name +
                                        "), sent by process " + sender + "\n");
}

INSTANTIATE_TEST_SUITE_P(Each, LastWordsAtRequest,
                         testing::Values(std::pair{SIGTERM, "TERM"}, std::pair{SIGHUP, "HUP"}, std::pair{SIGINT, "INT"},
                                         std::pair{SIGQUIT, "QUIT"}));

TEST_F(LastWords, aSignalThatTheStarterIgnoresEndsNothing) {
    ::signal(SIGHUP, SIG_IGN); // as nohup does; what is started inherits it
    start();
    ::signal(SIGHUP, SIG_DFL);
    ASSERT_EQ(::kill(pid(), SIGHUP), 0);
    EXPECT_FALSE(process.waitForFinished(1000)); // of two signals that wait, the later is handled first
    ASSERT_EQ(::kill(pid(), SIGTERM), 0);
    EXPECT_THAT(wordsAtEndBy(SIGTERM), StartsWith("tavrine: ended by signal 15 (TERM)"));
}

TEST_F(LastWords, anErrorOutputThatNobodyEmptiesHoldsUpNoEnd) {
    Unread output;
    start(output.path());
    std::string before;
    while (output.write("................"))
        before += "................";
    ASSERT_EQ(::kill(pid(), SIGTERM), 0);
    static_cast<void>(wordsAtEndBy(SIGTERM));
    EXPECT_EQ(output.read(), before); // the words are lost
}

} // namespace
