// What the built program says when a signal ends it, and that it ends as the signal has it.

#include "desktop/Program.h"
#include "support/Wait.h"

#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

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
        QByteArray said;
        ASSERT_TRUE(waitUntil(
            [&] { return (said += process.readAllStandardOutput()).contains("Registering Hotkeys..."); }, 30s));
        static_cast<void>(process.readAllStandardError());
    }
    [[nodiscard]] pid_t pid() const { return static_cast<pid_t>(process.processId()); }
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
                                         std::pair{SIGILL, "tavrine: ended by signal 4 (ILL)\n"}));

TEST_F(Fault, aFullStackIsToldAsWell) {
    startWithFaults();
    makeFault(SIGSTKFLT);
    EXPECT_THAT(wordsAtEndBy(SIGSEGV), StartsWith("tavrine: ended by signal 11 (SEGV)\n"));
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
    ASSERT_EQ(::kill(pid(), SIGTERM), 0);
    EXPECT_THAT(wordsAtEndBy(SIGTERM), StartsWith("tavrine: ended by signal 15 (TERM)"));
}

TEST_F(LastWords, anErrorOutputThatNobodyEmptiesHoldsUpNoEnd) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    start(QStringLiteral("/proc/self/fd/%1").arg(ends[1]));
    while (::write(ends[1], "................", 16) > 0) {
    }
    ASSERT_EQ(::kill(pid(), SIGTERM), 0);
    EXPECT_EQ(wordsAtEndBy(SIGTERM), "");
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
