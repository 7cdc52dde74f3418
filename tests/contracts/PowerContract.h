#pragma once

#include "ports/PowerAssertions.h"
#include "ports/PowerSource.h"
#include "ports/UserNotifications.h"

#include <QStringList>

#include <optional>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What all power assertions keep. `Machine` has: PowerAssertions &assertions(); bool screenStaysOn(), staysUp() and
/// staysUpWithLidClosed(), what it would do by itself; bool suspendsWhenAsked(), by the person; void refuse(), hang()
/// and goOn(), its services from now on; and bool eventually(condition).
template <class Machine>
class PowerAssertionsContract : public testing::Test {
public:
    quint32 create(PowerAssertionType type) {
        result.reset();
        return machine.assertions().createWithName(type, QStringLiteral("Contract"),
                                                   [this](int given) { result = given; });
    }
    bool isAnswered() {
        return machine.eventually([this] { return result.has_value(); });
    }

    std::optional<int> result;
    Machine machine;
};

TYPED_TEST_SUITE_P(PowerAssertionsContract);

TYPED_TEST_P(PowerAssertionsContract, anAssertionIsAnsweredInALaterTurn) {
    const quint32 id = this->create(PowerAssertionType::noIdleSleep);
    EXPECT_NE(id, 0U);
    EXPECT_EQ(this->result, std::nullopt);
    ASSERT_TRUE(this->isAnswered());
    EXPECT_EQ(this->result, PowerAssertions::success);
}

TYPED_TEST_P(PowerAssertionsContract, eachTypeKeepsWhatItSaysAndReleasingGivesItBack) {
    auto &here = this->machine;
    for (const auto type : {PowerAssertionType::noDisplaySleep, PowerAssertionType::noIdleSleep,
                            PowerAssertionType::preventSystemSleep}) {
        const quint32 id = this->create(type);
        ASSERT_TRUE(this->isAnswered());
        EXPECT_TRUE(here.eventually([&] { return here.staysUp(); }));
        EXPECT_TRUE(
            here.eventually([&] { return here.screenStaysOn() == (type == PowerAssertionType::noDisplaySleep); }));
        EXPECT_EQ(here.suspendsWhenAsked(), type != PowerAssertionType::preventSystemSleep);
        EXPECT_FALSE(here.staysUpWithLidClosed());
        here.assertions().release(id);
        EXPECT_TRUE(here.eventually([&] { return !here.staysUp() && !here.screenStaysOn(); }));
        EXPECT_TRUE(here.suspendsWhenAsked());
    }
}

TYPED_TEST_P(PowerAssertionsContract, theLidIsHeldForAnAssertionThatAppliesToIt) {
    auto &here = this->machine;
    const quint32 id = this->create(PowerAssertionType::preventSystemSleep);
    ASSERT_TRUE(this->isAnswered());
    here.assertions().setAppliesOnLidClose(id);
    EXPECT_TRUE(here.eventually([&] { return here.staysUpWithLidClosed() && here.staysUp(); }));
    here.assertions().release(id);
    EXPECT_TRUE(here.eventually([&] { return !here.staysUpWithLidClosed(); }));
}

TYPED_TEST_P(PowerAssertionsContract, aReleasedAssertionIsNotAnsweredAndHoldsNothing) {
    auto &here = this->machine;
    here.assertions().release(this->create(PowerAssertionType::noDisplaySleep));
    const quint32 other =
        here.assertions().createWithName(PowerAssertionType::noIdleSleep, QStringLiteral("Contract"), [](int) {});
    EXPECT_TRUE(here.eventually([&] { return here.staysUp(); }));
    here.assertions().release(other);
    here.assertions().release(other);
    EXPECT_TRUE(here.eventually([&] { return !here.staysUp() && !here.screenStaysOn(); }));
    EXPECT_EQ(this->result, std::nullopt);
}

