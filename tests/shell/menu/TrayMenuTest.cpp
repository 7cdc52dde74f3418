#include "shell/menu/TrayMenuTest.h"

#include "look/Motion.h"
#include "look/Tile.h"
#include "support/PaintedWords.h"
#include "utilities/awake/KeepAwakeControlView.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/lofi/LofiMiniPlayer.h"

#include <QFile>
#include <QHelpEvent>
#include <QTest>

namespace tavrine {
namespace {

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
    auto &tiles = delegate->trayMenu().quickActions();
    const auto seen = [this] { return control("Clean Mode").grab().toImage(); };
    const QString words = tiles.subtitle(QuickAction::cleanMode);
    const QImage off = seen();
    control("Clean Mode").click();
    time.advance(1s);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().constFirst().buttons.constLast(), text("Cancel"));
    EXPECT_FALSE(tiles.isOn(QuickAction::cleanMode));
    EXPECT_EQ(tiles.subtitle(QuickAction::cleanMode), words);
    EXPECT_EQ(seen(), off);
    EXPECT_TRUE(desktop.eventTaps().keyArrives());
    desktop.eventTaps().setPermitted(true);
    control("Clean Mode").click();
    EXPECT_NE(tiles.subtitle(QuickAction::cleanMode), words);
    EXPECT_NE(seen(), off);
}

TEST_F(TrayMenuTest, whereADesktopHasNoWayToBlockTheKeyboardTheCleanersTileSaysSoAndAClickTellsWhy) {
    desktop.eventTaps().setThere(false);
    press();
    show();
    const auto &tiles = delegate->trayMenu().quickActions();
    EXPECT_EQ(tiles.subtitle(QuickAction::cleanMode), text("Not on This Desktop"));
    control("Clean Mode").click();
    time.advance(1s);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().constFirst().message, text("Clean Mode Is Not Available"));
    EXPECT_FALSE(tiles.isOn(QuickAction::cleanMode));
}

