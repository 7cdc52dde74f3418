#include "../ShellTest.h"

namespace tavrine {
namespace {

class NetworkSpeedToolTest : public ShellTest {
protected:
    NetworkSpeedToolTest() { desktop.interfaceCounters().add("eth0"); }

    NetworkMonitor &monitor() { return delegate->tools().networkSpeed().monitor(); }
    [[nodiscard]] QSize shown() { return {desktop.statusItem().image().width, desktop.statusItem().image().height}; }
    [[nodiscard]] QString identity() { return desktop.statusItem().image().identity; }
    void show(bool isShown = true) {
        defaults.set(text("showInternetSpeed"), isShown);
        time.runPending();
    }
};

TEST_F(NetworkSpeedToolTest, runsFromTheMomentAtWhichTheProgramIsMade) {
    construct();
    EXPECT_TRUE(monitor().isRunning());
    EXPECT_TRUE(monitor().isConnected());
}

TEST_F(NetworkSpeedToolTest, isStoppedByALaunchWithItsSwitchOffAndThenCostsNothing) {
    defaults.set(text("featureNetworkSpeed"), false);
    defaults.set(text("showInternetSpeed"), true);
    launch();
    EXPECT_FALSE(monitor().isRunning());
    const int timers = time.timerCount();
    time.advance(1min);
    EXPECT_EQ(desktop.interfaceCounters().calls(), 0);
    set(Feature::networkSpeed, true);
    time.runPending();
    EXPECT_EQ(time.timerCount(), timers + 1);
}

TEST_F(NetworkSpeedToolTest, looksOnceASecondWhileItsSwitchIsOnThoughNobodySeesTheFigures) {
    launch();
    const int before = desktop.interfaceCounters().calls();
    time.advance(10s);
    EXPECT_EQ(desktop.interfaceCounters().calls(), before + 10);
    EXPECT_EQ(shown(), QSize(18, 18));
}

TEST_F(NetworkSpeedToolTest, nothingIsDrawnWhileTheFiguresAreNotShown) {
    launch();
    const int drawings = desktop.statusItem().drawings();
    for (int i = 0; i < 5; ++i) {
        desktop.interfaceCounters().receive("eth0", 1000U << i);
        time.advance(1s);
    }
    EXPECT_EQ(desktop.statusItem().drawings(), drawings);
}

TEST_F(NetworkSpeedToolTest, aFreshInstallShowsTheIconAlthoughTheSwitchIsOn) {
    launch();
    EXPECT_EQ(shown(), QSize(18, 18));
    EXPECT_TRUE(desktop.statusItem().image().isTemplate);
}

TEST_F(NetworkSpeedToolTest, theFiguresTakeTheIconsPlaceAtTheLaunchAndOnAnyChangeOfThePreferences) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    EXPECT_EQ(shown(), QSize(70, 22));
    EXPECT_FALSE(desktop.statusItem().image().isTemplate);
    show(false);
    EXPECT_EQ(shown(), QSize(18, 18));
    EXPECT_TRUE(desktop.statusItem().image().isTemplate);
    show();
    EXPECT_EQ(shown(), QSize(70, 22));
}

TEST_F(NetworkSpeedToolTest, modeThemeAndIndicatorAreFollowed) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    delegate->display().setKeepAwake({.isAwake = true, .modeName = text("Display Awake")});
    for (const auto &[key, value] : {std::pair("speedDisplayMode", "Both"),
                                     {"speedDisplayMode", "Upload Only"},
                                     {"speedTheme", "Black BG / White Text"}}) {
        const QString before = identity();
        defaults.set(text(key), text(value));
        time.runPending();
        EXPECT_NE(identity(), before) << value;
    }
    const QString before = identity();
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    time.runPending();
    EXPECT_NE(identity(), before);
    EXPECT_EQ(desktop.statusItem().render(1).pixelColor(35, 1), QColor(0x00, 0x7a, 0xff));
}

