#include "ShellTest.h"
#include "capture/SnipFlow.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "look/Tile.h"
#include "shell/menu/TrayMenu.h"
#include "shell/settings/MainAppView.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEvent>

namespace tavrine {
namespace {

class AppDelegateTest : public ShellTest {
protected:
    void SetUp() override {
        launch();
        ShellTest::record();
    }

    void post(const char *name, const QVariantMap &userInfo = {}) { center.post(text(name), userInfo); }

    ClipboardItem item(Seconds age, const std::optional<QString> &file) {
        return {QUuid::createUuid(), text("Image"), time.now() - age, false, false, file};
    }

    void awaitCapture() { delegate->tools().snipping().setWaitingForCapture(true); }
    [[nodiscard]] QString picture() {
        return manager().saveImage(QImage(30, 20, QImage::Format_RGB32)).value_or(QString());
    }
    [[nodiscard]] bool isCardShown() {
        const SnipFlow *flow = delegate->tools().snipping().flowIfMade();
        return flow && flow->isPreviewShown();
    }

    /// The history as it is after these rows were recorded.
    void store(const std::vector<ClipboardItem> &items) {
        for (const ClipboardItem &each : items)
            database.save(each);
        manager().reloadHistory();
    }
};

// Restarting a capture.

constexpr auto restartBegins = "DEBUG: AppDelegate - Received restartSnip notification (Async).\n"
                               "DEBUG: AppDelegate - Pausing clipboard monitoring...\n";
constexpr auto restartSchedules = "DEBUG: AppDelegate - Scheduling new snip in 0.5s...\n";

TEST_F(AppDelegateTest, aRestartWithoutAnEditorPausesSnipsAndResumes) {
    EXPECT_EQ(outputOf([&] { post("com.tavrine.restartSnip"); }), "");
    EXPECT_TRUE(manager().isMonitoring());
    EXPECT_EQ(outputOf([&] { time.runPending(); }), std::string(restartBegins) +
                                                        "DEBUG: AppDelegate - No editor window found to close.\n" +
                                                        restartSchedules);
    EXPECT_FALSE(manager().isMonitoring());
    EXPECT_EQ(outputOf([&] { time.advance(499ms); }), "");
    EXPECT_THAT(desktop.taskLauncher().tasks(), IsEmpty());
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Executing startSnip...\n");
    EXPECT_EQ(desktop.taskLauncher().tasks().size(), 1);
    EXPECT_EQ(outputOf([&] { time.advance(1999ms); }), "");
    EXPECT_FALSE(manager().isMonitoring());
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Resuming clipboard monitoring...\n");
    EXPECT_TRUE(manager().isMonitoring());
    EXPECT_FALSE(manager().isPaused());
}

TEST_F(AppDelegateTest, aRestartHidesWhatIsNotProtectedAndBringsItBack) {
    const auto rows = [this] {
        std::vector<std::string> contents;
        for (const ClipboardItem &each : manager().history())
            contents.push_back(each.content.toStdString());
        return contents;
    };
    ClipboardItem pinned = item(1h, std::nullopt);
    pinned.content = text("pinned");
    pinned.isPinned = true;
    ClipboardItem recent = item(1min, std::nullopt);
    recent.content = text("recent");
    store({pinned, recent});
    ASSERT_THAT(rows(), testing::UnorderedElementsAre("pinned", "recent"));
    quietly([&] {
        post("com.tavrine.restartSnip");
        time.advance(2499ms);
    });
    EXPECT_THAT(rows(), ElementsAre("pinned"));
    quietly([&] { time.advance(1ms); });
    EXPECT_THAT(rows(), testing::UnorderedElementsAre("pinned", "recent"));
}

TEST_F(AppDelegateTest, aRestartFromTheEditorTakesTheEditorDownFirst) {
    const QPointer<QWidget> editor = showWindow(LargeWindows::Kind::editor);
    post("com.tavrine.restartSnip");
    EXPECT_EQ(outputOf([&] { time.runPending(); }), std::string(restartBegins) +
                                                        "DEBUG: AppDelegate - Safely tearing down editor window...\n" +
                                                        restartSchedules);
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    ASSERT_TRUE(editor);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
    EXPECT_EQ(outputOf([&] { time.advance(99ms); }), "");
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Closing detached window...\n"
                                                    "DEBUG: AppDelegate - Editor window closed.\n");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(editor);
    EXPECT_EQ(outputOf([&] { time.advance(400ms); }), "DEBUG: AppDelegate - Executing startSnip...\n");
}

TEST_F(AppDelegateTest, clipboardHistoryTurnedOffDuringARestartLeavesThePollRunningWithTheFlagOff) {
    quietly([&] {
        post("com.tavrine.restartSnip");
        time.advance(1s);
        set(Feature::clipboardHistory, false);
        time.advance(1499ms);
    });
    EXPECT_FALSE(manager().isMonitoring());
    quietly([&] { time.advance(1ms); });
    EXPECT_TRUE(manager().isMonitoring());
    EXPECT_FALSE(delegate->shell().flags().isOn(Feature::clipboardHistory));
}

// Opening the program again.

TEST_F(AppDelegateTest, reopeningBringsTheSettingsForward) {
    QWidget *settings = showWindow(LargeWindows::Kind::settings);
    settings->hide();
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
    EXPECT_TRUE(settings->isVisible());
}

TEST_F(AppDelegateTest, reopeningWithAVisibleEditorBringsThatForward) {
    QWidget *settings = showWindow(LargeWindows::Kind::settings);
    settings->hide();
    QWidget *editor = showWindow(LargeWindows::Kind::editor);
    const auto before = desktop.applicationActivator().broughtForward().size();
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
    EXPECT_FALSE(settings->isVisible());
    ASSERT_EQ(desktop.applicationActivator().broughtForward().size(), before + 1);
    EXPECT_EQ(desktop.applicationActivator().broughtForward().back(), quint32(editor->winId()));
    editor->hide();
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
    EXPECT_TRUE(settings->isVisible());
}

// Started for something.

TEST_F(AppDelegateTest, whatAStartAsksForWaitsForTheDesktopToSayWhatItGrants) {
    desktop.access().setScreenCaptureGranted(false);
    desktop.access().keepGrantsBack();
    quietly([this] {
        delegate->startedAgain(text("capture"));
        delegate->startedAgain(text("settings"));
        time.runPending();
    });
    EXPECT_EQ(desktop.access().screenCapturePrompts(), 0);
    EXPECT_FALSE(window(LargeWindows::Kind::settings));
    desktop.access().setScreenCaptureGranted(true);
    calls.clear();
    quietly([this] { desktop.access().tellGrants(); });
    EXPECT_THAT(calls, Contains("snippingTool opened"));
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
    EXPECT_EQ(desktop.access().screenCapturePrompts(), 0);
}

TEST_F(AppDelegateTest, whatAStartAsksForIsDoneAtOnceWhereTheGrantsAreKnown) {
    quietly([this] { delegate->startedAgain(text("settings")); });
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
}

// Notices of the default centre.

TEST_F(AppDelegateTest, theSettingsButtonsOfPanelAndPlayerDismissThePanelsAndOpenTheWindow) {
    const int atRest = desktop.eventMonitors().globalCount();
    for (const char *notice : {"openClipboardSettingsRequested", "openLofiSettingsRequested"}) {
        delegate->onHotKeyPressed();
        time.runPending();
        ASSERT_TRUE(desktop.panelWindows().keyWindow());
        QWidget *settings = showWindow(LargeWindows::Kind::settings);
        settings->hide();
        post(notice);
        EXPECT_FALSE(desktop.panelWindows().keyWindow());
        EXPECT_EQ(desktop.eventMonitors().globalCount(), atRest);
        EXPECT_TRUE(settings->isVisible());
        delete settings;
    }
}

TEST_F(AppDelegateTest, eachSettingsButtonOpensThePageOfItsTool) {
    using Case = std::pair<const char *, SidebarItem>;
    for (const auto &[notice, page] : {Case("openClipboardSettingsRequested", SidebarItem::clipboard),
                                       Case("openLofiSettingsRequested", SidebarItem::lofi)}) {
        SCOPED_TRACE(notice);
        quietly([&, name = notice] {
            post(name); // without a window
            time.advance(1s);
        });
        auto *settings = qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings));
        ASSERT_TRUE(settings);
        EXPECT_EQ(settings->selection(), page);
        settings->setSelection(SidebarItem::home);
        quietly([&, name = notice] {
            post(name); // with one that shows another page
            time.advance(1s);
        });
        EXPECT_EQ(settings->selection(), page);
        quietly([&, shown = settings] {
            shown->close();
            time.advance(1s);
        });
        ASSERT_FALSE(window(LargeWindows::Kind::settings));
    }
}