TYPED_TEST_P(PowerAssertionsContract, ofTwoAssertionsEachHoldsItsOwn) {
    auto &here = this->machine;
    const quint32 first = this->create(PowerAssertionType::noDisplaySleep);
    ASSERT_TRUE(this->isAnswered());
    const quint32 second = this->create(PowerAssertionType::noIdleSleep);
    ASSERT_TRUE(this->isAnswered());
    EXPECT_NE(first, second);
    here.assertions().release(first);
    EXPECT_TRUE(here.eventually([&] { return !here.screenStaysOn(); }));
    EXPECT_TRUE(here.staysUp());
    here.assertions().release(second);
    EXPECT_TRUE(here.eventually([&] { return !here.staysUp(); }));
}

TYPED_TEST_P(PowerAssertionsContract, whatNobodyTakesFailsAndHoldsNothing) {
    this->machine.refuse();
    static_cast<void>(this->create(PowerAssertionType::preventSystemSleep));
    ASSERT_TRUE(this->isAnswered());
    EXPECT_NE(this->result, PowerAssertions::success);
    EXPECT_FALSE(this->machine.staysUp());
}

TYPED_TEST_P(PowerAssertionsContract, aServiceThatHangsIsAFailureAndHoldsNothing) {
    this->machine.hang();
    static_cast<void>(this->create(PowerAssertionType::noIdleSleep));
    EXPECT_EQ(this->result, std::nullopt);
    ASSERT_TRUE(this->isAnswered());
    EXPECT_NE(this->result, PowerAssertions::success);
    this->machine.goOn();
    EXPECT_TRUE(this->machine.eventually([this] { return !this->machine.staysUp(); }));
}

REGISTER_TYPED_TEST_SUITE_P(PowerAssertionsContract, anAssertionIsAnsweredInALaterTurn,
                            eachTypeKeepsWhatItSaysAndReleasingGivesItBack, theLidIsHeldForAnAssertionThatAppliesToIt,
                            aReleasedAssertionIsNotAnsweredAndHoldsNothing, ofTwoAssertionsEachHoldsItsOwn,
                            whatNobodyTakesFailsAndHoldsNothing, aServiceThatHangsIsAFailureAndHoldsNothing);

/// What all power sources keep. `Machine` has: PowerSource &source(); void setPluggedIn(bool), with a battery from then
/// on; bool eventually(condition).
template <class Machine>
class PowerSourceContract : public testing::Test {
public:
    [[nodiscard]] QStringList states() {
        QStringList states;
        for (const QVariantMap &each : machine.source().sources())
            states.append(each.value(QLatin1String(PowerSource::stateKey)).toString());
        return states;
    }
    Machine machine;
};

TYPED_TEST_SUITE_P(PowerSourceContract);

TYPED_TEST_P(PowerSourceContract, aMachineWithoutABatteryHasNoSources) {
    EXPECT_EQ(this->states(), QStringList());
}

TYPED_TEST_P(PowerSourceContract, theFirstAnswerIsToldOnceAndWithinTheCallWhereItHasCome) {
    this->machine.setPluggedIn(false);
    int told = 0;
    QStringList known;
    this->machine.source().whenKnown([&] {
        ++told;
        known = this->states();
    });
    EXPECT_EQ(told, 0);
    EXPECT_TRUE(this->machine.eventually([&] { return told > 0; }));
    EXPECT_EQ(known, QStringList(QStringLiteral("Battery Power")));
    this->machine.source().whenKnown([&] { ++told; });
    EXPECT_EQ(told, 2);
    this->machine.setPluggedIn(true);
    EXPECT_TRUE(this->machine.eventually([&] { return this->states() != known; }));
    EXPECT_EQ(told, 2);
}

TYPED_TEST_P(PowerSourceContract, aMachineWithABatterySaysWhatItDrawsOnAndFollowsThePlug) {
    static_cast<void>(this->states());
    for (const bool isPluggedIn : {true, false, true}) {
        this->machine.setPluggedIn(isPluggedIn);
        const QStringList expected{isPluggedIn ? QStringLiteral("AC Power") : QStringLiteral("Battery Power")};
        EXPECT_TRUE(this->machine.eventually([&] { return this->states() == expected; }))
            << this->states().join(u' ').toStdString();
    }
}

REGISTER_TYPED_TEST_SUITE_P(PowerSourceContract, aMachineWithoutABatteryHasNoSources,
                            theFirstAnswerIsToldOnceAndWithinTheCallWhereItHasCome,
                            aMachineWithABatterySaysWhatItDrawsOnAndFollowsThePlug);

