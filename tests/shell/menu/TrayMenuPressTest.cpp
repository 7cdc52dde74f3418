// The menu under keys and under presses that are held.

#include "shell/menu/TrayMenuTest.h"

#include <QTest>

namespace tavrine {
namespace {

class TrayMenuPressTest : public TrayMenuTest {};

TEST_F(TrayMenuPressTest, afterEscapeAPressOpensItAtOnce) {
    press();
    show();
    QTest::keyClick(&view(), Qt::Key_Escape);
    press();
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aKeyEquivalentFiresWithControlAndWithSuper) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    for (const auto modifier : {Qt::ControlModifier, Qt::MetaModifier}) {
        time.advance(1s);
        press();
        show();
        QTest::keyClick(&view(), Qt::Key_Q, modifier);
        EXPECT_FALSE(panel().isOpen());
    }
    EXPECT_EQ(quits, 2);
    time.advance(1s);
    press();
    show();
    QTest::keyClick(&view(), Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(&view(), Qt::Key_Q);
    EXPECT_EQ(quits, 2);
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aDisabledEntryFiresInNoWay) {
    set(Feature::clipboardHistory, false);
    time.advance(100ms);
    bool isFired = false;
    delegate->statusMenu().entry(StatusMenuItem::clipboard).action = [&] { isFired = true; };
    press();
    show();
    EXPECT_FALSE(control("Clipboard Search").isEnabled());
    control("Clipboard Search").click();
    QTest::keyClick(&view(), Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(isFired);
}

TEST_F(TrayMenuPressTest, aDigitIsAKeyEquivalentWhateverShiftMakesOfIt) {
    constexpr quint32 keyOfSeven = 16;
    defaults.set(text("HotkeyCharacter"), text("7"));
    int opened = 0;
    delegate->statusMenu().entry(StatusMenuItem::clipboard).action = [&] { ++opened; };
    press();
    show();
    QKeyEvent unshifted(QEvent::KeyPress, Qt::Key_7, Qt::ControlModifier, keyOfSeven, 0, 0);
    QCoreApplication::sendEvent(&view(), &unshifted);
    QKeyEvent neighbour(QEvent::KeyPress, Qt::Key_AsciiCircum, Qt::ControlModifier | Qt::ShiftModifier, keyOfSeven - 1,
                        0, 0);
    QCoreApplication::sendEvent(&view(), &neighbour);
    EXPECT_EQ(opened, 0);
    QKeyEvent shifted(QEvent::KeyPress, Qt::Key_Ampersand, Qt::ControlModifier | Qt::ShiftModifier, keyOfSeven, 0, 0);
    QCoreApplication::sendEvent(&view(), &shifted);
    EXPECT_EQ(opened, 1);
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, theArrowsGoThroughTheGridAndTheEntriesAndRoundTheEnds) {
    press();
    show();
    view().setFocus();
    QTest::keyClick(&view(), Qt::Key_Down);
    QWidget *first = view().focusWidget();
    ASSERT_TRUE(first);
    EXPECT_NE(first, &view());
    QTest::keyClick(first, Qt::Key_Up);
    EXPECT_EQ(view().focusWidget(), &control("Quit")) << "past the first comes the last";
    QTest::keyClick(&control("Quit"), Qt::Key_Up);
    EXPECT_EQ(view().focusWidget(), &control("Check for Updates…"));
    control("Screenshot").setFocus();
    QTest::keyClick(&control("Screenshot"), Qt::Key_Right);
    EXPECT_EQ(view().focusWidget(), &control("Record Screen"));
    QTest::keyClick(&control("Record Screen"), Qt::Key_Left);
    EXPECT_EQ(view().focusWidget(), &control("Screenshot"));
}

TEST_F(TrayMenuPressTest, aPressThatIsHeldFromTheItemChoosesWhatItIsLetGoOver) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    press();
    show();
    look::Control &quit = control("Quit");
    held(QEvent::MouseMove, quit);
    EXPECT_TRUE(quit.hasFocus() || view().focusWidget() == &quit) << "it shows what it would choose";
    EXPECT_TRUE(panel().isOpen());
    held(QEvent::MouseButtonRelease, quit);
    EXPECT_FALSE(panel().isOpen());
    EXPECT_EQ(quits, 1);
    time.advance(1s);
    press();
    show();
    held(QEvent::MouseMove, control("Clean Mode"));
    held(QEvent::MouseButtonRelease, control("Clean Mode"));
    EXPECT_TRUE(delegate->trayMenu().quickActions().isOn(QuickAction::cleanMode));
}

TEST_F(TrayMenuPressTest, aPressThatIsLetGoOnTheItemLeavesItOpen) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    press();
    show();
    // A small screen may have the menu under the pointer that just pressed.
    const QPoint there = control("Quit").mapToGlobal(control("Quit").rect().center());
    press();
    time.advance(1s);
    press(there);
    show();
    held(QEvent::MouseButtonRelease, control("Quit"));
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aPressThatBeganInTheMenuIsNoHeldOne) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    press();
    show();
    held(QEvent::MouseButtonPress, control("Emoji Picker"));
    held(QEvent::MouseMove, control("Quit"));
    held(QEvent::MouseButtonRelease, control("Quit"));
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aDisabledEntryIsNotChosenByAHeldPress) {
    delegate->statusMenu().entry(StatusMenuItem::quit).isEnabled = false;
    press();
    show();
    held(QEvent::MouseMove, control("Quit"));
    held(QEvent::MouseButtonRelease, control("Quit"));
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, theMiddleButtonOpensTheClipboardOrTheMenuWhereThereIsNone) {
    record();
    desktop.statusItem().pressWithTheMiddleButton({1300, 12});
    EXPECT_THAT(takeCalls(), ElementsAre("clipboardHistory opened"));
    EXPECT_FALSE(delegate->trayMenu().panel().isOpen());
    set(Feature::clipboardHistory, false);
    quietly([this] { time.advance(1s); });
    desktop.statusItem().pressWithTheMiddleButton({1300, 12});
    EXPECT_TRUE(delegate->trayMenu().panel().isOpen());
}

