// The card: what it shows, what its controls do, by mouse and by keyboard, and what a screen reader hears.
#include "utilities/awake/KeepAwakeControlView.h"

#include "AwakeFixture.h"
#include "adapters/fake/FakeAlerts.h"
#include "look/Toggle.h"
#include "support/OtherPlatform.h"
#include "utilities/awake/TimeFieldView.h"

#include <QApplication>
#include <QTest>

namespace tavrine {
namespace {

class KeepAwakeCard : public AwakeFixture {
protected:
    KeepAwakeCard() {
        view = std::make_unique<KeepAwakeControlView>(
            std::make_unique<KeepAwakeControlModel>(KeepAwakeControlModel::Parts{*manager, alerts, time, {}}));
        view->show();
        view->activateWindow();
        settle();
    }

    void settle() {
        pass(0s);
        view->adjustSize();
        QCoreApplication::processEvents();
    }
    /// What can be pressed under that name and is to be seen; null when nothing is.
    QAbstractButton *button(const char *name) {
        for (auto *each : view->findChildren<QAbstractButton *>()) {
            const bool isNamed = each->text() == QLatin1String(name) || each->accessibleName() == QLatin1String(name);
            if (isNamed && each->isVisible())
                return each;
        }
        return nullptr;
    }
    void click(const char *name) {
        ASSERT_TRUE(button(name)) << name;
        quietly([&] { QTest::mouseClick(button(name), Qt::LeftButton); });
        settle();
    }
    /// What is spoken of all that is to be seen.
    QStringList spoken() {
        QStringList words;
        for (const auto *each : view->findChildren<QWidget *>())
            if (each->isVisible())
                words << each->accessibleName() << each->accessibleDescription();
        words.removeAll(QString());
        return words;
    }

    FakeAlerts alerts;
    std::unique_ptr<KeepAwakeControlView> view;
};

TEST_F(KeepAwakeCard, isAsWideAsTheMenuWithoutItsMargins) {
    EXPECT_EQ(view->width(), 266);
}

TEST_F(KeepAwakeCard, itsSwitchKeepsTheMachineAwake) {
    EXPECT_THAT(spoken(), testing::Contains(QStringLiteral("Keep Awake, Inactive")));
    click("Keep Awake");
    EXPECT_TRUE(manager->isAwake());
    EXPECT_TRUE(button("Keep Awake")->isChecked());
    EXPECT_THAT(spoken(), testing::Contains(QStringLiteral("Keep Awake, Active")));
    click("Keep Awake");
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeCard, aSwitchThatCanDoNothingGoesBack) {
    setPluggedIn(false);
    after([&] { manager->setChargingOnly(true); });
    click("Keep Awake");
    EXPECT_FALSE(button("Keep Awake")->isChecked());
    assertions.setRefusing(true);
    after([&] { manager->setChargingOnly(false); });
    click("Keep Awake");
    EXPECT_FALSE(button("Keep Awake")->isChecked());
}

TEST_F(KeepAwakeCard, aDurationIsChosenAndPressedAgainBeginsAnew) {
    switchOn();
    click("15 min");
    EXPECT_EQ(manager->selectedDuration(), KeepAwakeDuration::fifteenMinutes);
    pass(10min);
    click("15 min");
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{900});
    click("Indefinite");
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
}

TEST_F(KeepAwakeCard, theAdvancedModesFoldOutAndTheCardGrows) {
    const int folded = view->height();
    EXPECT_FALSE(button("System"));
    click("Advanced Awake modes");
    EXPECT_TRUE(manager->showAdvancedPanel());
    EXPECT_GT(view->height(), folded);
    for (const char *name : {"Display", "System", "Lid Closed", "Charging Only", "Schedule"})
        EXPECT_TRUE(button(name)) << name;
    after([&] { manager->setShowAdvancedPanel(false); });
    settle();
    EXPECT_FALSE(button("System"));
    EXPECT_EQ(view->height(), folded);
}

TEST_F(KeepAwakeCard, oneModeIsChosenAndTheLidHasANote) {
    click("Advanced Awake modes");
    EXPECT_TRUE(button("Display")->isChecked());
    const auto note = QStringLiteral("Reliability varies by computer model & system version.");
    EXPECT_THAT(spoken(), testing::Not(testing::Contains(note)));
    click("Lid Closed");
    EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::lidClosed);
    EXPECT_FALSE(button("Display")->isChecked());
    EXPECT_THAT(spoken(), testing::Contains(note));
    EXPECT_THAT(spoken(), testing::Contains(QStringLiteral("Works with lid closed")));
    click("System");
    EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::systemAwake);
    EXPECT_THAT(spoken(), testing::Not(testing::Contains(note)));
}

