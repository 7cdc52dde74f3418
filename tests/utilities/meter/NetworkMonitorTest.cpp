#include "utilities/meter/NetworkMonitor.h"

#include "adapters/fake/FakeInterfaceCounters.h"
#include "adapters/fake/FakePathMonitor.h"
#include "adapters/fake/VirtualTime.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr quint32 mebi = 1024 * 1024;

class NetworkMonitorTest : public testing::Test {
public:
    NetworkMonitorTest() {
        counters.add("eth0");
        QObject::connect(&monitor, &NetworkMonitor::published, &monitor, [this] { ++publications; });
        time.runPending();
        publications = 0;
    }
    /// Up to the end of the second sample, so that the next second is the first whose speed is shown.
    void settle() {
        time.advance(1s);
        publications = 0;
    }
    [[nodiscard]] std::string download() const { return monitor.downloadSpeed().toStdString(); }
    [[nodiscard]] std::string upload() const { return monitor.uploadSpeed().toStdString(); }

    VirtualTime time;
    FakeInterfaceCounters counters;
    FakePathMonitor path{time};
    NetworkMonitor monitor{{time, counters, path}};
    int publications = 0;
};

TEST(Speed, isGivenInBytesUpTo1023AndThenInKilobytes) {
    EXPECT_EQ(formattedSpeed(0), QStringLiteral("   0 B"));
    EXPECT_EQ(formattedSpeed(7), QStringLiteral("   7 B"));
    EXPECT_EQ(formattedSpeed(1023), QStringLiteral("1023 B"));
    EXPECT_EQ(formattedSpeed(1024), QStringLiteral("   1KB"));
}

TEST(Speed, isGivenInKilobytesUpToAMegabyteAndThenWithOneDecimal) {
    EXPECT_EQ(formattedSpeed(mebi - 1), QStringLiteral("1024KB"));
    EXPECT_EQ(formattedSpeed(mebi), QStringLiteral(" 1.0MB"));
    EXPECT_EQ(formattedSpeed(12 * mebi + mebi / 4), QStringLiteral("12.2MB")); // a half goes to the even digit
    EXPECT_EQ(formattedSpeed(2000ULL * mebi), QStringLiteral("2000.0MB"));
}

TEST_F(NetworkMonitorTest, beginsRunningConnectedAndWithoutFigures) {
    EXPECT_TRUE(monitor.isRunning());
    EXPECT_TRUE(monitor.isConnected());
    EXPECT_EQ(download(), "   0 KB");
    EXPECT_EQ(upload(), "   0 KB");
}

TEST_F(NetworkMonitorTest, looksOnceASecond) {
    time.advance(999ms);
    EXPECT_EQ(counters.calls(), 0);
    time.advance(1ms);
    EXPECT_EQ(counters.calls(), 1);
    time.advance(10s);
    EXPECT_EQ(counters.calls(), 11);
}

TEST_F(NetworkMonitorTest, theFirstLookPublishesNothingAndTheSecondWhatCameBetween) {
    counters.receive("eth0", 5 * mebi);
    time.advance(1s);
    EXPECT_EQ(publications, 0);
    EXPECT_EQ(download(), "   0 KB");
    counters.receive("eth0", 1024);
    counters.send("eth0", 1023);
    time.advance(1s);
    EXPECT_EQ(publications, 1);
    EXPECT_EQ(download(), "   1KB");
    EXPECT_EQ(upload(), "1023 B");
}

TEST_F(NetworkMonitorTest, afterARestartTheFirstLookPublishesNothingAndTheSecondADeltaOfOneSecond) {
    settle();
    counters.receive("eth0", 2048);
    time.advance(1s);
    EXPECT_EQ(download(), "   2KB");
    monitor.stopMeter();
    counters.receive("eth0", 100 * mebi);
    time.advance(10s);
    monitor.startMeter();
    publications = 0;
    time.advance(1s);
    EXPECT_EQ(publications, 0);
    EXPECT_EQ(download(), "   2KB"); // the last figures stay
    counters.receive("eth0", 512);
    time.advance(1s);
    EXPECT_EQ(publications, 1);
    EXPECT_EQ(download(), " 512 B");
}

TEST_F(NetworkMonitorTest, startingARunningMeterChangesNothing) {
    settle();
    time.advance(500ms);
    monitor.startMeter();
    counters.receive("eth0", 100);
    time.advance(500ms);
    EXPECT_EQ(download(), " 100 B");
    EXPECT_EQ(time.timerCount(), 1);
}

TEST_F(NetworkMonitorTest, aStoppedMeterLooksNoMoreAndHasNoTimer) {
    monitor.stopMeter();
    time.advance(1min);
    EXPECT_EQ(counters.calls(), 0);
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_FALSE(monitor.isRunning());
}

TEST_F(NetworkMonitorTest, theFiguresArePublishedATurnAfterTheLook) {
    settle();
    counters.receive("eth0", 100);
    std::string atTheLook;
    const auto timer = time.repeat(1s, [&] { atTheLook = download(); }); // due after the meter's, in the same moment
    time.advance(1s);
    EXPECT_EQ(atTheLook, "   0 KB");
    EXPECT_EQ(download(), " 100 B");
}

TEST_F(NetworkMonitorTest, aLoopbackWithTrafficAddsNothing) {
    counters.add("lo", interfaceFlag::up | interfaceFlag::running | interfaceFlag::loopback);
    settle();
    counters.receive("lo", mebi);
    counters.send("lo", mebi);
    time.advance(1s);
    EXPECT_EQ(download(), "   0 B");
    EXPECT_EQ(upload(), "   0 B");
}

