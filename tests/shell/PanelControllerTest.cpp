#include "shell/PanelController.h"

#include "look/Motion.h"
#include "shell/PanelFixture.h"

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::PanelFixture;

class PanelControllerTest : public PanelFixture {};

TEST_F(PanelControllerTest, thePanelsAreAsDescribed) {
    controller.ensureClassicPanel();
    controller.ensureSearchPanel();
    controller.ensureEmojiPanel();
    const std::tuple<Window *, QString, QSizeF, bool> rows[] = {
        {classic(), QStringLiteral("Classic Clipboard"), QSizeF(320, 450), true},
        {search(), QStringLiteral("Clipboard Search"), QSizeF(680, 500), false},
        {emoji(), QStringLiteral("Emoji Picker"), QSizeF(600, 460), false}};
    for (const auto &[panel, title, size, isMovable] : rows) {
        const PanelDescription &description = panel->description();
        EXPECT_EQ(description.title, title);
        EXPECT_EQ(description.contentSize, size);
        EXPECT_EQ(description.isMovableByBackground, isMovable);
        EXPECT_EQ(description.level, 3);
        EXPECT_EQ(description.collectionBehavior, 257U);
        EXPECT_TRUE(description.canBecomeKey && description.isClear && description.hasShadow);
        EXPECT_FALSE(panel->isVisible());
    }
}

TEST_F(PanelControllerTest, aPanelIsBuiltOnce) {
    controller.toggleSearchPanel();
    controller.toggleSearchPanel();
    controller.toggleSearchPanel();
    EXPECT_EQ(windows.made(), 1);
    EXPECT_EQ(searchContents, 1);
}

TEST_F(PanelControllerTest, theClipboardTriggerOpensThePanelOfTheChosenExperience) {
    controller.toggleClipboardPanel();
    time.runPending();
    EXPECT_TRUE(search()->isVisible());
    opensSearchPanel = false;
    controller.toggleClipboardPanel();
    time.runPending();
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, aTriggerActsInTheNextTurn) {
    controller.toggleEmojiPanel();
    EXPECT_EQ(windows.made(), 0);
    time.runPending();
    EXPECT_TRUE(emoji()->isVisible());
}

TEST_F(PanelControllerTest, showingActivatesTheProgramAndTakesTheKeyboard) {
    controller.toggleClassicPanel();
    EXPECT_EQ(activator.ownActivations(), 1);
    EXPECT_TRUE(classic()->isKey());
    controller.toggleSearchPanel();
    EXPECT_TRUE(search()->isKey());
    controller.showOrDismissEmojiPanel();
    EXPECT_TRUE(emoji()->isKey());
    EXPECT_EQ(activator.ownActivations(), 3);
}