TEST_F(AppDelegateTest, theEditorTileOpensAnEmptyEditor) {
    quietly([&] { post("openTavrineEditorRequested"); });
    const auto *editor = qobject_cast<TavrineEditorContainerView *>(window(LargeWindows::Kind::editor));
    ASSERT_TRUE(editor);
    EXPECT_TRUE(editor->landing());
}

TEST_F(AppDelegateTest, theEditorDoesNotOpenWhileItsSwitchIsOff) {
    quietly([&] {
        set(Feature::tavrineEditor, false);
        time.advance(1s);
    });
    EXPECT_EQ(outputOf([&] { post("openTavrineEditorRequested"); }),
              "DEBUG: AppDelegate - openTavrineEditor called\nDEBUG: Tavrine Editor is disabled in FeatureFlags.\n");
    quietly([&] {
        delegate->openTavrineEditorFromMenu();
        delegate->openEditor(QImage());
    });
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
}

TEST_F(AppDelegateTest, theSettingsTileBringsTheWindowForwardTwiceWhateverCameBetween) {
    const FakeApplicationActivator &activator = desktop.applicationActivator();
    delegate->trayMenu().quickActions().run(QuickAction::settings);
    time.advance(180ms);
    ASSERT_TRUE(window(LargeWindows::Kind::settings));
    const int activations = activator.ownActivations();
    const std::size_t forwards = activator.broughtForward().size();
    desktop.application().setActivationPolicy(ActivationPolicy::accessory);
    time.advance(120ms);
    EXPECT_EQ(activator.ownActivations(), activations + 1);
    EXPECT_EQ(activator.broughtForward().size(), forwards + 1);
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
}

