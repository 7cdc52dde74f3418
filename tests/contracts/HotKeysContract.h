#pragma once

// What every keyboard of hot keys promises. Run on the fake, on the X server, on Plasma's service and on a portal.

#include "ports/HotKeys.h"

#include <memory>
#include <vector>

#include <gmock/gmock.h>

namespace tavrine {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int keyV = 9;
constexpr int keyB = 11;
constexpr quint32 commandShift = hotKeyModifier::command | hotKeyModifier::shift;

class HotKeysUnderTest {
public:
    virtual ~HotKeysUnderTest() = default;
    virtual HotKeys &hotKeys() = 0;
    /// The person presses the key with the modifiers, and all that follows is done.
    virtual void press(int keyCode, quint32 modifiers) = 0;
    virtual bool takeElsewhere(int keyCode, quint32 modifiers) = 0;
    virtual void freeElsewhere(int keyCode, quint32 modifiers) = 0;
    /// What became of a registration that was given, once that is known.
    virtual bool holds(HotKeyRef /*ref*/) { return true; }
};

template <class T>
std::unique_ptr<HotKeysUnderTest> make() {
    return std::make_unique<T>();
}

class HotKeysContract : public ::testing::TestWithParam<std::unique_ptr<HotKeysUnderTest> (*)()> {
protected:
    HotKeysContract() {
        hotKeys.installHandler([this](HotKeyId id) {
            pressed.push_back(id.id);
            return KeyboardNext::asBefore;
        });
    }

    /// Whether the combination is this program's from now on; one that is not is given up.
    std::optional<HotKeyRef> registered(int keyCode, quint32 modifiers, HotKeyId id) {
        const auto ref = hotKeys.registerHotKey(keyCode, modifiers, id);
        if (!ref || subject->holds(*ref))
            return ref;
        hotKeys.unregisterHotKey(*ref);
        return std::nullopt;
    }

    std::unique_ptr<HotKeysUnderTest> subject = GetParam()();
    HotKeys &hotKeys = subject->hotKeys();
    std::vector<quint32> pressed;
};

TEST_P(HotKeysContract, aPressIsToldWithItsNumber) {
    ASSERT_TRUE(registered(keyV, commandShift, {1, 7}));
    ASSERT_TRUE(registered(keyB, commandShift, {1, 8}));
    subject->press(keyB, commandShift);
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(8, 7));
}

TEST_P(HotKeysContract, aPressCountsOnlyWithExactlyItsModifiers) {
    ASSERT_TRUE(registered(keyV, commandShift, {1, 7}));
    subject->press(keyV, hotKeyModifier::shift);
    subject->press(keyV, hotKeyModifier::command);
    subject->press(keyV, commandShift | hotKeyModifier::control);
    subject->press(keyV, 0);
    EXPECT_THAT(pressed, IsEmpty());
}

TEST_P(HotKeysContract, whatAnotherProgramHoldsCannotBeRegistered) {
    ASSERT_TRUE(subject->takeElsewhere(keyV, commandShift));
    EXPECT_FALSE(registered(keyV, commandShift, {1, 7}));
    EXPECT_TRUE(registered(keyB, commandShift, {1, 8}));
}

TEST_P(HotKeysContract, whatAnotherProgramLetGoCanBeRegistered) {
    ASSERT_TRUE(subject->takeElsewhere(keyV, commandShift));
    EXPECT_FALSE(registered(keyV, commandShift, {1, 7}));
    subject->freeElsewhere(keyV, commandShift);
    ASSERT_TRUE(registered(keyV, commandShift, {1, 7}));
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_P(HotKeysContract, aCombinationIsRegisteredOnce) {
    ASSERT_TRUE(registered(keyV, commandShift, {1, 7}));
    EXPECT_FALSE(registered(keyV, commandShift, {1, 8}));
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_P(HotKeysContract, whatWasUnregisteredIsNotTold) {
    const auto ref = registered(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref);
    hotKeys.unregisterHotKey(*ref);
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, IsEmpty());
    EXPECT_TRUE(registered(keyV, commandShift, {1, 8}));
}

TEST_P(HotKeysContract, aPressWithoutAHandlerIsLost) {
    ASSERT_TRUE(registered(keyV, commandShift, {1, 7}));
    hotKeys.removeHandler();
    subject->press(keyV, commandShift);
    hotKeys.installHandler([this](HotKeyId id) {
        pressed.push_back(id.id);
        return KeyboardNext::asBefore;
    });
    EXPECT_THAT(pressed, IsEmpty());
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_P(HotKeysContract, aKeyThatNoKeyboardHasCannotBeRegistered) {
    for (const int key : {-1, 52, 127, 4711})
        EXPECT_FALSE(registered(key, commandShift, {1, 7})) << key;
}

TEST_P(HotKeysContract, theHandlerMayRegisterAnew) {
    std::optional<HotKeyRef> ref = registered(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref);
    hotKeys.installHandler([&](HotKeyId id) {
        pressed.push_back(id.id);
        hotKeys.unregisterHotKey(*ref);
        ref = hotKeys.registerHotKey(keyV, commandShift, {1, id.id + 1});
        return KeyboardNext::asBefore;
    });
    subject->press(keyV, commandShift);
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7, 8));
}

} // namespace tavrine
