// What every keyboard of hot keys promises, run on the fake and on the X server of a private desktop.
#include "adapters/fake/FakeHotKeys.h"
#include "adapters/x11/X11HotKeys.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <algorithm>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

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
};

class FakeUnderTest final : public HotKeysUnderTest {
public:
    HotKeys &hotKeys() override { return m_hotKeys; }
    void press(int keyCode, quint32 modifiers) override { m_hotKeys.press(keyCode, modifiers); }
    bool takeElsewhere(int keyCode, quint32 modifiers) override {
        m_hotKeys.takeElsewhere(keyCode, modifiers);
        return true;
    }
    void freeElsewhere(int keyCode, quint32 modifiers) override { m_hotKeys.freeElsewhere(keyCode, modifiers); }

private:
    FakeHotKeys m_hotKeys;
};

class X11UnderTest final : public HotKeysUnderTest {
public:
    HotKeys &hotKeys() override { return m_hotKeys; }
    void press(int keyCode, quint32 modifiers) override {
        std::vector<int> keys;
        if (modifiers & hotKeyModifier::command)
            keys.push_back(testing::key::leftSuper);
        if (modifiers & hotKeyModifier::shift)
            keys.push_back(testing::key::leftShift);
        if (modifiers & hotKeyModifier::control)
            keys.push_back(testing::key::leftControl);
        keys.push_back(*xKeycode(keyCode));
        for (const int key : keys)
            m_keyboard.down(key);
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            m_keyboard.up(*key);
        // A press of a hot key holds the keyboard until its handler has been called.
        EXPECT_TRUE(testing::waitUntil(
            [&] { return std::none_of(keys.begin(), keys.end(), [&](int key) { return m_keyboard.isDown(key); }); }));
    }
    bool takeElsewhere(int keyCode, quint32) override { return m_keyboard.grabKey(*xKeycode(keyCode), 0x41); }
    void freeElsewhere(int keyCode, quint32) override { m_keyboard.ungrabKey(*xKeycode(keyCode), 0x41); }

private:
    X11HotKeys m_hotKeys;
    testing::TestKeyboard m_keyboard;
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

    std::unique_ptr<HotKeysUnderTest> subject = GetParam()();
    HotKeys &hotKeys = subject->hotKeys();
    std::vector<quint32> pressed;
};

INSTANTIATE_TEST_SUITE_P(Fake, HotKeysContract, ::testing::Values(&make<FakeUnderTest>));
INSTANTIATE_TEST_SUITE_P(X11, HotKeysContract, ::testing::Values(&make<X11UnderTest>));

TEST_P(HotKeysContract, aPressIsToldWithItsNumber) {
    ASSERT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    ASSERT_TRUE(hotKeys.registerHotKey(keyB, commandShift, {1, 8}));
    subject->press(keyB, commandShift);
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(8, 7));
}

TEST_P(HotKeysContract, aPressCountsOnlyWithExactlyItsModifiers) {
    ASSERT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    subject->press(keyV, hotKeyModifier::shift);
    subject->press(keyV, hotKeyModifier::command);
    subject->press(keyV, commandShift | hotKeyModifier::control);
    subject->press(keyV, 0);
    EXPECT_THAT(pressed, IsEmpty());
}

TEST_P(HotKeysContract, whatAnotherProgramHoldsCannotBeRegistered) {
    ASSERT_TRUE(subject->takeElsewhere(keyV, commandShift));
    EXPECT_FALSE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    EXPECT_TRUE(hotKeys.registerHotKey(keyB, commandShift, {1, 8}));
}

TEST_P(HotKeysContract, whatAnotherProgramLetGoCanBeRegistered) {
    ASSERT_TRUE(subject->takeElsewhere(keyV, commandShift));
    EXPECT_FALSE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    subject->freeElsewhere(keyV, commandShift);
    ASSERT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_P(HotKeysContract, aCombinationIsRegisteredOnce) {
    ASSERT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
    EXPECT_FALSE(hotKeys.registerHotKey(keyV, commandShift, {1, 8}));
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_P(HotKeysContract, whatWasUnregisteredIsNotTold) {
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref);
    hotKeys.unregisterHotKey(*ref);
    subject->press(keyV, commandShift);
    EXPECT_THAT(pressed, IsEmpty());
    EXPECT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 8}));
}

TEST_P(HotKeysContract, aPressWithoutAHandlerIsLost) {
    ASSERT_TRUE(hotKeys.registerHotKey(keyV, commandShift, {1, 7}));
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
        EXPECT_FALSE(hotKeys.registerHotKey(key, commandShift, {1, 7})) << key;
}

TEST_P(HotKeysContract, theHandlerMayRegisterAnew) {
    std::optional<HotKeyRef> ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
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

} // namespace
} // namespace tavrine