TEST_F(AppDelegateTest, theSettingsTileLeavesAWindowClosedThatIsClosedAtOnce) {
    delegate->trayMenu().quickActions().run(QuickAction::settings);
    time.advance(180ms);
    window(LargeWindows::Kind::settings)->close();
    time.advance(1s);
    EXPECT_FALSE(window(LargeWindows::Kind::settings));
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(AppDelegateTest, theTrayItemFollowsItsNotice) {
    post("updateMenuBarVisibility", {{text("visible"), false}});
    time.runPending();
    EXPECT_FALSE(desktop.statusItem().isVisible());
    post("updateMenuBarVisibility");
    post("updateMenuBarVisibility", {{text("visible"), text("true")}});
    time.runPending();
    EXPECT_FALSE(desktop.statusItem().isVisible());
    post("updateMenuBarVisibility", {{text("visible"), true}});
    time.runPending();
    EXPECT_TRUE(desktop.statusItem().isVisible());
}

// The program that is left.

TEST_F(AppDelegateTest, theProgramThatIsLeftIsRemembered) {
    EXPECT_FALSE(delegate->shell().pasteBack().previouslyActiveApplication());
    desktop.workspace().setFrontmost(text("org.gnome.TextEditor"));
    desktop.workspace().setFrontmost(text("firefox"), 4712);
    ASSERT_TRUE(delegate->shell().pasteBack().previouslyActiveApplication());
    EXPECT_EQ(delegate->shell().pasteBack().previouslyActiveApplication()->bundleIdentifier,
              text("org.gnome.TextEditor"));
    desktop.workspace().setFrontmost(text("com.veltrane.Tavrine"), 4713);
    EXPECT_EQ(delegate->shell().pasteBack().previouslyActiveApplication()->bundleIdentifier, text("firefox"));
}

TEST_F(AppDelegateTest, thisProgramIsNeverWhatIsLeft) {
    desktop.workspace().setFrontmost(text("com.veltrane.Tavrine"));
    desktop.workspace().setFrontmost(text("tavrine"), QCoreApplication::applicationPid());
    desktop.workspace().setFrontmost(std::nullopt);
    EXPECT_FALSE(delegate->shell().pasteBack().previouslyActiveApplication());
}

// A capture that arrives through the clipboard.

TEST_F(AppDelegateTest, aFreshImageShowsTheCardWhileACaptureIsAwaited) {
    awaitCapture();
    ClipboardItem pinned = item(1h, std::nullopt);
    pinned.isPinned = true;
    store({pinned, item(4.99s, picture())});
    EXPECT_FALSE(isCardShown());
    time.runPending();
    EXPECT_TRUE(isCardShown());
    EXPECT_FALSE(delegate->tools().snipping().isWaitingForCapture());
    delegate->tools().snipping().flowIfMade()->dismissSnipPreview(Dismissal::atOnce);
    manager().reloadHistory();
    time.runPending();
    EXPECT_FALSE(isCardShown());
}

TEST_F(AppDelegateTest, anImageOfFiveSecondsIsNotFresh) {
    awaitCapture();
    store({item(5s, picture())});
    time.runPending();
    EXPECT_FALSE(isCardShown());
    EXPECT_TRUE(delegate->tools().snipping().isWaitingForCapture());
}

TEST_F(AppDelegateTest, anImageFromAClockThatRanAheadCountsByItsDistance) {
    awaitCapture();
    store({item(-5.1s, picture())});
    time.runPending();
    EXPECT_FALSE(isCardShown());
}

TEST_F(AppDelegateTest, anImageALittleAheadIsFresh) {
    awaitCapture();
    store({item(-4.9s, picture())});
    time.runPending();
    EXPECT_TRUE(isCardShown());
}

TEST_F(AppDelegateTest, textAndUnawaitedImagesShowNoCard) {
    awaitCapture();
    store({item(0s, std::nullopt)});
    time.runPending();
    delegate->tools().snipping().setWaitingForCapture(false);
    store({item(0s, picture())});
    time.runPending();
    EXPECT_FALSE(isCardShown());
}

TEST_F(AppDelegateTest, anImageWhoseFileIsGoneShowsNoCard) {
    awaitCapture();
    store({item(0s, text("gone.jpg"))});
    time.runPending();
    EXPECT_FALSE(isCardShown());
}

TEST_F(AppDelegateTest, anEmptyHistoryShowsNoCard) {
    awaitCapture();
    manager().reloadHistory();
    time.runPending();
    EXPECT_TRUE(delegate->tools().snipping().isWaitingForCapture());
}

// Entries.

TEST_F(AppDelegateTest, theEntriesCallTheirTools) {
    delegate->onHotKeyPressed();
    delegate->onEmojiPickerHotKeyPressed();
    EXPECT_THAT(takeCalls(), ElementsAre("clipboardHistory opened", "emojiPicker opened"));
    delegate->pickColor();
    EXPECT_TRUE(desktop.colorSamplers().isShown());
    QWidget *settings = showWindow(LargeWindows::Kind::settings);
    settings->hide();
    delegate->openSettings();
    EXPECT_TRUE(settings->isVisible());
    quietly([&] { delegate->openEditor(QImage(8, 6, QImage::Format_RGB32)); });
    EXPECT_TRUE(window(LargeWindows::Kind::editor));
}

TEST_F(AppDelegateTest, theMenuOpensWithItsEntriesFresh) {
    defaults.set(text("HotkeyCharacter"), text("b"));
    defaults.set(text("emojiHotkeyKey"), text("j"));
    desktop.statusItem().press({10, 10});
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::clipboard).keyEquivalent), text("⌘⇧B"));
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧J"));
    delegate->trayMenu().cancelTracking();
}

