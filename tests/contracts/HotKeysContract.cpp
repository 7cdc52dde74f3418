// The fake, and the X server of a private desktop.
#include "HotKeysContract.h"

#include "adapters/fake/FakeHotKeys.h"
#include "adapters/x11/X11HotKeys.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <algorithm>

namespace tavrine {
namespace {

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

INSTANTIATE_TEST_SUITE_P(Fake, HotKeysContract, ::testing::Values(&make<FakeUnderTest>));
INSTANTIATE_TEST_SUITE_P(X11, HotKeysContract, ::testing::Values(&make<X11UnderTest>));

} // namespace
} // namespace tavrine
