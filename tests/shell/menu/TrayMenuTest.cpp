#include "shell/menu/TrayMenu.h"

#include "shell/ShellTest.h"
#include "shell/menu/QuickActionsGridView.h"
#include "shell/menu/StatusMenuView.h"
#include "utilities/awake/KeepAwakeControlView.h"
#include "utilities/lofi/LofiMiniPlayer.h"

#include <QApplication>
#include <QTest>
#include <QWindow>

namespace tavrine {
namespace {

/// The whole menu within a whole program, on a desktop of fakes: one screen of 1440 by 900 with a bar of 24 on top.
class TrayMenuTest : public ShellTest {
protected:
    void SetUp() override { launch(); }

    StatusMenuPanel &panel() { return delegate->trayMenu().panel(); }
    void press(QPoint place = {1300, 12}) { desktop.statusItem().press(place); }
    /// The menu's content, which the fake panel does not show.
    StatusMenuView &view() {
        for (QWidget *widget : QApplication::allWidgets()) {
            if (auto *found = qobject_cast<StatusMenuView *>(widget))
                return *found;
        }
        ADD_FAILURE() << "no menu";
        std::abort();
    }
    look::Control &control(const char *name) {
        for (auto *each : view().findChildren<look::Control *>()) {
            const bool isIt =
                each->text() == QString::fromUtf8(name) || each->accessibleName() == QString::fromUtf8(name);
            if (isIt && !each->isHidden())
                return *each;
        }
        ADD_FAILURE() << name;
        std::abort();
    }
    bool shows(const char *name) {
        return std::ranges::any_of(view().findChildren<look::Control *>(), [name](const look::Control *each) {
            return each->text() == QString::fromUtf8(name) && !each->isHidden();
        });
    }
    void show() {
        view().resize(view().sizeHint());
        view().show();
    }
    /// As the window gets it from the desktop, over the middle of a control.
    void held(QEvent::Type type, const look::Control &over) {
        const QPoint place = over.mapTo(view().window(), over.rect().center());
        const bool isRelease = type == QEvent::MouseButtonRelease;
        QMouseEvent event(type, place, over.mapToGlobal(over.rect().center()),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          isRelease ? Qt::NoButton : Qt::LeftButton, {});
        QCoreApplication::sendEvent(view().window()->windowHandle(), &event);
    }
};

TEST_F(TrayMenuTest, nothingOfItExistsUntilItIsPressed) {
    EXPECT_EQ(desktop.panelWindows().made(), 0);
    press();
    EXPECT_EQ(desktop.panelWindows().made(), 1);
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuTest, theTileOfTheCleanerBlocksTheKeyboardAndAClickOnItEndsThat) {
    press();
    show();
    const QuickActionsModel &tiles = delegate->trayMenu().quickActions();
    control("Clean Mode").click();
    EXPECT_FALSE(desktop.eventTaps().keyArrives());
    EXPECT_TRUE(tiles.isOn(QuickAction::cleanMode));
    EXPECT_EQ(tiles.subtitle(QuickAction::cleanMode), text("Input Blocked"));
    control("Clean Mode").click();
    EXPECT_TRUE(desktop.eventTaps().keyArrives());
    EXPECT_FALSE(tiles.isOn(QuickAction::cleanMode));
    EXPECT_EQ(tiles.subtitle(QuickAction::cleanMode), text("Active"));
}

TEST_F(TrayMenuTest, afterCancelInTheCleanersPromptItsTileShowsTheOffState) {
    desktop.eventTaps().setPermitted(false);
    press();
    show();
    control("Clean Mode").click();
    time.advance(1s);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_FALSE(delegate->trayMenu().quickActions().isOn(QuickAction::cleanMode));
}

TEST_F(TrayMenuTest, aSecondPressClosesIt) {
    press();
    press();
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuTest, thePressThatClosedItAsAClickElsewhereDoesNotOpenItAgain) {
    press();
    desktop.screens().setMouseLocation({1300, 888});
    desktop.eventMonitors().mouseDown(eventMask::leftMouseDown, false);
    time.advance(100ms);
    EXPECT_FALSE(panel().isOpen());
    press();
    EXPECT_FALSE(panel().isOpen());
    time.advance(400ms);
    press();
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuTest, afterEscapeAPressOpensItAtOnce) {
    press();
    show();
    QTest::keyClick(&view(), Qt::Key_Escape);
    press();
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuTest, aClickElsewhereClosesItAndOneInItDoesNot) {
    press();
    desktop.screens().setMouseLocation(panel().frame().center());
    desktop.eventMonitors().mouseDown(eventMask::leftMouseDown, true);
    time.advance(10ms);
    EXPECT_TRUE(panel().isOpen());
    for (const bool isOurs : {false, true}) {
        desktop.screens().setMouseLocation({10, 10});
        desktop.eventMonitors().mouseDown(eventMask::rightMouseDown, isOurs);
        time.advance(10ms);
        EXPECT_FALSE(panel().isOpen());
        time.advance(1s);
        press();
    }
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuTest, closedItWatchesNothing) {
    const int before = desktop.eventMonitors().globalCount() + desktop.eventMonitors().localCount();
    press();
    press();
    EXPECT_EQ(desktop.eventMonitors().globalCount() + desktop.eventMonitors().localCount(), before);
}

TEST_F(TrayMenuTest, itHangsFromATrayAtTheTopAndNeverLeavesTheScreen) {
    press({1435, 12});
    const QRectF frame = panel().frame();
    EXPECT_EQ(frame.right(), 1440);
    EXPECT_LE(maxY(frame), 900 - 24);
    EXPECT_GE(maxY(frame), 900 - 40);
}

TEST_F(TrayMenuTest, itStandsOnATrayAtTheBottom) {
    press({5, 890});
    const QRectF frame = panel().frame();
    EXPECT_EQ(frame.left(), 0);
    EXPECT_NEAR(minY(frame), 10 + 14, 1);
}

TEST_F(TrayMenuTest, theQuickActionsStandAboveThePlainEntriesInTheirOrder) {
    press();
    show();
    EXPECT_LT(control("Screenshot").mapTo(&view(), QPoint()).y(), control("Clipboard Search").y());
    const auto *music = view().findChild<LofiMiniPlayer *>();
    const auto *card = view().findChild<KeepAwakeControlView *>();
    ASSERT_TRUE(music && card);
    EXPECT_EQ(music->mapTo(&view(), QPoint()), QPoint(12, 12));
    EXPECT_EQ(card->mapTo(&view(), QPoint()).y(), 12 + music->height() + 8);
    EXPECT_EQ(control("Screenshot").mapTo(&view(), QPoint()).y(),
              card->mapTo(&view(), QPoint()).y() + card->height() + 8);
    EXPECT_LT(control("Clipboard Search").y(), control("Emoji Picker").y());
    EXPECT_LT(control("Emoji Picker").y(), control("Check for Updates…").y());
    EXPECT_LT(control("Check for Updates…").y(), control("Quit").y());
    EXPECT_EQ(view().sizeHint().width(), 290);
}

TEST_F(TrayMenuTest, anEntryFiresAfterTheMenuIsGone) {
    press();
    show();
    bool wasOpen = true;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { wasOpen = panel().isOpen(); };
    control("Quit").click();
    EXPECT_FALSE(wasOpen);
}

TEST_F(TrayMenuTest, aKeyEquivalentFiresWithControlAndWithSuper) {
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

TEST_F(TrayMenuTest, aDisabledEntryFiresInNoWay) {
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

TEST_F(TrayMenuTest, theArrowsGoThroughTheGridAndTheEntriesAndRoundTheEnds) {
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

TEST_F(TrayMenuTest, aPressThatIsHeldFromTheItemChoosesWhatItIsLetGoOver) {
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

TEST_F(TrayMenuTest, aPressThatIsLetGoOnTheItemLeavesItOpen) {
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

TEST_F(TrayMenuTest, aPressThatBeganInTheMenuIsNoHeldOne) {
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

TEST_F(TrayMenuTest, aDisabledEntryIsNotChosenByAHeldPress) {
    delegate->statusMenu().entry(StatusMenuItem::quit).isEnabled = false;
    press();
    show();
    held(QEvent::MouseMove, control("Quit"));
    held(QEvent::MouseButtonRelease, control("Quit"));
    EXPECT_TRUE(panel().isOpen());
}

TEST_F(TrayMenuTest, theMiddleButtonOpensTheClipboardOrTheMenuWhereThereIsNone) {
    record();
    desktop.statusItem().pressWithTheMiddleButton({1300, 12});
    EXPECT_THAT(takeCalls(), ElementsAre("clipboardHistory opened"));
    EXPECT_FALSE(delegate->trayMenu().panel().isOpen());
    set(Feature::clipboardHistory, false);
    quietly([this] { time.advance(1s); });
    desktop.statusItem().pressWithTheMiddleButton({1300, 12});
    EXPECT_TRUE(delegate->trayMenu().panel().isOpen());
}

TEST_F(TrayMenuTest, escapeClosesIt) {
    press();
    show();
    QTest::keyClick(&view(), Qt::Key_Escape);
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuTest, theDesktopMayCloseIt) {
    press();
    desktop.panelWindows().keyWindow()->closeFromOutside();
    EXPECT_FALSE(panel().isOpen());
}

TEST_F(TrayMenuTest, aTileIsPressedByTheKeyboard) {
    press();
    show();
    QTest::keyClick(&control("Open Settings"), Qt::Key_Return);
    EXPECT_FALSE(panel().isOpen());
    time.advance(180ms);
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
}

TEST_F(TrayMenuTest, aFlagThatGoesTakesItsTileAndItsHeightWithIt) {
    press();
    show();
    const double before = panel().height().height();
    ASSERT_TRUE(shows("Tavrine Editor"));
    for (const Feature feature : {Feature::tavrineEditor, Feature::snippingTool, Feature::cleaningMode,
                                  Feature::screenRecorder, Feature::keepAwake, Feature::loFi})
        set(feature, false);
    EXPECT_FALSE(shows("Tavrine Editor"));
    time.advance(50ms);
    EXPECT_LT(panel().height().height(), before);
    EXPECT_EQ(panel().frame().height(), view().sizeHint().height());
}

TEST_F(TrayMenuTest, theMenuGrowsWithTheModesOfKeepAwakeAndOpensWithoutThem) {
    press();
    show();
    const double before = panel().height().height();
    quietly([this] { control("Advanced Awake modes").click(); });
    QCoreApplication::processEvents();
    time.advance(20ms + 180ms);
    const double halfway = panel().height().height();
    EXPECT_GT(halfway, before);
    time.advance(300ms);
    const double whole = panel().height().height();
    EXPECT_GT(whole, halfway);
    EXPECT_EQ(whole, view().measuredGrid());
    quietly([this] { control("Schedule").click(); });
    QCoreApplication::processEvents();
    quietly([this] { time.advance(1s); });
    EXPECT_GT(panel().height().height(), whole);
    press();
    quietly([this] { time.advance(1s); });
    press();
    EXPECT_FALSE(delegate->tools().keepAwake().manager().showAdvancedPanel());
}

TEST_F(TrayMenuTest, theMenuIsBuiltOnceAndShowsWhatChanged) {
    press();
    StatusMenuView *first = &view();
    press();
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    time.advance(1s);
    press();
    EXPECT_EQ(&view(), first);
    EXPECT_TRUE(shows("Classic Clipboard"));
}

TEST_F(TrayMenuTest, theEditorsTilePostsItsNotice) {
    bool isPosted = false;
    const auto token =
        center.addObserver(text("openTavrineEditorRequested"), [&](const Notification &) { isPosted = true; });
    press();
    show();
    quietly([this] {
        control("Tavrine Editor").click();
        time.advance(150ms);
    });
    EXPECT_TRUE(isPosted);
}

TEST_F(TrayMenuTest, onAScreenWithoutRoomForItTheGridScrollsAndEveryEntryIsInSight) {
    desktop.screens().setScreens({{.number = 1,
                                   .localizedName = text("small"),
                                   .frame = QRectF(0, 0, 600, 320),
                                   .visibleFrame = QRectF(0, 0, 600, 296)}});
    press({300, 12});
    EXPECT_EQ(panel().frame().height(), 296);
    EXPECT_EQ(minY(panel().frame()), 0);
    view().resize(view().width(), 296);
    view().show();
    EXPECT_LE(control("Quit").geometry().bottom(), 296);
    EXPECT_GT(control("Clipboard Search").y(), 0);
}

// For trays that draw menus themselves.

TEST_F(TrayMenuTest, suchATrayGetsTheTilesAndUnderThemTheEntries) {
    QStringList labels;
    for (const StatusMenuLine &line : desktop.statusItem().menuLines())
        labels.append(line.isSeparator() ? text("-") : line.label);
    EXPECT_EQ(labels.join(u'|'),
              text("Screenshot|Record Screen|QR Scan|Clean Mode|Open Settings|Tavrine Editor|-|Clipboard Search|"
                   "Emoji Picker|Colour Picker|-|Check for Updates…|-|Quit"));
    EXPECT_EQ(desktop.panelWindows().made(), 0) << "it costs no window";
}

TEST_F(TrayMenuTest, aChosenLineActsInALaterTurnAndOneThatIsGoneOrOffDoesNot) {
    int quits = 0;
    delegate->statusMenu().entry(StatusMenuItem::quit).action = [&] { ++quits; };
    const auto lines = desktop.statusItem().menuLines();
    desktop.statusItem().choose(lines.back().id);
    EXPECT_EQ(quits, 0);
    time.advance(0s);
    EXPECT_EQ(quits, 1);
    delegate->statusMenu().entry(StatusMenuItem::quit).isEnabled = false;
    for (const int id : {lines.back().id, 0, -1, 99, 100, 100'000}) {
        desktop.statusItem().choose(id);
        time.advance(1s);
    }
    EXPECT_EQ(quits, 1);
}

TEST_F(TrayMenuTest, aTrayThatReadsTheLinesFoldsNothingUnderThePointer) {
    press();
    show();
    quietly([this] { control("Advanced Awake modes").click(); });
    static_cast<void>(desktop.statusItem().menuLines());
    EXPECT_TRUE(delegate->tools().keepAwake().manager().showAdvancedPanel());
}

TEST_F(TrayMenuTest, aChoiceThatWritesSeveralPreferencesIsToldOnce) {
    static_cast<void>(desktop.statusItem().menuLines());
    time.advance(10ms);
    const int before = desktop.statusItem().menuChanges();
    quietly([this] {
        delegate->tools().keepAwake().manager().setChargingOnly(true);
        time.advance(10ms);
    });
    EXPECT_EQ(desktop.statusItem().menuChanges(), before + 1);
}

TEST_F(TrayMenuTest, suchATrayHearsOfEachChange) {
    static_cast<void>(desktop.statusItem().menuLines());
    const int before = desktop.statusItem().menuChanges();
    set(Feature::tavrineEditor, false);
    time.advance(10ms);
    EXPECT_GT(desktop.statusItem().menuChanges(), before);
    for (const StatusMenuLine &line : desktop.statusItem().menuLines())
        EXPECT_NE(line.label, text("Tavrine Editor"));
}

} // namespace
} // namespace tavrine