TEST_F(TrayMenuPressTest, aPressThatTheTrayKeepsForItselfChoosesWhatItIsLetGoOver) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    FakeScreens &screens = desktop.screens();
    screens.setPressedMouseButtons(1);
    press();
    show();
    const look::Control &quit = control("Quit");
    const QPoint inView = quit.mapTo(&view(), quit.rect().center());
    screens.setMouseLocation({panel().frame().left() + inView.x(), maxY(panel().frame()) - inView.y()});
    time.advance(100ms);
    EXPECT_EQ(view().focusWidget(), &quit) << "it shows what it would choose";
    EXPECT_EQ(quits, 0);
    screens.setPressedMouseButtons(0);
    time.advance(100ms);
    EXPECT_EQ(quits, 1);
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aPressThatTheTrayKeepsAndThatIsLetGoOnTheItemOrBesideTheMenuLeavesItOpen) {
    FakeScreens &screens = desktop.screens();
    for (const QPointF place : {QPointF(1300, 888), QPointF(10, 10)}) {
        screens.setMouseLocation({1300, 888});
        screens.setPressedMouseButtons(1);
        press();
        show();
        screens.setMouseLocation(place);
        time.advance(100ms);
        screens.setPressedMouseButtons(0);
        time.advance(100ms);
        EXPECT_TRUE(panel().isOpen());
        panel().cancelTracking();
        time.advance(1s);
    }
}

TEST_F(TrayMenuPressTest, aHeldPressIsAskedForOnlyWhileItIsHeld) {
    const auto before = time.timerCount();
    press();
    EXPECT_EQ(time.timerCount(), before) << "nothing is held";
    press();
    desktop.screens().setPressedMouseButtons(1);
    time.advance(1s);
    press();
    EXPECT_EQ(time.timerCount(), before + 1);
    desktop.screens().setPressedMouseButtons(0);
    time.advance(100ms);
    EXPECT_EQ(time.timerCount(), before);
}

TEST_F(TrayMenuPressTest, aPressThatBothTheWindowAndTheTrayTellOfChoosesOnce) {
    int opened = 0;
    desktop.screens().setPressedMouseButtons(1);
    press();
    show();
    QObject::connect(&control("Clean Mode"), &QAbstractButton::clicked, &view(), [&] { ++opened; });
    const look::Control &tile = control("Clean Mode");
    const QPoint inView = tile.mapTo(&view(), tile.rect().center());
    desktop.screens().setMouseLocation({panel().frame().left() + inView.x(), maxY(panel().frame()) - inView.y()});
    held(QEvent::MouseMove, tile);
    time.advance(100ms);
    desktop.screens().setPressedMouseButtons(0);
    held(QEvent::MouseButtonRelease, tile);
    time.advance(100ms);
    EXPECT_EQ(opened, 1);
}

TEST_F(TrayMenuPressTest, escapeClosesIt) {
    press();
    show();
    QTest::keyClick(&view(), Qt::Key_Escape);
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuPressTest, aTileIsPressedByTheKeyboard) {
    press();
    show();
    QTest::keyClick(&control("Open Settings"), Qt::Key_Return);
    EXPECT_FALSE(panel().isOpen());
    time.advance(180ms);
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
}

} // namespace
} // namespace tavrine
