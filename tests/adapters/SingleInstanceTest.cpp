#include "support/Eventually.h"
#include "support/PrivateBus.h"

#include <QElapsedTimer>
#include <QProcess>

#include <csignal>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

class Start {
public:
    explicit Start(const QString &bus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                   const QString &display = qEnvironmentVariable("DISPLAY"), const QString &action = {}) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus);
        environment.insert(QStringLiteral("DISPLAY"), display);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(SINGLE_INSTANCE_PROGRAM), action.isEmpty() ? QStringList() : QStringList(action));
        process.waitForStarted();
    }
    ~Start() {
        ::kill(static_cast<pid_t>(process.processId()), SIGCONT);
        process.kill();
        process.waitForFinished();
    }
    QString said() {
        text += QString::fromUtf8(process.readAllStandardOutput());
        return text;
    }
    bool says(const QString &line) {
        return eventually([&] { return said().contains(line); });
    }
    int exitCode() {
        if (!eventually([&] { return process.state() == QProcess::NotRunning; }))
            return -1;
        return process.exitCode();
    }
    QProcess process;
    QString text;
};

TEST(SingleInstance, aLaterStartOpensTheFirstAgainAndEndsWell) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first\n")));
    Start second;
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(second.said(), QStringLiteral("handed over\n"));
    EXPECT_TRUE(first.says(QStringLiteral("reopened\n")));
    EXPECT_EQ(first.process.state(), QProcess::Running);
}

TEST(SingleInstance, aLaterStartHandsOnWhatALauncherCalledIt) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first\n")));
    qputenv("DESKTOP_STARTUP_ID", "launcher-1_TIME4711");
    Start second;
    qunsetenv("DESKTOP_STARTUP_ID");
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(first.says(QStringLiteral("by launcher-1_TIME4711\n")));
}

TEST(SingleInstance, aLaterStartHandsOnWhatItAsksFor) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first\n")));
    Start second(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), qEnvironmentVariable("DISPLAY"),
                 QStringLiteral("shelf"));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(first.says(QStringLiteral("reopened\nfor shelf\n")));
}

TEST(SingleInstance, aLaterStartHandsOnTheTokenByWhichItsWindowMayComeForward) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first\n")));
    qputenv("XDG_ACTIVATION_TOKEN", "token-4711");
    Start second;
    qunsetenv("XDG_ACTIVATION_TOKEN");
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(first.says(QStringLiteral("with token-4711\n")));
}

TEST(SingleInstance, ofManyStartsAtOnceOneRuns) {
    constexpr int count = 6;
    std::vector<std::unique_ptr<Start>> starts;
    for (int i = 0; i < count; ++i)
        starts.push_back(std::make_unique<Start>());
    int running = 0;
    EXPECT_TRUE(eventually([&] {
        running = 0;
        int ended = 0;
        for (const auto &start : starts) {
            running += start->said().contains(QStringLiteral("first"));
            ended += start->process.state() == QProcess::NotRunning;
        }
        return running == 1 && ended == count - 1;
    })) << running;
}

TEST(SingleInstance, withoutABusOneStartRuns) {
    Start first(QStringLiteral("unix:path=/nonexistent"));
    ASSERT_TRUE(first.says(QStringLiteral("first")));
    Start second(QStringLiteral("unix:path=/nonexistent"));
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_EQ(second.said(), QString());
    EXPECT_EQ(first.process.state(), QProcess::Running);
}

TEST(SingleInstance, aBusThatHangsHoldsUpNoFirstStart) {
    const PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    bus.hang();
    QElapsedTimer timer;
    timer.start();
    Start first(bus.address());
    EXPECT_TRUE(first.says(QStringLiteral("first")));
    EXPECT_LT(timer.elapsed(), 1500); // two seconds is what a start waits for a bus that it needs
    bus.goOn();
    Start second(bus.address());
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(first.says(QStringLiteral("reopened")));
}

TEST(SingleInstance, aBusThatRestartsAtItsAddressKnowsTheFirstAgain) {
    PrivateBus bus;
    Start first(bus.address());
    ASSERT_TRUE(first.says(QStringLiteral("first")));
    for (int restarts = 1; restarts <= 2; ++restarts) {
        bus.end();
        bus.start();
        ASSERT_TRUE(bus.isRunning());
        Start later(bus.address());
        EXPECT_EQ(later.exitCode(), 0) << restarts;
        EXPECT_TRUE(eventually([&] { return first.said().count(QStringLiteral("reopened")) == restarts; }));
    }
}

TEST(SingleInstance, onABusOfSeveralDisplaysAStartOnAnotherOneEnds) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first\n")));
    Start second(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral(":97"));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(second.process.readAllStandardError(),
              "Tavrine is running already, on another display of this bus, and goes on there.\n");
    EXPECT_TRUE(first.says(QStringLiteral("reopened")));
}

TEST(SingleInstance, twoScreensOfADisplayAreOneDisplay) {
    Start first(QStringLiteral("unix:path=/nonexistent"), QStringLiteral(":97"));
    ASSERT_TRUE(first.says(QStringLiteral("first")));
    Start second(QStringLiteral("unix:path=/nonexistent"), QStringLiteral(":97.1"));
    EXPECT_EQ(second.exitCode(), 1);
}

TEST(SingleInstance, aFirstOneThatHangsIsReportedAfterTwoSeconds) {
    Start first;
    ASSERT_TRUE(first.says(QStringLiteral("first")));
    ::kill(static_cast<pid_t>(first.process.processId()), SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    Start second;
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_GE(timer.elapsed(), 1900);
    EXPECT_LT(timer.elapsed(), 4000);
    EXPECT_EQ(second.process.readAllStandardError(), "Tavrine is running already and does not answer.\n");
}

TEST(SingleInstance, aStartAfterTheFirstEndedRuns) {
    {
        Start first;
        ASSERT_TRUE(first.says(QStringLiteral("first")));
    }
    Start second;
    EXPECT_TRUE(second.says(QStringLiteral("first")));
}

} // namespace
} // namespace tavrine::test