TEST_F(AppDelegateTest, theMenusOwnEntriesDoWhatTheySay) {
    delegate->statusMenu().entry(StatusMenuItem::checkForUpdates).action();
    time.runPending();
    ASSERT_EQ(desktop.userNotifications().shown().size(), 1);
    EXPECT_THAT(desktop.userNotifications().shown().front().body.toStdString(), HasSubstr("look for updates"));
    EXPECT_FALSE(desktop.application().isTerminated());
    delegate->statusMenu().entry(StatusMenuItem::quit).action();
    EXPECT_TRUE(desktop.application().isTerminated());
}

TEST_F(AppDelegateTest, withoutNotificationsWhatThePersonAskedOfUpdatesStandsOnTheAboutPage) {
    desktop.userNotifications().setGranted(false);
    quietly([this] {
        delegate->statusMenu().entry(StatusMenuItem::checkForUpdates).action();
        time.runPending();
    });
    auto *settings = qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings));
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->selection(), SidebarItem::about);
    const auto rows = settings->page()->findChildren<look::SettingsRow *>();
    EXPECT_TRUE(std::ranges::any_of(
        rows, [](const look::SettingsRow *row) { return row->note().contains(text("look for updates")); }));
}

TEST_F(AppDelegateTest, theEntryThatLooksForUpdatesIsThereToBePressedWhileItLooks) {
    desktop.packageUpdates().setHanging(true);
    const StatusMenuEntry &entry = delegate->statusMenu().entry(StatusMenuItem::checkForUpdates);
    EXPECT_EQ(entry.title, text("Check for Updates…"));
    EXPECT_TRUE(entry.isEnabled);
    entry.action();
    desktop.statusItem().press({10, 10});
    EXPECT_TRUE(entry.isEnabled);
    delegate->trayMenu().cancelTracking();
}

TEST_F(AppDelegateTest, theUpdaterLooksByItselfTwoMinutesAfterTheLaunchAndNotInIt) {
    EXPECT_THAT(desktop.packageUpdates().asked(), IsEmpty());
    quietly([&] { time.advance(2min - 1s); }); // of which the launch had one
    EXPECT_EQ(desktop.packageUpdates().asked().size(), 1);
}

} // namespace
} // namespace tavrine