TEST_F(NetworkSpeedToolTest, anUnknownTextShowsTheDownloadAloneInTheGlassTheme) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    desktop.interfaceCounters().receive("eth0", 4096);
    desktop.interfaceCounters().send("eth0", 8192);
    time.advance(2s);
    const auto shownWith = [this](const char *key, const char *value) {
        defaults.set(text(key), text(value));
        time.runPending();
        return std::pair(identity(), desktop.statusItem().render(2));
    };
    const auto download = shownWith("speedDisplayMode", "Download Only");
    EXPECT_NE(shownWith("speedDisplayMode", "Both"), download);
    EXPECT_EQ(shownWith("speedDisplayMode", "download only"), download);
    EXPECT_NE(shownWith("speedDisplayMode", "Upload Only"), download);
    EXPECT_EQ(shownWith("speedDisplayMode", ""), download);
    const auto glass = shownWith("speedTheme", "Glass Effect");
    EXPECT_NE(shownWith("speedTheme", "White BG / Black Text"), glass);
    EXPECT_EQ(shownWith("speedTheme", "Dark"), glass);
}

TEST_F(NetworkSpeedToolTest, eachFigureIsDrawnAndTheSameOneNotAgain) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    time.advance(2s);
    const int drawings = desktop.statusItem().drawings();
    time.advance(10s); // nothing moves
    EXPECT_EQ(desktop.statusItem().drawings(), drawings);
    desktop.interfaceCounters().send("eth0", 4000); // is not shown
    time.advance(1s);
    EXPECT_EQ(desktop.statusItem().drawings(), drawings);
    desktop.interfaceCounters().receive("eth0", 4000);
    time.advance(1s);
    EXPECT_EQ(desktop.statusItem().drawings(), drawings + 1);
}

TEST_F(NetworkSpeedToolTest, manyChangesInOneTurnAreOneLook) {
    launch();
    const int images = desktop.statusItem().imageCount();
    for (const char *theme : {"Glass Effect", "Black BG / White Text", "White BG / Black Text"})
        defaults.set(text("speedTheme"), text(theme));
    time.runPending();
    EXPECT_EQ(desktop.statusItem().imageCount(), images + 1);
}

TEST_F(NetworkSpeedToolTest, withNoNetworkTheItemIs92WideInEveryModeAnd70AgainWithOne) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    QImage none;
    for (const char *mode : {"Both", "Download Only", "Upload Only", "nonsense"}) {
        defaults.set(text("speedDisplayMode"), text(mode));
        desktop.pathMonitor().setStatus(PathStatus::unsatisfied);
        time.runPending();
        EXPECT_EQ(shown(), QSize(92, 22)) << mode;
        if (none.isNull())
            none = desktop.statusItem().render(2);
        EXPECT_EQ(desktop.statusItem().render(2), none) << "the same words whatever the mode, " << mode;
        desktop.pathMonitor().setStatus(PathStatus::satisfied);
        time.runPending();
        EXPECT_EQ(shown(), QSize(70, 22)) << mode;
    }
}

TEST_F(NetworkSpeedToolTest, itsSwitchShowsTheIconAtOnceAndTheLastFiguresUntilNewOnesAreThere) {
    defaults.set(text("showInternetSpeed"), true);
    launch();
    desktop.interfaceCounters().receive("eth0", 4096);
    time.advance(1s);
    const QString figures = identity();
    set(Feature::networkSpeed, false);
    time.runPending();
    EXPECT_EQ(shown(), QSize(18, 18));
    desktop.interfaceCounters().receive("eth0", 8192);
    set(Feature::networkSpeed, true);
    time.advance(1s);
    EXPECT_EQ(identity(), figures);
    time.advance(1s);
    EXPECT_NE(identity(), figures);
}

TEST_F(NetworkSpeedToolTest, thePathIsWatchedWhileTheSwitchIsOff) {
    defaults.set(text("showInternetSpeed"), true);
    defaults.set(text("featureNetworkSpeed"), false);
    launch();
    desktop.pathMonitor().setStatus(PathStatus::unsatisfied);
    time.runPending();
    EXPECT_EQ(shown(), QSize(18, 18));
    set(Feature::networkSpeed, true);
    time.runPending();
    EXPECT_EQ(shown(), QSize(92, 22));
}

} // namespace
} // namespace tavrine