/// What all notifications keep. `Desk` has: UserNotifications &notifications(); QStringList shown(), title and body of
/// each that is to be seen; void refuse(), before anything; void press(identifier), as the person does with what is
/// shown under it; bool eventually(condition).
template <class Desk>
class UserNotificationsContract : public testing::Test {
public:
    std::optional<bool> authorization() {
        auto answer = std::make_shared<std::optional<bool>>();
        desk.notifications().requestAuthorization([answer](bool isGranted) { *answer = isGranted; });
        EXPECT_FALSE(answer->has_value()) << "the answer comes in a later turn";
        static_cast<void>(desk.eventually([&] { return answer->has_value(); }));
        return *answer;
    }
    Desk desk;
};

TYPED_TEST_SUITE_P(UserNotificationsContract);

TYPED_TEST_P(UserNotificationsContract, aNotificationIsShownInTheWordsOfTheDesktop) {
    EXPECT_EQ(this->authorization(), true);
    this->desk.notifications().add(
        {QStringLiteral("one"), QStringLiteral("A title"), QStringLiteral("Wipe history when your Mac reboots")});
    const QStringList expected{QStringLiteral("A title: Wipe history when your computer reboots")};
    EXPECT_TRUE(this->desk.eventually([&] { return this->desk.shown() == expected; }));
}

TYPED_TEST_P(UserNotificationsContract, oneUnderTheSameIdentifierTakesItsPlace) {
    EXPECT_EQ(this->authorization(), true);
    const auto show = [this](const char *identifier, const char *body) {
        this->desk.notifications().add({QLatin1String(identifier), QStringLiteral("A title"), QLatin1String(body)});
        EXPECT_TRUE(this->desk.eventually(
            [&] { return this->desk.shown().contains(QStringLiteral("A title: ") + QLatin1String(body)); }));
    };
    show("one", "first");
    show("two", "second");
    show("one", "third");
    EXPECT_EQ(this->desk.shown().size(), 2);
}

TYPED_TEST_P(UserNotificationsContract, aDesktopThatShowsNoneHasNotGrantedThem) {
    this->desk.refuse();
    EXPECT_EQ(this->authorization(), false);
    this->desk.notifications().add({QStringLiteral("one"), QStringLiteral("A title"), QStringLiteral("first")});
    EXPECT_FALSE(this->desk.eventually([&] { return !this->desk.shown().isEmpty(); }));
}

TYPED_TEST_P(UserNotificationsContract, aPressIsToldOfTheOneThatIsPressed) {
    EXPECT_EQ(this->authorization(), true);
    QStringList pressed;
    const auto add = [&](const char *identifier, const char *body, std::function<void()> onPress) {
        this->desk.notifications().add({QLatin1String(identifier), QStringLiteral("A title"), QLatin1String(body)},
                                       std::move(onPress));
        EXPECT_TRUE(this->desk.eventually(
            [&] { return this->desk.shown().contains(QStringLiteral("A title: ") + QLatin1String(body)); }));
    };
    add("one", "first", [&] { pressed.append(QStringLiteral("first")); });
    add("two", "second", [&] { pressed.append(QStringLiteral("second")); });
    add("three", "third", {});
    this->desk.press(QStringLiteral("three"));
    this->desk.press(QStringLiteral("two"));
    EXPECT_TRUE(this->desk.eventually([&] { return pressed == QStringList(QStringLiteral("second")); }));
    add("two", "fourth", {});
    this->desk.press(QStringLiteral("two"));
    this->desk.press(QStringLiteral("one"));
    EXPECT_TRUE(this->desk.eventually([&] { return pressed.size() > 1; }));
    EXPECT_EQ(pressed, QStringList({QStringLiteral("second"), QStringLiteral("first")}));
}

REGISTER_TYPED_TEST_SUITE_P(UserNotificationsContract, aNotificationIsShownInTheWordsOfTheDesktop,
                            oneUnderTheSameIdentifierTakesItsPlace, aDesktopThatShowsNoneHasNotGrantedThem,
                            aPressIsToldOfTheOneThatIsPressed);

} // namespace tavrine::test