TEST_F(TrayMenuTest, withoutThePermissionTheScreenshotsTileAsksForItAndLeavesTheMenuOpen) {
    desktop.access().setScreenCaptureGranted(false);
    press();
    show();
    control("Screenshot").click();
    time.advance(1s);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().constFirst().message, text("Screen Recording Permission Required"));
    EXPECT_TRUE(panel().isOpen());
    EXPECT_TRUE(desktop.taskLauncher().tasks().isEmpty());
    desktop.access().setScreenCaptureGranted(true);
    control("Screenshot").click();
    EXPECT_FALSE(panel().isOpen());
    time.advance(1s);
    EXPECT_EQ(desktop.taskLauncher().tasks().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
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

/// A tray tells of it when it has found the item's place, which may be when the button is let go.
TEST_F(TrayMenuTest, thePressThatClosedItDoesNotOpenItAgainHoweverLateItIsTold) {
    press();
    desktop.screens().setMouseLocation({1300, 888});
    desktop.eventMonitors().mouseDown(eventMask::leftMouseDown, false);
    time.advance(1s);
    desktop.statusItem().press({1300, 12}, 1s);
    EXPECT_FALSE(panel().isOpen());
    desktop.statusItem().press({1300, 12}, StatusMenuPanel::samePress / 2);
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

TEST_F(TrayMenuTest, theEntriesOfAnOpenMenuFollowWhatChanges) {
    press();
    show();
    set(Feature::clipboardHistory, false);
    set(Feature::emojiPicker, false);
    time.advance(0s);
    EXPECT_FALSE(control("Clipboard Search").isEnabled());
    EXPECT_FALSE(control("Emoji Picker").isEnabled());
    quietly([this] {
        set(Feature::clipboardHistory, true);
        time.advance(0s);
    });
    EXPECT_TRUE(control("Clipboard Search").isEnabled());
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    time.advance(0s);
    EXPECT_TRUE(shows("Classic Clipboard"));
    EXPECT_FALSE(shows("Clipboard Search"));
}

TEST_F(TrayMenuTest, ofWordsHalfAsLongAgainTheTilesShowTheTitlesAndTellInFullWhatTheyCut) {
    const QFont before = QApplication::font();
    QFont longer = before;
    longer.setStretch(150);
    QApplication::setFont(longer);
    press();
    show();
    for (auto *tile : view().findChildren<look::Tile *>()) {
        test::WordsDevice device(tile->size());
        tile->render(&device);
        const QStringList words = device.words();
        EXPECT_EQ(words.join(u' ').left(tile->text().size()), tile->text());
        QHelpEvent asked(QEvent::ToolTip, {}, {});
        QCoreApplication::sendEvent(tile, &asked);
        const bool isCut = words.join(u' ').contains(QChar(0x2026));
        EXPECT_EQ(tile->toolTip().contains(tile->accessibleDescription()), isCut) << tile->text().toStdString();
    }
    QApplication::setFont(before);
}

TEST_F(TrayMenuTest, wordsThatFitHaveNoToolTip) {
    press();
    show();
    for (auto *tile : view().findChildren<look::Tile *>()) {
        QHelpEvent asked(QEvent::ToolTip, {}, {});
        QCoreApplication::sendEvent(tile, &asked);
        EXPECT_EQ(tile->toolTip(), QString());
    }
}

TEST_F(TrayMenuTest, theDesktopMayCloseIt) {
    press();
    desktop.panelWindows().keyWindow()->closeFromOutside();
    EXPECT_FALSE(panel().isOpen());
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
    std::vector<double> heights;
    time.advance(Seconds{0.0202});           // a trace behind each step from here on
    for (int step = 1; step <= 22; ++step) { // sixtieths of a second: 350 ms are not the end, 367 ms are
        EXPECT_TRUE(panel().height().isAnimating()) << step;
        time.advance(QuickActionsHeight::step);
        heights.push_back(panel().height().height());
    }
    EXPECT_FALSE(panel().height().isAnimating());
    const double whole = heights.back();
    EXPECT_EQ(whole, view().measuredGrid());
    EXPECT_GT(whole, before + 20);
    for (size_t step = 0; step < heights.size(); ++step) {
        const double part = look::cubicInOut(double(step + 1) / 60 / 0.36);
        EXPECT_NEAR((heights[step] - before) / (whole - before), part, 1e-3) << step;
    }
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

TEST_F(TrayMenuTest, suchATrayGetsTheQuickActionsAndUnderThemTheEntries) {
    QStringList labels;
    for (const StatusMenuLine &line : desktop.statusItem().menuLines())
        labels.append(line.isSeparator() ? text("-") : line.label);
    EXPECT_EQ(labels.join(u'|'),
              text("Play: Lo-Fi Vibe|Keep Awake: Display|Screenshot|Record Screen|QR Scan|Clean Mode|Open Settings|"
                   "Tavrine Editor|-|Clipboard Search|Emoji Picker|Colour Picker|-|Check for Updates…|-|Quit"));
    EXPECT_EQ(desktop.panelWindows().made(), 0) << "it costs no window";
}

TEST_F(TrayMenuTest, itsLineOfTheMusicPlaysAndPausesAndSaysWhat) {
    QFile track(home.filePath(text("custom_雨の日.mp3")));
    ASSERT_TRUE(track.open(QIODevice::WriteOnly));
    preference::lofiCustomTrackPath.set(defaults, track.fileName());
    preference::lofiCustomTrackName.set(defaults, text("雨の日"));
    const auto line = [this] { return desktop.statusItem().menuLines().at(0); };
    EXPECT_EQ(line().label, text("Play: 雨の日"));
    auto &manager = delegate->tools().lofi().manager();
    const int before = desktop.statusItem().menuChanges();
    quietly([&] {
        desktop.statusItem().choose(line().id);
        time.advance(10ms);
    });
    EXPECT_TRUE(manager.isPlaying());
    EXPECT_EQ(line().label, text("Pause: 雨の日"));
    EXPECT_GT(desktop.statusItem().menuChanges(), before);
    quietly([&] {
        desktop.statusItem().choose(line().id);
        time.advance(10ms);
    });
    EXPECT_FALSE(manager.isPlaying());
}

TEST_F(TrayMenuTest, itsLineOfKeepAwakeIsTheSwitchAndSaysWhatItKeepsAwake) {
    const auto line = [this] { return desktop.statusItem().menuLines().at(1); };
    auto &manager = delegate->tools().keepAwake().manager();
    EXPECT_EQ(line().isOn, false);
    const int before = desktop.statusItem().menuChanges();
    quietly([&] {
        desktop.statusItem().choose(line().id);
        time.advance(10ms);
    });
    EXPECT_TRUE(manager.isAwake());
    EXPECT_EQ(line().isOn, true);
    EXPECT_GT(desktop.statusItem().menuChanges(), before);
    quietly([&] {
        manager.setMode(KeepAwakeMode::lidClosed);
        time.advance(10ms);
    });
    EXPECT_EQ(line().label, text("Keep Awake: Lid Closed"));
    quietly([&] {
        desktop.statusItem().choose(line().id);
        time.advance(10ms);
    });
    EXPECT_FALSE(manager.isAwake());
}

TEST_F(TrayMenuTest, aPauseForTheBatteryIsANoteThatCannotBeChosen) {
    auto &manager = delegate->tools().keepAwake().manager();
    desktop.powerSource().setPluggedIn(false);
    quietly([&] {
        manager.enable();
        time.advance(10ms);
        manager.setChargingOnly(true);
        time.advance(10ms);
    });
    const StatusMenuLine note = desktop.statusItem().menuLines().at(2);
    EXPECT_EQ(note.label, text("Charging Only: paused while on battery"));
    EXPECT_FALSE(note.isEnabled);
    desktop.statusItem().choose(note.id);
    time.advance(1s);
    EXPECT_FALSE(manager.isAwake());
}

TEST_F(TrayMenuTest, itsLinesTellTheKeysThatChooseThemFromEverywhere) {
    QStringList keys;
    for (const StatusMenuLine &line : desktop.statusItem().menuLines())
        if (!line.keys.isEmpty())
            keys.append(line.label + QLatin1Char(' ') + line.keys.join(u'+'));
    EXPECT_EQ(keys.join(u'|'), text("Clipboard Search Super+Shift+V|Emoji Picker Super+Shift+E")) << "not Quit";
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
