// Keep Awake within the program: its launch, its switch, and what the tray item tells of it.
#include "../ShellTest.h"
#include "utilities/awake/KeepAwakeControlView.h"

namespace tavrine {
namespace {

class KeepAwakeToolTest : public ShellTest {
protected:
    [[nodiscard]] KeepAwakeTool &tool() { return delegate->tools().keepAwake(); }
    [[nodiscard]] KeepAwakeManager &awake() { return tool().manager(); }
    [[nodiscard]] std::string toolTip() { return desktop.statusItem().toolTip().toStdString(); }
    void after(const std::function<void()> &work) {
        quietly([&] {
            work();
            time.runPending();
        });
    }
    void pass(Seconds length) {
        quietly([&] { time.advance(length); });
    }
};

TEST_F(KeepAwakeToolTest, theLaunchReadsThePowerSourceAndStartsAsleep) {
    desktop.powerSource().setPluggedIn(false);
    construct();
    EXPECT_EQ(desktop.powerSource().readings(), 0);
    EXPECT_THAT(outputOf([&] { delegate->applicationDidFinishLaunching(); }),
                HasSubstr("[KeepAwake] IOPSPowerSourceState=Battery Power pluggedIn=false\n"));
    EXPECT_EQ(desktop.powerSource().readings(), 1);
    EXPECT_EQ(desktop.powerAssertions().createdCount(), 0);
    pass(1s);
    EXPECT_EQ(toolTip(), "Tavrine");
}

TEST_F(KeepAwakeToolTest, aScheduleChecksAMinuteAfterTheLaunch) {
    time.setWallClock({1770033600.0}); // a Monday at noon
    defaults.set(text("keepAwakeScheduleEnabled"), true);
    launch(); // and a second
    pass(58s);
    EXPECT_FALSE(awake().isAwake());
    pass(1s);
    EXPECT_TRUE(awake().isAwake());
    EXPECT_TRUE(desktop.powerAssertions().screenStaysOn());
}

TEST_F(KeepAwakeToolTest, theTipTellsTheModeWhileAwake) {
    launch();
    after([&] { awake().enable(); });
    EXPECT_EQ(toolTip(), "Tavrine — Keep Awake: Display Awake");
    after([&] { awake().setMode(KeepAwakeMode::systemAwake); });
    EXPECT_EQ(toolTip(), "Tavrine — Keep Awake: System Awake");
    after([&] { awake().setMode(KeepAwakeMode::lidClosed); });
    EXPECT_EQ(toolTip(), "Tavrine — Keep Awake: Lid Closed");
    after([&] { awake().disable(); });
    EXPECT_EQ(toolTip(), "Tavrine");
    after([&] { awake().setMode(KeepAwakeMode::displayAwake); });
    EXPECT_EQ(toolTip(), "Tavrine");
}

TEST_F(KeepAwakeToolTest, theIconIsColouredWhileAwakeForWhoWantsThat) {
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    launch();
    const QSize plain = desktop.statusItem().render(1).size();
    after([&] { awake().enable(); });
    EXPECT_EQ(desktop.statusItem().render(1).size(), QSize(28, 22));
    after([&] { awake().disable(); });
    EXPECT_EQ(desktop.statusItem().render(1).size(), plain);
}

TEST_F(KeepAwakeToolTest, itsSwitchEndsASessionAndAPause) {
    desktop.powerSource().setPluggedIn(false);
    launch();
    after([&] { awake().enable(); });
    ASSERT_TRUE(awake().isAwake());
    after([&] { set(Feature::keepAwake, false); });
    EXPECT_FALSE(awake().isAwake());
    EXPECT_TRUE(desktop.powerAssertions().held().empty());
    EXPECT_EQ(toolTip(), "Tavrine");

    after([&] { set(Feature::keepAwake, true); });
    after([&] { awake().enable(); });
    after([&] { awake().setChargingOnly(true); });
    ASSERT_TRUE(awake().autoDisabledForBattery());
    after([&] { set(Feature::keepAwake, false); });
    desktop.powerSource().setPluggedIn(true);
    pass(1min);
    EXPECT_FALSE(awake().isAwake());
}

TEST_F(KeepAwakeToolTest, aLaunchWithItsSwitchOffMakesNothingUntilItIsOn) {
    defaults.set(text("featureKeepAwake"), false);
    launch();
    pass(1min);
    EXPECT_EQ(desktop.powerSource().readings(), 0);
    EXPECT_EQ(toolTip(), "Tavrine");
    after([&] { set(Feature::keepAwake, true); });
    EXPECT_EQ(desktop.powerSource().readings(), 1);
    after([&] { awake().enable(); });
    EXPECT_EQ(toolTip(), "Tavrine — Keep Awake: Display Awake");
}

TEST_F(KeepAwakeToolTest, theMenuOpensWithItsPanelClosed) {
    launch();
    std::vector<bool> shown;
    QObject::connect(&tool(), &KeepAwakeTool::showAdvancedPanelChanged, &tool(),
                     [&](bool isShown) { shown.push_back(isShown); });
    awake().setShowAdvancedPanel(true);
    delegate->menuWillOpen();
    EXPECT_FALSE(awake().showAdvancedPanel());
    EXPECT_THAT(shown, ElementsAre(true, false));
}

TEST_F(KeepAwakeToolTest, theCardAsksForPowerOnceWhatIsInItsWayIsGone) {
    desktop.powerSource().setPluggedIn(false);
    launch();
    after([&] { awake().setMode(KeepAwakeMode::lidClosed); });
    int alertsBefore = -1;
    const std::unique_ptr<KeepAwakeControlView> card(
        tool().makeControlView([&] { alertsBefore = int(desktop.alerts().shown().size()); }));
    card->show();
    after([&] { awake().toggle(); });
    EXPECT_EQ(alertsBefore, 0);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().first().message, text("Connect AC Power"));
    EXPECT_FALSE(awake().showLidClosedNoPowerWarning());
}

} // namespace
} // namespace tavrine
