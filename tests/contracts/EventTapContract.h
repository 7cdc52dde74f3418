#pragma once

#include "ports/EventTap.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every source of taps keeps. `Machine` has a keyboard and a program that has it:
///   EventTaps &taps(); bool keyArrives() types a key and says whether the program gets it; void hold() and void
///   letGo() are another program that takes the keyboard for itself; bool comes(condition) lets two seconds or more
///   pass until the condition holds; answersAtOnce is false where the desktop takes its time to give the keyboard.
template <class Machine>
class EventTapContract : public ::testing::Test {
public:
    using State = EventTap::State;
    void create() {
        EXPECT_TRUE(machine.taps().areThere());
        tap = machine.taps().create([this] { ++changes; });
        ASSERT_TRUE(tap);
    }
    bool becomes(State state) {
        return machine.comes([&] { return tap->state() == state && changes > 0; });
    }
    void createDropping() {
        create();
        if (!Machine::answersAtOnce) {
            EXPECT_EQ(tap->state(), State::waiting);
            EXPECT_TRUE(becomes(State::dropping));
            changes = 0;
        }
        EXPECT_EQ(tap->state(), State::dropping);
    }
    Machine machine;
    std::unique_ptr<EventTap> tap;
    int changes = 0;
};

TYPED_TEST_SUITE_P(EventTapContract);

TYPED_TEST_P(EventTapContract, dropsKeysUntilItIsDestroyed) {
    ASSERT_TRUE(this->machine.keyArrives());
    this->createDropping();
    EXPECT_FALSE(this->machine.keyArrives());
    EXPECT_FALSE(this->machine.keyArrives());
    this->tap.reset();
    EXPECT_TRUE(this->machine.keyArrives());
    EXPECT_EQ(this->changes, 0);
}

TYPED_TEST_P(EventTapContract, oneCanFollowAnother) {
    this->createDropping();
    this->tap.reset();
    this->createDropping();
    EXPECT_FALSE(this->machine.keyArrives());
}

TYPED_TEST_P(EventTapContract, waitsWhileAnotherProgramHoldsTheKeyboard) {
    this->machine.hold();
    this->create();
    EXPECT_EQ(this->tap->state(), EventTap::State::waiting);
    this->machine.letGo();
    EXPECT_TRUE(this->becomes(EventTap::State::dropping));
    EXPECT_FALSE(this->machine.keyArrives());
}

TYPED_TEST_P(EventTapContract, endsWhenTheKeyboardIsHeldForTooLongAndTakesItNoMore) {
    this->machine.hold();
    this->create();
    EXPECT_TRUE(this->becomes(EventTap::State::ended));
    EXPECT_EQ(this->changes, 1);
    this->machine.letGo();
    EXPECT_TRUE(this->machine.keyArrives());
}

TYPED_TEST_P(EventTapContract, oneThatIsDestroyedWhileItWaitsTakesNothing) {
    this->machine.hold();
    this->create();
    this->tap.reset();
    this->machine.letGo();
    EXPECT_TRUE(this->machine.keyArrives());
    EXPECT_EQ(this->changes, 0);
}

REGISTER_TYPED_TEST_SUITE_P(EventTapContract, dropsKeysUntilItIsDestroyed, oneCanFollowAnother,
                            waitsWhileAnotherProgramHoldsTheKeyboard,
                            endsWhenTheKeyboardIsHeldForTooLongAndTakesItNoMore,
                            oneThatIsDestroyedWhileItWaitsTakesNothing);

} // namespace tavrine::test
