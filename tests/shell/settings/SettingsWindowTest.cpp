// The settings window within a whole program, on a desktop of fakes.

#include "look/Button.h"
#include "look/SegmentedControl.h"
#include "look/Toggle.h"
#include "shell/ShellTest.h"
#include "shell/settings/AboutView.h"
#include "shell/settings/AppIconView.h"
#include "shell/settings/KeyFieldView.h"
#include "shell/settings/LayoutPreviewView.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"
#include "utilities/lofi/LofiManager.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSet>
#include <QTest>

namespace tavrine {
namespace {

TEST(Sidebar, theSubRowOfTheScreenshotsIsTheUploadsAndNotTheRecorder) {
    const auto order = SidebarView::order();
    const auto snipper = std::ranges::find(order, SidebarItem::snipper);
    EXPECT_EQ(snipper[1], SidebarItem::cloudUpload);
    EXPECT_EQ(snipper[2], SidebarItem::screenRecord);
    EXPECT_TRUE(isSubRow(snipper[1]));
    EXPECT_STREQ(subRowTitle, "Upload");
}

TEST(Sidebar, everyPageStandsInItOnceInItsGroups) {
    using enum SidebarItem;
    EXPECT_THAT(SidebarView::order(),
                ElementsAre(home, general, features, layout, snipper, cloudUpload, screenRecord, clipboard, emoji,
                            network, SidebarItem::keepAwake, lofi, privacy, about));
    EXPECT_STREQ(sidebarGroups[0].heading, "");
    EXPECT_STREQ(sidebarGroups[1].heading, "Features");
    EXPECT_STREQ(sidebarGroups[2].heading, "More");
    for (const SidebarItemText &text : sidebarItemTexts)
        EXPECT_EQ(&textOf(text.item), &text) << "the table is in the order of the enumeration";
}

class SettingsWindow : public ShellTest {
protected:
    void SetUp() override {
        launch();
        delegate->openSettings();
    }
    MainAppView &view() { return *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings)); }
    SidebarView &sidebar() { return *view().findChild<SidebarView *>(); }
    void go(SidebarItem item) {
        view().setSelection(item);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    template <class T>
    T *find(const char *name) {
        for (T *each : view().page()->template findChildren<T *>()) {
            if (each->accessibleName() == text(name) || buttonText(each) == text(name))
                return each;
        }
        return nullptr;
    }
    static QString buttonText(const QWidget *widget) {
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        return button ? button->text() : QString();
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget *target = view().focusWidget() ? view().focusWidget() : &view();
        QTest::keyClick(target, Qt::Key(key), modifiers);
    }
};

TEST_F(SettingsWindow, aNewWindowShowsHomeAndIsOfItsFirstSize) {
    EXPECT_EQ(view().selection(), SidebarItem::home);
    EXPECT_EQ(view().size(), QSize(900, 600));
    EXPECT_EQ(view().minimumSize(), QSize(720, 520));
    EXPECT_EQ(view().QWidget::windowTitle(), text("Tavrine"));
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
}

TEST_F(SettingsWindow, openingOnTheClipboardMovesAnOpenWindowThereAndOpeningOnHomeLeavesItWhereItIs) {
    go(SidebarItem::privacy);
    delegate->openMainWindow(SidebarItem::home);
    time.advance(0s);
    EXPECT_EQ(view().selection(), SidebarItem::privacy);
    delegate->openMainWindow(SidebarItem::clipboard);
    EXPECT_EQ(view().selection(), SidebarItem::privacy) << "in a later turn";
    time.advance(0s);
    EXPECT_EQ(view().selection(), SidebarItem::clipboard);
    delegate->openMainWindow(SidebarItem::lofi);
    time.advance(0s);
    EXPECT_EQ(view().selection(), SidebarItem::lofi);
}

TEST_F(SettingsWindow, aClosedWindowOpensOnHomeAgainAndTheProgramLeavesTheTaskBar) {
    go(SidebarItem::about);
    view().close();
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
    time.advance(100ms);
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
    delegate->openSettings();
    EXPECT_EQ(view().selection(), SidebarItem::home);
}

TEST_F(SettingsWindow, onlyThePageThatIsShownExists) {
    go(SidebarItem::about);
    EXPECT_EQ(view().findChildren<AboutView *>().size(), 1);
    go(SidebarItem::general);
    EXPECT_EQ(view().findChildren<AboutView *>().size(), 0);
}

TEST_F(SettingsWindow, withoutASelectionItAsksForOne) {
    view().setSelection(std::nullopt);
    EXPECT_FALSE(view().selection().has_value());
    ASSERT_TRUE(view().page());
    view().setSelection(SidebarItem::general);
    EXPECT_EQ(view().selection(), SidebarItem::general);
}

TEST_F(SettingsWindow, everyPageOpensAndEachOfItsControlsHasAName) {
    for (const SidebarItem item : SidebarView::order()) {
        go(item);
        ASSERT_TRUE(view().page()) << textOf(item).text;
        for (const auto *control : view().page()->findChildren<look::Control *>()) {
            const bool isNameless = control->accessibleName().isEmpty() && control->text().isEmpty();
            EXPECT_FALSE(isNameless && !control->isHidden())
                << textOf(item).text << ": " << control->metaObject()->className();
        }
    }
}

TEST_F(SettingsWindow, theArrowsMoveTheSelectionAndStopAtTheEnds) {
    QTest::keyClick(sidebar().findChild<look::Control *>(), Qt::Key_Down);
    EXPECT_EQ(view().selection(), SidebarItem::general);
    key(Qt::Key_End);
    EXPECT_EQ(view().selection(), SidebarItem::about);
    key(Qt::Key_Down);
    EXPECT_EQ(view().selection(), SidebarItem::about);
    key(Qt::Key_Home);
    key(Qt::Key_Up);
    EXPECT_EQ(view().selection(), SidebarItem::home);
}

TEST_F(SettingsWindow, typedLettersLeadToThePageThatBeginsWithThem) {
    QWidget *target = sidebar().findChild<look::Control *>();
    const auto type = [&](char letter, quint64 at) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_A + (letter - 'a'), {}, QString(QLatin1Char(letter)));
        event.setTimestamp(at);
        QCoreApplication::sendEvent(target, &event);
        return view().selection();
    };
    EXPECT_EQ(type('c', 5000), SidebarItem::clipboard);
    EXPECT_EQ(type('l', 6001), SidebarItem::lofi) << "a second later it is a new word";
    EXPECT_EQ(type('l', 6500), SidebarItem::layout) << "the next one with this letter";
    EXPECT_EQ(type('k', 8000), SidebarItem::keepAwake);
    EXPECT_EQ(type('e', 9000), SidebarItem::keepAwake) << "still the same word";
}

