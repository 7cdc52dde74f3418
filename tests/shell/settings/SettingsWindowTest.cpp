#include "shell/settings/SettingsWindowTest.h"

#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Tile.h"
#include "look/Toggle.h"
#include "shell/settings/AboutView.h"
#include "shell/settings/AppIconView.h"
#include "shell/settings/LayoutPreviewView.h"
#include "utilities/lofi/LofiManager.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSet>

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

TEST_F(SettingsWindowTest, theRowUnderScreenshotIsUploadAndTheNextOneScreenRecord) {
    view().show();
    auto rows = sidebar().findChildren<QAbstractButton *>();
    std::ranges::sort(rows, {}, [this](const QAbstractButton *row) { return row->mapTo(&sidebar(), QPoint()).y(); });
    const auto found = std::ranges::find(rows, text("Screenshot"), &QAbstractButton::text);
    ASSERT_GT(rows.end() - found, 2);
    EXPECT_EQ(found[1]->text(), text("Upload"));
    EXPECT_EQ(found[2]->text(), text("Screen Record"));
    QTest::mouseClick(*found, Qt::LeftButton);
    (*found)->setFocus();
    key(Qt::Key_Down);
    EXPECT_EQ(view().selection(), SidebarItem::cloudUpload);
}

TEST_F(SettingsWindowTest, aNewWindowShowsHomeAndIsOfItsFirstSize) {
    EXPECT_EQ(view().selection(), SidebarItem::home);
    EXPECT_EQ(view().size(), QSize(900, 600));
    EXPECT_EQ(view().minimumSize(), QSize(720, 520));
    EXPECT_EQ(view().QWidget::windowTitle(), text("Tavrine"));
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
}

