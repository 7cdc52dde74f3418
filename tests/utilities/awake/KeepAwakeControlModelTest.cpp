// When the card warns of the lid, and who takes the wish for it back.
#include "utilities/awake/KeepAwakeControlModel.h"

#include "AwakeFixture.h"
#include "adapters/fake/FakeAlerts.h"
#include "base/DesktopWords.h"

namespace tavrine {
namespace {

class KeepAwakeControl : public AwakeFixture {
protected:
    KeepAwakeControl() {
        alerts.setWhileShown(
            [this] { log.push_back(manager->showLidClosedNoPowerWarning() ? "alert" : "late alert"); });
        after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
        setPluggedIn(false);
        pass(10s);
    }

    FakeAlerts alerts;
    std::vector<std::string> log;
    KeepAwakeControlModel model{{*manager, alerts, time, [this] { log.push_back("before"); }}};
};

TEST_F(KeepAwakeControl, saysWhetherItIsActive) {
    EXPECT_EQ(model.status(), QStringLiteral("Inactive"));
    switchOn();
    EXPECT_EQ(model.status(), QStringLiteral("Active"));
}

TEST_F(KeepAwakeControl, thePersonIsAskedToConnectPowerATurnAfterTheSwitch) {
    model.setOnScreen(true);
    quietly([&] { manager->toggle(); });
    EXPECT_TRUE(alerts.shown().isEmpty());
    pass(0s);
    ASSERT_EQ(alerts.shown().size(), 1);
    const Alert &alert = alerts.shown().first();
    EXPECT_EQ(alert.message, QStringLiteral("Connect AC Power"));
    EXPECT_EQ(inDesktopWords(alert.information), QStringLiteral("Lid Closed mode requires AC power. Keep Awake will "
                                                                "activate automatically when your charger is "
                                                                "connected."));
    EXPECT_THAT(log, testing::ElementsAre("before", "alert"));
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning()) << "it is answered";
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeControl, anotherReasonIsAnotherAlert) {
    model.setOnScreen(true);
    switchOn();
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    EXPECT_EQ(alerts.shown().size(), 2);
}

TEST_F(KeepAwakeControl, whileTheAlertIsUpThereIsNoSecondOne) {
    model.setOnScreen(true);
    alerts.setWhileShown([this] {
        manager->setShowLidClosedNoPowerWarning(false);
        manager->setShowLidClosedNoPowerWarning(true);
        time.runPending();
    });
    switchOn();
    EXPECT_EQ(alerts.shown().size(), 1);
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
}

TEST_F(KeepAwakeControl, nobodyWhoIsNotLookingIsAsked) {
    switchOn();
    pass(1h);
    EXPECT_TRUE(alerts.shown().isEmpty());
    EXPECT_TRUE(manager->showLidClosedNoPowerWarning());
    after([&] { model.setOnScreen(true); });
    EXPECT_EQ(alerts.shown().size(), 1);
    after([&] {
        model.setOnScreen(false);
        model.setOnScreen(true);
    });
    EXPECT_EQ(alerts.shown().size(), 1);
}

TEST_F(KeepAwakeControl, whoLooksOncePowerIsBackIsNotAsked) {
    switchOn();
    setPluggedIn(true);
    pass(10s);
    after([&] { model.setOnScreen(true); });
    EXPECT_TRUE(alerts.shown().isEmpty());
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
}

TEST_F(KeepAwakeControl, theAdvancedPanelOpensAndCloses) {
    model.toggleAdvancedPanel();
    EXPECT_TRUE(manager->showAdvancedPanel());
    model.toggleAdvancedPanel();
    EXPECT_FALSE(manager->showAdvancedPanel());
}

} // namespace
} // namespace tavrine