TEST_F(KeepAwakeCard, aPauseOnBatteryIsSaid) {
    const auto note = QStringLiteral("Charging Only: paused while on battery");
    setPluggedIn(false);
    switchOn();
    click("Advanced Awake modes");
    EXPECT_THAT(spoken(), testing::Not(testing::Contains(note)));
    click("Charging Only");
    EXPECT_TRUE(manager->chargingOnly());
    EXPECT_THAT(spoken(), testing::Contains(note));
}

TEST_F(KeepAwakeCard, theScheduleFoldsOutItsTimesAndItsDays) {
    click("Advanced Awake modes");
    EXPECT_FALSE(button("Weekdays only"));
    click("Schedule");
    EXPECT_TRUE(manager->scheduleEnabled());
    click("Weekdays only");
    EXPECT_FALSE(manager->weekdaysOnly());
    const auto fields = view->findChildren<TimeField *>();
    ASSERT_EQ(fields.size(), 2);
    EXPECT_EQ(fields[0]->timeOfDay(), (TimeOfDay{9, 0}));
    EXPECT_EQ(fields[1]->timeOfDay(), (TimeOfDay{18, 0}));
    EXPECT_EQ(fields[0]->accessibleName(), QStringLiteral("Schedule start"));
    EXPECT_EQ(fields[1]->accessibleName(), QStringLiteral("Schedule end"));
    fields[0]->setFocus();
    QTest::keyClick(fields[0], Qt::Key_Up);
    QTest::keyClick(fields[1], Qt::Key_Down);
    EXPECT_EQ(manager->scheduleStart(), (TimeOfDay{10, 0}));
    EXPECT_EQ(manager->scheduleEnd(), (TimeOfDay{17, 0}));
    quietly([&] { manager->setScheduleStart({23, 59}); });
    EXPECT_EQ(fields[0]->timeOfDay(), (TimeOfDay{23, 59}));
    EXPECT_EQ(manager->scheduleStart(), (TimeOfDay{23, 59})) << "what is shown is not written back";
}

TEST_F(KeepAwakeCard, theKeyboardReachesEverythingFromTopToBottom) {
    click("Advanced Awake modes");
    click("Schedule");
    button("Keep Awake")->setFocus();
    std::vector<std::string> reached;
    for (int step = 0; step < 20 && (reached.size() < 2 || reached.back() != "Keep Awake"); ++step) {
        const QWidget *focus = QApplication::focusWidget();
        const auto *pressed = qobject_cast<const QAbstractButton *>(focus);
        const QString name = pressed && !pressed->text().isEmpty() ? pressed->text() : focus->accessibleName();
        if (reached.empty() || reached.back() != name.toStdString()) // a time has two parts
            reached.push_back(name.toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_THAT(reached,
                testing::ElementsAre("Keep Awake", "Indefinite", "Advanced Awake modes", "Display", "Charging Only",
                                     "Schedule", "Schedule start", "Schedule end", "Weekdays only", "Keep Awake"));
}

TEST_F(KeepAwakeCard, theArrowKeysChooseAModeAndTheSpaceBarPresses) {
    click("Advanced Awake modes");
    button("Display")->setFocus();
    quietly([&] {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    });
    EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::systemAwake);
    button("Keep Awake")->setFocus();
    quietly([&] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space); });
    settle();
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeCard, nothingSpokenNamesAnotherPlatform) {
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    click("Advanced Awake modes");
    EXPECT_FALSE(spoken().isEmpty());
    for (const QString &words : spoken())
        EXPECT_FALSE(namesAnotherPlatform(words)) << words.toStdString();
}

TEST_F(KeepAwakeCard, theAlertComesOnlyWhileTheCardIsShown) {
    setPluggedIn(false);
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    view->hide();
    switchOn();
    EXPECT_TRUE(alerts.shown().isEmpty());
    pass(10s);
    view->show();
    settle();
    EXPECT_EQ(alerts.shown().size(), 1);
}

} // namespace
} // namespace tavrine