TEST_F(SettingsWindow, theWholeBarIsOneStopOfTheTabKey) {
    int stops = 0;
    for (const auto *row : sidebar().findChildren<look::Control *>())
        stops += row->focusPolicy() & Qt::TabFocus ? 1 : 0;
    EXPECT_EQ(stops, 1);
}

TEST_F(SettingsWindow, theKeysOfPagesAndOfClosing) {
    QApplication::setActiveWindow(&view());
    QTest::keyClick(&view(), Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(view().selection(), SidebarItem::features);
    QTest::keyClick(&view(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(view().selection(), SidebarItem::general);
    QTest::keyClick(&view(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsWindow, thePageMayGoWhileAControlOfItHasTheKeyboardAndItsRing) {
    QApplication::setActiveWindow(&view());
    for (const SidebarItem item : {SidebarItem::features, SidebarItem::home, SidebarItem::clipboard}) {
        go(item);
        auto *control = view().page()->findChild<look::Control *>();
        ASSERT_TRUE(control);
        control->setFocus(Qt::TabFocusReason);
        EXPECT_TRUE(control->showsFocus());
        QTest::keyClick(&view(), Qt::Key_2, Qt::ControlModifier);
        EXPECT_EQ(view().selection(), SidebarItem::general);
    }
}

TEST_F(SettingsWindow, theFifthTapOnTheIconLeavesThePageAsItWas) {
    go(SidebarItem::about);
    auto *about = qobject_cast<AboutView *>(view().page());
    auto *icon = about->findChild<AppIconView *>();
    const QImage before = about->grab().toImage();
    for (int tap = 1; tap <= 4; ++tap) {
        QTest::mouseClick(icon, Qt::LeftButton);
        EXPECT_EQ(about->tapCount(), tap);
    }
    QTest::mouseClick(icon, Qt::LeftButton);
    EXPECT_EQ(about->tapCount(), 0);
    EXPECT_EQ(about->grab().toImage(), before);
}

TEST_F(SettingsWindow, aSwitchOnThePageActsAtOnceAndFollowsTheFlag) {
    go(SidebarItem::features);
    auto *toggle = find<look::Toggle>("Emoji Picker");
    ASSERT_TRUE(toggle);
    toggle->click();
    EXPECT_FALSE(delegate->shell().flags().isOn(Feature::emojiPicker));
    set(Feature::emojiPicker, true);
    EXPECT_TRUE(toggle->isChecked());
}

TEST_F(SettingsWindow, clearAndDisableLeavesTheClipboardsRowOff) {
    go(SidebarItem::features);
    desktop.alerts().answerNextWithFirstButton();
    auto *button = find<look::Button>("Clear & Disable");
    ASSERT_TRUE(button);
    button->click();
    EXPECT_FALSE(find<look::Toggle>("Clipboard History")->isChecked());
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
}

TEST_F(SettingsWindow, aKeyThatIsTypedIsSavedAndRegisteredAtOnce) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    ASSERT_TRUE(field);
    EXPECT_EQ(field->key(), text("E"));
    auto *save = find<look::Button>("Save Changes");
    ASSERT_TRUE(save);
    EXPECT_FALSE(save->isVisibleTo(view().page()));
    QTest::keyClick(field, Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier);
    EXPECT_EQ(field->key(), text("K"));
    EXPECT_TRUE(save->isVisibleTo(view().page()));
    quietly([&] { save->click(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("K"));
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧K"));
}

TEST_F(SettingsWindow, aShortcutThatIsNotSavedIsAskedForBeforeItsPageGoes) {
    const auto type = [this](Qt::Key key) {
        go(SidebarItem::emoji);
        QTest::keyClick(find<KeyFieldView>("Shortcut Key"), key);
    };
    type(Qt::Key_K);
    go(SidebarItem::home);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(view().selection(), SidebarItem::home);
    EXPECT_FALSE(defaults.contains(text("emojiHotkeyKey"))) << "it was not wanted";
    type(Qt::Key_K);
    desktop.alerts().answerNextWithFirstButton();
    quietly([this] { go(SidebarItem::home); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("K"));
    type(Qt::Key_J);
    desktop.alerts().answerNextWithFirstButton();
    quietly([this] { view().close(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("J"));
    EXPECT_EQ(desktop.alerts().shown().size(), 3);
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsWindow, aPageWithoutADraftGoesWithoutAQuestion) {
    for (const SidebarItem item : SidebarView::order())
        go(item);
    go(SidebarItem::emoji);
    QTest::keyClick(find<KeyFieldView>("Shortcut Key"), Qt::Key_V); // the clipboard's, which cannot be saved
    view().close();
    EXPECT_TRUE(desktop.alerts().shown().isEmpty());
}

TEST_F(SettingsWindow, aKeyOfAnotherToolCannotBeSaved) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    QTest::keyClick(field, Qt::Key_V);
    EXPECT_FALSE(find<look::Button>("Save Changes")->isVisibleTo(view().page()));
}

TEST_F(SettingsWindow, theDoubleTapIsChosenBesideTheKey) {
    go(SidebarItem::emoji);
    auto *type = view().page()->findChild<look::SegmentedControl *>();
    ASSERT_TRUE(type);
    Q_EMIT type->chosen(1);
    EXPECT_FALSE(find<KeyFieldView>("Shortcut Key")->isVisibleTo(view().page()));
    quietly([&] { find<look::Button>("Save Changes")->click(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyMode")), text("doubleOption"));
}

TEST_F(SettingsWindow, keepAwakeSwitchedOffOnTheLayoutPageReleasesTheMachine) {
    quietly([this] {
        delegate->tools().keepAwake().manager().enable();
        time.advance(1s);
    });
    ASSERT_TRUE(delegate->tools().keepAwake().manager().isAwake());
    go(SidebarItem::layout);
    quietly([this] {
        find<look::Toggle>("Keep Awake")->click();
        time.advance(1s);
    });
    EXPECT_FALSE(delegate->tools().keepAwake().manager().isAwake());
    EXPECT_TRUE(desktop.powerAssertions().held().empty());
}

TEST_F(SettingsWindow, thePageOfAToolThatIsOffStartsNothing) {
    set(Feature::keepAwake, false);
    set(Feature::loFi, false);
    defaults.set(text("keepAwakeScheduleEnabled"), true);
    defaults.set(text("keepAwakeWeekdaysOnly"), false);
    defaults.set(text("keepAwakeScheduleStartSecs"), qint64{0});
    defaults.set(text("keepAwakeScheduleEndSecs"), qint64{86'340});
    quietly([this] {
        go(SidebarItem::keepAwake);
        static_cast<void>(delegate->tools().keepAwake().manager());
        time.advance(600s);
        go(SidebarItem::lofi);
        delegate->tools().lofi().manager().play();
        time.advance(10s);
    });
    EXPECT_FALSE(delegate->tools().keepAwake().manager().isAwake());
    EXPECT_FALSE(delegate->tools().lofi().manager().isPlaying());
    EXPECT_FALSE(delegate->tools().lofi().manager().isDownloading());
}

TEST_F(SettingsWindow, aPlaceThatIsDraggedOverAnotherTakesItsPlaceOnce) {
    go(SidebarItem::layout);
    auto *preview = view().page()->findChild<LayoutPreviewView *>();
    const auto item = [preview](const char *name) -> look::Control * {
        for (auto *each : preview->findChildren<look::Control *>()) {
            if (each->text() == text(name))
                return each;
        }
        return nullptr;
    };
    const auto stored = [this] { return defaults.get<QString>(text("layoutOrder"), QString()); };
    look::Control *dragged = item("Screenshot");
    ASSERT_TRUE(dragged);
    const QPoint onCard = item("Keep Awake")->geometry().center();
    QTest::mousePress(dragged, Qt::LeftButton);
    QStringList orders;
    for (int move = 0; move < 6; ++move) {
        const QPoint place = onCard + QPoint(move, 0);
        QMouseEvent event(QEvent::MouseMove, dragged->mapFrom(preview, place), dragged->mapToGlobal(QPoint()),
                          Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(dragged, &event);
        orders.append(stored());
    }
    QTest::mouseRelease(dragged, Qt::LeftButton);
    EXPECT_EQ(orders.front(), text("loFi,screenshot,keepAwake,qrScan,cleanMode,editor,settings"));
    EXPECT_EQ(QSet<QString>(orders.begin(), orders.end()).size(), 1) << orders.join(u' ').toStdString();
}

TEST_F(SettingsWindow, aHundredFlagChangesAreFollowedByAnOpenPage) {
    go(SidebarItem::features);
    for (int i = 0; i < 100; ++i)
        set(Feature::loFi, i % 2 == 1);
    time.advance(5s);
    EXPECT_TRUE(find<look::Toggle>("Lo-Fi Vibe Mode")->isChecked());
}

TEST_F(SettingsWindow, aHundredFlagChangesInASecondAreFollowedByMenuAndWindowTogether) {
    desktop.statusItem().press({1300, 12});
    go(SidebarItem::features);
    quietly([this] {
        for (int i = 0; i < 100; ++i) {
            set(featureTexts[static_cast<std::size_t>(i) % featureTexts.size()].feature, i / 10 % 2 == 1);
            time.advance(10ms);
        }
        time.advance(5s);
    });
    EXPECT_TRUE(delegate->trayMenu().panel().isOpen());
    for (const FeatureText &each : featureTexts)
        EXPECT_TRUE(find<look::Toggle>(each.title)->isChecked()) << each.title;
}

TEST_F(SettingsWindow, anOrderOfTenThousandIdsWithDoublesAndUnknownOnesIsShownOnceEach) {
    QStringList ids;
    for (int i = 0; i < 10'000; ++i)
        ids.append(i % 3 == 0 ? text("editor") : i % 3 == 1 ? text("nobody") : text("loFi"));
    for (const QString &order : {ids.join(u','), QString(), text(",,,")}) {
        defaults.set(text("layoutOrder"), order);
        desktop.statusItem().press({1300, 12});
        const auto rows = delegate->trayMenu().quickActions().rows();
        EXPECT_LE(rows.size(), quickActionTexts.size());
        desktop.statusItem().press({1300, 12});
        go(SidebarItem::home);
        go(SidebarItem::layout);
        EXPECT_EQ(view().page()->findChild<LayoutPreviewView *>()->findChildren<look::Control *>().size(), 7);
        time.advance(1s);
    }
}

TEST_F(SettingsWindow, everyKeyOfAWrongTypeLeavesEveryPageStanding) {
    for (const SidebarItem item : SidebarView::order()) {
        go(item);
        for (const char *key : {"layoutOrder", "showInMenuBar", "snipHotkey", "emojiHotkeyMode", "ClipboardExperience",
                                "speedTheme", "keepAwakeBgColor", "keepAwakeScheduleStartSecs", "lofiCustomTrackPath",
                                "customSaveDirectoryPath", "discordBannerDismissed", "colorPickerFormat"})
            defaults.set(text(key), QByteArray("\xff\x00\x01", 3));
        EXPECT_FALSE(view().page()->grab().isNull()) << textOf(item).text;
    }
}

} // namespace
} // namespace tavrine
