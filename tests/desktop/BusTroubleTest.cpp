// The built program beside a bus, or somebody on it, that hangs, ends or comes back.

#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/PrivateBus.h"
#include "support/Wait.h"

#include <csignal>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

// Who waits for a bus waits its 25 s; 10 s are for a machine that does a lot else.
constexpr auto launchBound = 10'000ms;
constexpr auto panelBound = 10'000ms;

const auto busVariable = QStringLiteral("DBUS_SESSION_BUS_ADDRESS");

class BusTrouble : public testing::Test {
protected:
    BusTrouble() { program.environment.insert(busVariable, bus.address()); }
    void TearDown() override { bus.goOn(); }

    /// Starts the program without waiting for what it does on the bus.
    bool launch() {
        if (!program.writePreferences({}))
            return false;
        process = program.startAgain();
        return process->waitForStarted();
    }
    bool hasLaunched() {
        return waitUntil(
            [this] {
                // Printed after the hot keys are registered.
                return (output += process->readAllStandardOutput()).contains("Accessibility Trusted on Launch: ");
            },
            launchBound);
    }
    bool opensAndClosesItsPanel() {
        desktop.openClipboardPanel();
        if (!waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }, panelBound))
            return false;
        desktop.pressEscape();
        return waitUntil([this] { return !desktop.isShown(clipboardPanel); }, panelBound);
    }
    void end() const {
        if (process) {
            process->kill();
            process->waitForFinished();
        }
    }
    ~BusTrouble() override { end(); }

    Desktop desktop;
    tavrine::test::PrivateBus bus;
    Program program;
    std::unique_ptr<QProcess> process;
    QByteArray output;
};

TEST_F(BusTrouble, aBusThatHangsFromTheStartCostsNoHotKey) {
    bus.hang();
    ASSERT_TRUE(launch());
    ASSERT_TRUE(hasLaunched());
    EXPECT_TRUE(opensAndClosesItsPanel());
    bus.goOn();
    EXPECT_TRUE(opensAndClosesItsPanel());
}

TEST_F(BusTrouble, aBusThatHangsLaterCostsNoHotKey) {
    ASSERT_TRUE(launch());
    ASSERT_TRUE(hasLaunched());
    ASSERT_TRUE(opensAndClosesItsPanel());
    bus.hang();
    for (int times = 0; times < 3; ++times)
        EXPECT_TRUE(opensAndClosesItsPanel()) << times;
}

TEST_F(BusTrouble, anOwnerOfTheAccessibilityBusThatHangsCostsNoHotKey) {
    QProcess owner;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(busVariable, bus.address());
    owner.setProcessEnvironment(environment);
    owner.start(QStringLiteral(TAVRINE_DESKTOP_CLIENTS "/a11y-owner"), QStringList());
    ASSERT_TRUE(waitUntil([&] { return owner.readAllStandardOutput().contains("ready"); }));
    ::kill(static_cast<pid_t>(owner.processId()), SIGSTOP);
    EXPECT_TRUE(launch() && hasLaunched());
    EXPECT_TRUE(opensAndClosesItsPanel());
    owner.kill();
    owner.waitForFinished();
}

TEST_F(BusTrouble, aCopyIsStoredOnceThoughTheBusRestartedAndSomebodyStartedTheProgramAgain) {
    ASSERT_TRUE(launch());
    ASSERT_TRUE(hasLaunched());
    bus.end();
    bus.start();
    const auto second = program.startAgain();
    ASSERT_TRUE(waitUntil([&] { return second->state() == QProcess::NotRunning; }));
    EXPECT_EQ(second->exitCode(), 0);
    copy("copied once");
    EXPECT_TRUE(waitUntil([this] { return program.rowsWith(QStringLiteral("copied once")) > 0; }));
    (void)waitUntil([] { return false; }, 1000ms); // two polls
    EXPECT_EQ(program.rowsWith(QStringLiteral("copied once")), 1);
}

} // namespace