TEST_F(PanelControllerTest, theClassicPanelFadesInOverFifteenHundredths) {
    controller.toggleClassicPanel();
    EXPECT_EQ(classic()->alpha(), 0.0);
    time.advance(149ms);
    EXPECT_GT(classic()->alpha(), 0.0);
    EXPECT_LT(classic()->alpha(), 1.0);
    time.advance(1ms);
    EXPECT_EQ(classic()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, theOtherPanelsFadeInOverATenth) {
    controller.toggleSearchPanel();
    time.advance(99ms);
    EXPECT_LT(search()->alpha(), 1.0);
    time.advance(1ms);
    EXPECT_EQ(search()->alpha(), 1.0);
    controller.showOrDismissEmojiPanel();
    time.advance(99ms);
    EXPECT_LT(emoji()->alpha(), 1.0);
    time.advance(1ms);
    EXPECT_EQ(emoji()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, aDesktopThatCannotShowAlphaShowsPanelsAtOnce) {
    windows.setComposited(false);
    controller.toggleClassicPanel();
    EXPECT_EQ(classic()->alpha(), 1.0);
    controller.toggleClassicPanel();
    time.runPending();
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(classic()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, showingPostsItsNotification) {
    controller.toggleClassicPanel();
    controller.toggleSearchPanel();
    controller.showOrDismissEmojiPanel();
    EXPECT_EQ(posted.join(QLatin1Char(' ')),
              QStringLiteral("floatingPanelOpened clipboardSearchPanelOpened emojiPickerPanelOpened"));
}

TEST_F(PanelControllerTest, dismissingPostsNothing) {
    controller.toggleSearchPanel();
    posted.clear();
    controller.toggleSearchPanel();
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(PanelControllerTest, theSearchPanelHidesTheOthers) {
    controller.toggleClassicPanel();
    controller.toggleSearchPanel();
    EXPECT_FALSE(classic()->isVisible());
    controller.showOrDismissEmojiPanel();
    EXPECT_FALSE(search()->isVisible());
    controller.toggleSearchPanel();
    EXPECT_FALSE(emoji()->isVisible());
}

TEST_F(PanelControllerTest, theEmojiPanelHidesTheClassicOne) {
    controller.toggleClassicPanel();
    ASSERT_TRUE(classic()->isVisible());
    controller.showOrDismissEmojiPanel();
    EXPECT_FALSE(classic()->isVisible());
}

TEST_F(PanelControllerTest, theClassicPanelHidesNone) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, theClassicPanelShrinksAwayAboutItsMiddle) {
    controller.toggleClassicPanel();
    time.advance(1s);
    const QRectF before = classic()->frame();
    controller.toggleClassicPanel();
    Seconds passed{0};
    for (int step = 1; step <= 10; ++step) { // at a sixtieth of a second each, the last before the end
        const Seconds wanted{step / 60.0 + 0.0005};
        time.advance(wanted - passed);
        passed = wanted;
        const double part = look::easeIn.at(step / 60.0 / 0.18);
        EXPECT_TRUE(classic()->isVisible());
        EXPECT_NEAR(classic()->frame().width(), 320 * (1 - 0.4 * part), 0.01) << step;
        EXPECT_NEAR(classic()->frame().height(), 450 * (1 - 0.4 * part), 0.01) << step;
        EXPECT_NEAR(classic()->frame().center().x(), before.center().x(), 1e-6);
        EXPECT_NEAR(classic()->frame().center().y(), before.center().y(), 1e-6);
        EXPECT_NEAR(classic()->alpha(), 1 - part, 0.001) << step;
    }
    time.advance(Seconds{0.179} - passed);
    EXPECT_TRUE(classic()->isVisible());
    time.advance(1ms);
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(classic()->frame(), before);
    EXPECT_EQ(classic()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, theShrinkingIsNotSaved) {
    controller.toggleClassicPanel();
    classic()->moveByPerson({200, 300});
    controller.toggleClassicPanel();
    time.advance(90ms);
    ASSERT_LT(classic()->frame().width(), 320);
    classic()->moveByPerson(classic()->frame().topLeft()); // a notice that comes late
    time.advance(1s);
    EXPECT_EQ(defaults.get<QString>(QStringLiteral("TavrineHistoryFrame"), QString()),
              QStringLiteral("200 300 320 450"));
}

TEST_F(PanelControllerTest, theShortcutPressedTwiceDuringTheShrinkingKeepsTheFrame) {
    controller.toggleClassicPanel();
    time.advance(1s);
    const QRectF before = classic()->frame();
    controller.toggleClassicPanel();
    time.advance(100ms);
    controller.toggleClassicPanel();
    time.advance(1s);
    EXPECT_EQ(classic()->frame(), before);
    EXPECT_FALSE(classic()->isVisible());
}

TEST_F(PanelControllerTest, aPanelShownAgainDuringItsShrinkingStays) {
    controller.toggleClassicPanel();
    time.advance(1s);
    const QRectF before = classic()->frame();
    controller.toggleClassicPanel();
    time.advance(100ms);
    controller.toggleSearchPanel(); // hides it before it is gone by itself
    controller.toggleClassicPanel();
    time.advance(1s);
    EXPECT_TRUE(classic()->isVisible());
    EXPECT_EQ(classic()->frame(), before);
    EXPECT_EQ(classic()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, aDismissalDuringTheFadeInEndsWithFullAlpha) {
    controller.toggleClassicPanel();
    time.advance(50ms);
    controller.toggleClassicPanel();
    time.advance(1s);
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(classic()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, theSearchPanelGoesAtOnce) {
    controller.toggleSearchPanel();
    controller.toggleSearchPanel();
    EXPECT_FALSE(search()->isVisible());
}

TEST_F(PanelControllerTest, theEmojiPanelFadesAwayOverEightHundredths) {
    controller.showOrDismissEmojiPanel();
    time.advance(1s);
    controller.showOrDismissEmojiPanel();
    time.advance(79ms);
    EXPECT_TRUE(emoji()->isVisible());
    EXPECT_LT(emoji()->alpha(), 0.5);
    time.advance(1ms);
    EXPECT_FALSE(emoji()->isVisible());
    EXPECT_EQ(emoji()->alpha(), 1.0);
}

TEST_F(PanelControllerTest, dismissingAPanelThatIsNotThereDoesNothing) {
    controller.dismissClassicPanel();
    controller.dismissSearchPanel();
    controller.dismissEmojiPanel();
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(PanelControllerTest, theMonitorsAreUpOnlyWhileAPanelIs) {
    EXPECT_EQ(monitors.globalCount(), 0);
    controller.toggleSearchPanel();
    EXPECT_EQ(monitors.globalCount(), 2);
    controller.toggleSearchPanel();
    EXPECT_EQ(monitors.globalCount(), 0);
    controller.toggleClassicPanel();
    EXPECT_EQ(monitors.globalCount(), 2);
    controller.toggleClassicPanel();
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(PanelControllerTest, aPanelThatTheDesktopClosesIsDismissed) {
    controller.toggleSearchPanel();
    search()->closeFromOutside();
    EXPECT_FALSE(search()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 0);
    controller.showOrDismissEmojiPanel();
    emoji()->closeFromOutside();
    EXPECT_EQ(monitors.globalCount(), 0);
    time.advance(1s);
    EXPECT_FALSE(emoji()->isVisible());
    controller.toggleClassicPanel();
    classic()->closeFromOutside();
    EXPECT_EQ(monitors.globalCount(), 0);
    time.advance(1s);
    EXPECT_FALSE(classic()->isVisible());
    controller.toggleClassicPanel();
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, aClickOutsideDismisses) {
    for (const quint32 button : {eventMask::leftMouseDown, eventMask::rightMouseDown}) {
        controller.toggleSearchPanel();
        clickAt({5, 5}, button);
        EXPECT_FALSE(search()->isVisible());
    }
}

TEST_F(PanelControllerTest, aClickInsideDismissesNothing) {
    controller.toggleSearchPanel();
    clickAt(search()->frame().center());
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, aClickIntoAWindowOfThisProgramDoesNotCount) {
    controller.toggleSearchPanel();
    screens.setMouseLocation({5, 5});
    monitors.mouseDown(eventMask::leftMouseDown, true);
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, aClickOutsideTwoPanelsClosesOnlyTheFirst) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    clickAt({5, 5});
    EXPECT_FALSE(search()->isVisible());
    time.advance(1s);
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, aClickInTheFirstAndOutsideTheSecondClosesTheSecond) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    clickAt(search()->frame().center());
    time.advance(1s);
    EXPECT_TRUE(search()->isVisible());
    EXPECT_FALSE(classic()->isVisible());
}

TEST_F(PanelControllerTest, theEmojiPanelGoesBeforeTheClassicOne) {
    controller.showOrDismissEmojiPanel();
    controller.toggleClassicPanel();
    clickAt({5, 5});
    time.advance(1s);
    EXPECT_FALSE(emoji()->isVisible());
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, aProgramThatThePersonSwitchesToTakesThePanelsAway) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    time.advance(1s);
    workspace.setFrontmost(browser);
    time.advance(99ms);
    EXPECT_TRUE(search()->isVisible());
    time.advance(1ms);
    EXPECT_FALSE(search()->isVisible());
    time.advance(1s);
    EXPECT_FALSE(classic()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(PanelControllerTest, aPanelThatHasTheKeyboardAgainStays) {
    controller.toggleSearchPanel();
    time.advance(1s);
    workspace.setFrontmost(browser);
    time.advance(50ms);
    workspace.setFrontmost(ours);
    time.advance(1s);
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, aPanelThatIsOpeningIsNotTakenAwayByTheProgramBehindTheLast) {
    controller.showOrDismissEmojiPanel();
    time.advance(1s);
    controller.toggleSearchPanel();
    workspace.setFrontmost(editor); // the keyboard goes back there from the first panel
    time.advance(599ms);
    EXPECT_TRUE(search()->isVisible());
    workspace.setFrontmost(ours); // a slow window manager
    time.advance(1s);
    EXPECT_TRUE(search()->isVisible());
    workspace.setFrontmost(editor);
    time.advance(1s);
    EXPECT_FALSE(search()->isVisible());
}

TEST_F(PanelControllerTest, aQuestionKeepsThePanelThatAskedIt) {
    opensSearchPanel = true;
    controller.toggleSearchPanel();
    time.advance(1s);
    windows.setAsking(true);
    controller.toggleClipboardPanel();
    controller.toggleEmojiPanel();
    time.runPending();
    clickAt({5, 5});
    monitors.keyDown(53);
    workspace.setFrontmost(browser);
    time.advance(1s);
    EXPECT_TRUE(search()->isVisible());
    EXPECT_EQ(windows.made(), 1);
    windows.setAsking(false);
    clickAt({5, 5});
    EXPECT_FALSE(search()->isVisible());
}

TEST_F(PanelControllerTest, escapeInAnotherProgramClosesOnePanelAtATime) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    monitors.keyDown(53);
    EXPECT_FALSE(search()->isVisible());
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, escapeTakesTheEmojiPanelBeforeTheClassicOne) {
    controller.showOrDismissEmojiPanel();
    controller.toggleClassicPanel();
    monitors.keyDown(53);
    time.advance(1s);
    EXPECT_FALSE(emoji()->isVisible());
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, escapeClosesTheClassicPanelLast) {
    controller.toggleClassicPanel();
    monitors.keyDown(53);
    time.advance(1s);
    EXPECT_FALSE(classic()->isVisible());
}

TEST_F(PanelControllerTest, anotherKeyDoesNothing) {
    controller.toggleSearchPanel();
    for (const int key : {36, 52, 54, -1})
        monitors.keyDown(key);
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, escapeWithTheKeyboardInThePanelIsTheContentsAffair) {
    controller.toggleSearchPanel();
    monitors.setActive(true);
    monitors.keyDown(53);
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelControllerTest, unloadingReleasesTheClipboardPanels) {
    controller.toggleClassicPanel();
    controller.toggleSearchPanel();
    controller.unloadClipboardPanels();
    EXPECT_EQ(controller.classicPanel(), nullptr);
    EXPECT_EQ(controller.searchPanel(), nullptr);
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(PanelControllerTest, unloadingTheEmojiPanelLeavesTheMonitors) {
    controller.showOrDismissEmojiPanel();
    controller.unloadEmojiPanel();
    EXPECT_EQ(controller.emojiPanel(), nullptr);
    EXPECT_EQ(monitors.globalCount(), 2);
}

TEST_F(PanelControllerTest, aPanelUnloadedDuringItsDismissalHarmsNothing) {
    controller.toggleClassicPanel();
    controller.showOrDismissEmojiPanel();
    controller.dismissEmojiPanel();
    controller.toggleClassicPanel();
    controller.dismissClassicPanel();
    controller.unloadClipboardPanels();
    controller.unloadEmojiPanel();
    time.advance(1s);
    controller.toggleClassicPanel();
    EXPECT_TRUE(classic()->isVisible());
}

TEST_F(PanelControllerTest, anUnloadedPanelIsBuiltAnewAtItsNextUse) {
    controller.toggleSearchPanel();
    controller.unloadClipboardPanels();
    controller.toggleSearchPanel();
    EXPECT_EQ(searchContents, 2);
}

TEST_F(PanelControllerTest, choosingTheOtherExperienceOrdersBothClipboardPanelsOut) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    controller.orderOutClipboardPanels();
    EXPECT_FALSE(search()->isVisible() || classic()->isVisible());
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(PanelControllerTest, aSettingsPageOrdersEveryPanelOut) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    controller.ensureEmojiPanel();
    emoji()->makeKeyAndOrderFront();
    controller.orderOutAllPanels();
    EXPECT_FALSE(search()->isVisible() || classic()->isVisible() || emoji()->isVisible());
    EXPECT_EQ(classic()->alpha(), 1.0);
    EXPECT_EQ(monitors.globalCount(), 0);
}

} // namespace
} // namespace tavrine
