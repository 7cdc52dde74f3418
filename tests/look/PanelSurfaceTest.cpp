#include "look/PanelSurface.h"

#include "adapters/fake/VirtualTime.h"
#include "base/VirtualKeys.h"
#include "look/Look.h"
#include "look/PanelKeys.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

int keyOf(Qt::Key key, Qt::KeyboardModifiers modifiers = {}, quint32 keycode = 0) {
    return virtualKeyOf(QKeyEvent(QEvent::KeyPress, key, modifiers, keycode, 0, 0));
}

TEST(PanelKeysTest, namedKeysAreKnownWhereverTheyStand) {
    constexpr quint32 capsLock = 66;
    EXPECT_EQ(keyOf(Qt::Key_Escape, {}, capsLock), virtualKey::escape);
    EXPECT_EQ(keyOf(Qt::Key_Backspace, {}, capsLock), virtualKey::backspace);
    EXPECT_EQ(keyOf(Qt::Key_Return), virtualKey::enter);
    EXPECT_EQ(keyOf(Qt::Key_Enter, Qt::KeypadModifier), virtualKey::keypadEnter);
    EXPECT_EQ(keyOf(Qt::Key_Left), virtualKey::left);
    EXPECT_EQ(keyOf(Qt::Key_Right), virtualKey::right);
    EXPECT_EQ(keyOf(Qt::Key_Down), virtualKey::down);
    EXPECT_EQ(keyOf(Qt::Key_Up), virtualKey::up);
}

TEST(PanelKeysTest, lettersAreKnownByTheirPlace) {
    const auto place = static_cast<quint32>(*xKeycode(virtualKey::p));
    EXPECT_EQ(keyOf(Qt::Key_L, Qt::ControlModifier, place), virtualKey::p) << "as on a Dvorak keyboard";
    EXPECT_NE(keyOf(Qt::Key_P, Qt::ControlModifier, place + 1), virtualKey::p);
    EXPECT_EQ(keyOf(Qt::Key_P, Qt::ControlModifier), virtualKey::p) << "an event of no keyboard";
}

TEST(PanelKeysTest, theKeypadsArrowsAreOtherKeys) {
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Down, Qt::Key_Up})
        EXPECT_EQ(keyOf(key, Qt::KeypadModifier), -1);
}

class PanelSurfaceTest : public testing::Test {
protected:
    void show() {
        window.resize(200, 100);
        surface->setGeometry(window.rect());
        window.show();
    }

    VirtualTime time;
    Look look{time};
    QWidget window;
    PanelSurface *surface = new PanelSurface(18, &window);
};

TEST_F(PanelSurfaceTest, masksTheCornersOfItsWindowWhereNothingComposites) {
    show();
    EXPECT_FALSE(window.mask().contains(QPoint(0, 0)));
    EXPECT_FALSE(window.mask().contains(QPoint(199, 99)));
    EXPECT_TRUE(window.mask().contains(QPoint(18, 0)));
    EXPECT_TRUE(window.mask().contains(QPoint(100, 50)));
}

TEST_F(PanelSurfaceTest, leavesTheWindowWholeUnderACompositor) {
    look.setCompositing(true);
    show();
    EXPECT_TRUE(window.mask().isEmpty());
}

TEST_F(PanelSurfaceTest, followsACompositorThatComesAndGoes) {
    show();
    look.setCompositing(true);
    EXPECT_TRUE(window.mask().isEmpty());
    look.setCompositing(false);
    EXPECT_FALSE(window.mask().isEmpty());
}

TEST_F(PanelSurfaceTest, leavesAWindowAloneOfWhichItIsAPart) {
    window.resize(300, 300);
    surface->setGeometry(0, 0, 200, 100);
    window.show();
    EXPECT_TRUE(window.mask().isEmpty());
}

} // namespace
} // namespace tavrine::look