TEST_F(SettingsWindowTest, openingOnTheClipboardMovesAnOpenWindowThereAndOpeningOnHomeLeavesItWhereItIs) {
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

TEST_F(SettingsWindowTest, aClosedWindowOpensOnHomeAgainAndTheProgramLeavesTheTaskBar) {
    go(SidebarItem::about);
    view().close();
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
    time.advance(100ms);
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
    delegate->openSettings();
    EXPECT_EQ(view().selection(), SidebarItem::home);
}

TEST_F(SettingsWindowTest, onlyThePageThatIsShownExists) {
    go(SidebarItem::about);
    EXPECT_EQ(view().findChildren<AboutView *>().size(), 1);
    go(SidebarItem::general);
    EXPECT_EQ(view().findChildren<AboutView *>().size(), 0);
}

TEST_F(SettingsWindowTest, withoutASelectionItAsksForOne) {
    view().setSelection(std::nullopt);
    EXPECT_FALSE(view().selection().has_value());
    ASSERT_TRUE(view().page());
    view().setSelection(SidebarItem::general);
    EXPECT_EQ(view().selection(), SidebarItem::general);
}

TEST_F(SettingsWindowTest, everyPageOpensAndEachOfItsControlsHasAName) {
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

TEST_F(SettingsWindowTest, theArrowsMoveTheSelectionAndStopAtTheEnds) {
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

TEST_F(SettingsWindowTest, typedLettersLeadToThePageThatBeginsWithThem) {
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

TEST_F(SettingsWindowTest, theWholeBarIsOneStopOfTheTabKey) {
    int stops = 0;
    for (const auto *row : sidebar().findChildren<look::Control *>())
        stops += row->focusPolicy() & Qt::TabFocus ? 1 : 0;
    EXPECT_EQ(stops, 1);
}

TEST_F(SettingsWindowTest, theKeysOfPagesAndOfClosing) {
    QApplication::setActiveWindow(&view());
    QTest::keyClick(&view(), Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(view().selection(), SidebarItem::features);
    QTest::keyClick(&view(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(view().selection(), SidebarItem::general);
    QTest::keyClick(&view(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsWindowTest, thePageMayGoWhileAControlOfItHasTheKeyboardAndItsRing) {
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

TEST_F(SettingsWindowTest, theFifthTapOnTheIconLeavesThePageAsItWas) {
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

TEST_F(SettingsWindowTest, theAboutPageLooksForUpdatesAndFollowsTheLook) {
    go(SidebarItem::about);
    auto *button = find<look::Button>("Check Now");
    ASSERT_TRUE(button);
    const auto *row = qobject_cast<look::SettingsRow *>(button->parentWidget());
    EXPECT_EQ(row->note(), text("Not looked for since Tavrine was started"));
    button->click();
    EXPECT_FALSE(button->isEnabled());
    EXPECT_THAT(row->note().toStdString(), HasSubstr("is looking"));
    time.runPending();
    EXPECT_TRUE(button->isEnabled());
    EXPECT_THAT(row->note().toStdString(), HasSubstr("does not look for updates by itself"));
    EXPECT_EQ(button->accessibleDescription(), row->note());
    EXPECT_EQ(desktop.userNotifications().added(), 1);
}

TEST_F(SettingsWindowTest, homeAndAboutNameTheVersionOrTheOneThatStandsInForIt) {
    for (const auto &[version, words] : {std::pair{"", "Version 2.3.1"}, {"9.8.7", "Version 9.8.7"}}) {
        QCoreApplication::setApplicationVersion(text(version));
        for (const SidebarItem item : {SidebarItem::home, SidebarItem::about}) {
            go(SidebarItem::general);
            go(item);
            const auto *label = find<look::Label>(words);
            ASSERT_TRUE(label) << words << " on " << textOf(item).text;
            EXPECT_TRUE(label->isVisibleTo(&view()));
            EXPECT_EQ(label->text(), text(words));
        }
    }
    QCoreApplication::setApplicationVersion({});
}

TEST_F(SettingsWindowTest, aSwitchOnThePageActsAtOnceAndFollowsTheFlag) {
    go(SidebarItem::features);
    auto *toggle = find<look::Toggle>("Emoji Picker");
    ASSERT_TRUE(toggle);
    toggle->click();
    EXPECT_FALSE(delegate->shell().flags().isOn(Feature::emojiPicker));
    set(Feature::emojiPicker, true);
    EXPECT_TRUE(toggle->isChecked());
}

TEST_F(SettingsWindowTest, aRowThatIsSwitchedOnShowsStartingForTwoAndAHalfSecondsAndOneThatIsSwitchedOffNothing) {
    go(SidebarItem::features);
    auto *toggle = find<look::Toggle>("Emoji Picker");
    ASSERT_TRUE(toggle);
    const auto labels = toggle->parentWidget()->findChildren<look::Label *>();
    ASSERT_EQ(labels.size(), 1);
    const look::Label &starting = *labels.first();
    EXPECT_EQ(starting.text(), QString::fromUtf8("Starting…"));
    const auto isShown = [&] { return starting.isVisibleTo(&view()); };
    toggle->click(); // off
    EXPECT_FALSE(isShown());
    desktop.time().advance(2500ms);
    EXPECT_FALSE(isShown());
    toggle->click();
    EXPECT_TRUE(isShown());
    desktop.time().advance(2499ms);
    EXPECT_TRUE(isShown());
    desktop.time().advance(1ms);
    EXPECT_FALSE(isShown());
}

TEST_F(SettingsWindowTest, startingComesWithItsSpring) {
    const look::Look look(time);
    go(SidebarItem::features);
    auto *toggle = find<look::Toggle>("Emoji Picker");
    toggle->click(); // off
    quietly([this] { time.advance(1s); });
    const look::Label &starting = *toggle->parentWidget()->findChildren<look::Label *>().first();
    const int before = toggle->mapTo(view().page(), QPoint()).x();
    const auto room = [&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return double(starting.parentWidget()->parentWidget()->width());
    };
    quietly([&] { toggle->click(); });
    EXPECT_EQ(room(), 0);
    std::vector<double> widths;
    for (int frame = 1; frame <= 60; ++frame) {
        quietly([this] { time.advance(16ms); });
        widths.push_back(room());
        EXPECT_EQ(toggle->mapTo(view().page(), QPoint()).x(), before) << "the switch stays under the pointer";
    }
    const look::Spring spring = look::Spring::responding(0.3, 0.825);
    for (size_t frame = 0; frame < widths.size(); ++frame)
        EXPECT_NEAR(widths[frame] / widths.back(), spring.at(look::MotionClock::frame * double(frame + 1)), 0.02)
            << frame;
    EXPECT_EQ(widths.back(), starting.parentWidget()->sizeHint().width());
}

TEST_F(SettingsWindowTest, clearAndDisableLeavesTheClipboardsRowOff) {
    go(SidebarItem::features);
    desktop.alerts().answerNextWithFirstButton();
    auto *button = find<look::Button>("Clear & Disable");
    ASSERT_TRUE(button);
    button->click();
    EXPECT_FALSE(find<look::Toggle>("Clipboard History")->isChecked());
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
}

TEST_F(SettingsWindowTest, keepAwakeSwitchedOffOnTheLayoutPageReleasesTheMachine) {
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

TEST_F(SettingsWindowTest, thePageOfAToolThatIsOffStartsNothing) {
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

TEST_F(SettingsWindowTest, aPlaceThatIsDraggedOverAnotherTakesItsPlaceOnce) {
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

TEST_F(SettingsWindowTest, aPlaceIsSmallerAndPalerWhileItIsDragged) {
    go(SidebarItem::layout);
    auto *preview = view().page()->findChild<LayoutPreviewView *>();
    auto *place = preview->findChildren<look::Control *>().constFirst();
    const auto seen = [place] {
        QImage image(place->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        place->render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    };
    const auto inkAt = [&](int x) { return qAlpha(seen().pixel(x, place->height() / 2)); };
    const int edge = 1; // just inside: a place that is smaller leaves it free
    const int ground = place->width() - 12;
    ASSERT_EQ(inkAt(ground), 255);
    ASSERT_GT(inkAt(edge), 0);
    QTest::mousePress(place, Qt::LeftButton);
    EXPECT_EQ(inkAt(edge), 0);
    EXPECT_NEAR(inkAt(ground), 0.6 * 255, 3);
    QTest::mouseRelease(place, Qt::LeftButton);
    EXPECT_EQ(inkAt(ground), 255);
}

TEST_F(SettingsWindowTest, aPressOnThePreviewsGroundIsNotTheWindows) {
    go(SidebarItem::layout);
    auto *preview = view().page()->findChild<LayoutPreviewView *>();
    struct Presses : QObject {
        bool eventFilter(QObject *, QEvent *event) override {
            count += event->type() == QEvent::MouseButtonPress ? 1 : 0;
            return false;
        }
        int count = 0;
    } presses;
    preview->parentWidget()->installEventFilter(&presses);
    QTest::mouseClick(preview, Qt::LeftButton, {}, QPoint(preview->width() / 2, 4)); // above the first place
    EXPECT_EQ(presses.count, 0);
    QTest::mouseClick(preview->parentWidget(), Qt::LeftButton, {}, QPoint(1, 1));
    EXPECT_EQ(presses.count, 1);
}

TEST_F(SettingsWindowTest, aHundredFlagChangesAreFollowedByAnOpenPage) {
    go(SidebarItem::features);
    for (int i = 0; i < 100; ++i)
        set(Feature::loFi, i % 2 == 1);
    time.advance(5s);
    EXPECT_TRUE(find<look::Toggle>("Lo-Fi Vibe Mode")->isChecked());
}

TEST_F(SettingsWindowTest, aHundredFlagChangesInASecondAreFollowedByMenuAndWindowTogether) {
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

TEST_F(SettingsWindowTest, anOrderOfTenThousandIdsWithDoublesAndUnknownOnesIsShownOnceEach) {
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

TEST_F(SettingsWindowTest, everyKeyOfAWrongTypeLeavesEveryPageStanding) {
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