TEST_F(NetworkMonitorTest, anInterfaceCountsWhenItIsUpOrRunningAndNotWhenItIsNeither) {
    for (const quint32 flags : {interfaceFlag::up, interfaceFlag::running, 0U}) {
        counters.add("wlan0", flags);
        settle();
        counters.receive("wlan0", 300);
        time.advance(1s);
        EXPECT_EQ(download(), flags ? " 300 B" : "   0 B") << flags;
    }
}

TEST_F(NetworkMonitorTest, entriesForAddressesAndEntriesWithoutCountsAddNothing) {
    counters.set("address", {.flags = interfaceFlag::up, .isLinkLayer = false, .data = InterfaceData{}});
    counters.set("bare", {.flags = interfaceFlag::up, .isLinkLayer = true, .data = std::nullopt});
    settle();
    counters.receive("address", 300);
    time.advance(1s);
    EXPECT_EQ(download(), "   0 B");
}

TEST_F(NetworkMonitorTest, allInterfacesAreAddedUpBeyondWhatOneCounterHolds) {
    for (const char *name : {"a", "b", "c"})
        counters.set(name, {.flags = interfaceFlag::up, .isLinkLayer = true, .data = InterfaceData{0xf000'0000U, 0}});
    settle();
    for (const char *name : {"a", "b", "c"})
        counters.receive(name, mebi);
    time.advance(1s);
    EXPECT_EQ(download(), " 3.0MB");
}

TEST_F(NetworkMonitorTest, aCounterThatFallsGivesNothingForThatDirectionOnly) {
    counters.set("eth0", {.flags = interfaceFlag::up, .isLinkLayer = true, .data = InterfaceData{5000, 100}});
    settle();
    counters.set("eth0", {.flags = interfaceFlag::up, .isLinkLayer = true, .data = InterfaceData{4999, 350}});
    time.advance(1s);
    EXPECT_EQ(download(), "   0 B");
    EXPECT_EQ(upload(), " 250 B");
    counters.receive("eth0", 10);
    time.advance(1s);
    EXPECT_EQ(download(), "  10 B"); // counted from where it fell to
}

TEST_F(NetworkMonitorTest, aCounterThatBeginsAnewAfterFourGibibytesGivesNothingForThatSecond) {
    counters.set("eth0", {.flags = interfaceFlag::up, .isLinkLayer = true, .data = InterfaceData{0xffff'ff00U, 0}});
    settle();
    counters.receive("eth0", 0x200); // wraps
    time.advance(1s);
    EXPECT_EQ(download(), "   0 B");
    counters.receive("eth0", 0x200);
    time.advance(1s);
    EXPECT_EQ(download(), " 512 B");
}

TEST_F(NetworkMonitorTest, anInterfaceThatGoesAwayGivesNothingForThatSecond) {
    counters.set("vpn", {.flags = interfaceFlag::up, .isLinkLayer = true, .data = InterfaceData{mebi, mebi}});
    settle();
    counters.remove("vpn");
    counters.receive("eth0", 700);
    time.advance(1s);
    EXPECT_EQ(download(), "   0 B");
    counters.receive("eth0", 700);
    time.advance(1s);
    EXPECT_EQ(download(), " 700 B");
}

TEST_F(NetworkMonitorTest, aLookThatFailsIsPassedOverAndTheNextCountsFromTheOneBefore) {
    settle();
    counters.receive("eth0", 100);
    counters.failNext();
    time.advance(1s);
    EXPECT_EQ(publications, 0);
    counters.receive("eth0", 100);
    time.advance(1s);
    EXPECT_EQ(publications, 1);
    EXPECT_EQ(download(), " 200 B");
}

TEST_F(NetworkMonitorTest, aFirstLookThatFailsLeavesTheNextTheFirst) {
    counters.failNext();
    time.advance(1s);
    counters.receive("eth0", 100);
    time.advance(1s);
    EXPECT_EQ(publications, 0);
    time.advance(1s);
    EXPECT_EQ(publications, 1);
    EXPECT_EQ(download(), "   0 B");
}

TEST_F(NetworkMonitorTest, theConnectionFollowsThePathWhetherTheMeterRunsOrNot) {
    path.setStatus(PathStatus::unsatisfied);
    time.runPending();
    EXPECT_FALSE(monitor.isConnected());
    EXPECT_EQ(publications, 1);
    monitor.stopMeter();
    path.setStatus(PathStatus::satisfied);
    time.runPending();
    EXPECT_TRUE(monitor.isConnected());
    EXPECT_EQ(publications, 2);
}

TEST_F(NetworkMonitorTest, withoutAConnectionTheFiguresGoOn) {
    settle();
    path.setStatus(PathStatus::unsatisfied);
    counters.receive("eth0", 64);
    time.advance(1s);
    EXPECT_EQ(download(), "  64 B");
}

TEST(NetworkMonitorsEnd, isNoTroubleForWhatIsUnderWay) {
    VirtualTime time;
    FakeInterfaceCounters counters;
    FakePathMonitor path(time);
    counters.add("eth0");
    {
        NetworkMonitor monitor({time, counters, path});
        time.advance(1s);
        counters.receive("eth0", 1);
    }
    path.setStatus(PathStatus::unsatisfied);
    time.advance(1min);
    EXPECT_EQ(counters.calls(), 1);
}

} // namespace
} // namespace tavrine
