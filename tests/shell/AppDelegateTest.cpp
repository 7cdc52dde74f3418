#include "ShellTest.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEvent>

namespace tavrine {
namespace {

class AppDelegateTest : public ShellTest {
protected:
    void SetUp() override { launch(); }

    void post(const char *name, const QVariantMap &userInfo = {}) { center.post(text(name), userInfo); }

    ClipboardItem item(Seconds age, const std::optional<QString> &file) {
        return {QUuid::createUuid(), text("Image"), time.now() - age, false, false, file};
    }

    /// The history as it is after these rows were recorded.
    void record(const std::vector<ClipboardItem> &items) {
        for (const ClipboardItem &each : items)
            database.save(each);
        manager->reloadHistory();
    }
};

// Restarting a capture.

constexpr auto restartBegins = "DEBUG: AppDelegate - Received restartSnip notification (Async).\n"
                               "DEBUG: AppDelegate - Pausing clipboard monitoring...\n";
constexpr auto restartSchedules = "DEBUG: AppDelegate - Scheduling new snip in 0.5s...\n";

TEST_F(AppDelegateTest, aRestartWithoutAnEditorPausesSnipsAndResumes) {
    EXPECT_EQ(outputOf([&] { post("com.tavrine.restartSnip"); }), "");
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_EQ(outputOf([&] { time.runPending(); }), std::string(restartBegins) +
                                                        "DEBUG: AppDelegate - No editor window found to close.\n" +
                                                        restartSchedules);
    EXPECT_FALSE(manager->isMonitoring());
    EXPECT_EQ(outputOf([&] { time.advance(499ms); }), "");
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Executing startSnip...\n");
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("startCapture"));
    EXPECT_EQ(outputOf([&] { time.advance(1999ms); }), "");
    EXPECT_FALSE(manager->isMonitoring());
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Resuming clipboard monitoring...\n");
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_FALSE(manager->isPaused());
}

TEST_F(AppDelegateTest, aRestartFromTheEditorTakesTheEditorDownFirst) {
    const QPointer<QWidget> editor = showWindow(&AppDelegate::setEditorWindow);
    post("com.tavrine.restartSnip");
    EXPECT_EQ(outputOf([&] { time.runPending(); }), std::string(restartBegins) +
                                                        "DEBUG: AppDelegate - Safely tearing down editor window...\n" +
                                                        restartSchedules);
    EXPECT_FALSE(delegate->editorWindow());
    ASSERT_TRUE(editor);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    EXPECT_EQ(outputOf([&] { time.advance(99ms); }), "");
    EXPECT_EQ(outputOf([&] { time.advance(1ms); }), "DEBUG: AppDelegate - Closing detached window...\n"
                                                    "DEBUG: AppDelegate - Editor window closed.\n");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(editor);
    EXPECT_EQ(outputOf([&] { time.advance(400ms); }), "DEBUG: AppDelegate - Executing startSnip...\n");
}

TEST_F(AppDelegateTest, clipboardHistoryTurnedOffDuringARestartLeavesThePollRunningWithTheFlagOff) {
    outputOf([&] {
        post("com.tavrine.restartSnip");
        time.advance(1s);
        set(Feature::clipboardHistory, false);
        time.advance(1499ms);
    });
    EXPECT_FALSE(manager->isMonitoring());
    outputOf([&] { time.advance(1ms); });
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_FALSE(flags->isOn(Feature::clipboardHistory));
}

// Windows and the activation policy.

TEST_F(AppDelegateTest, closingTheSettingsWhileTheEditorIsOpenKeepsTheRegularPolicy) {
    showWindow(&AppDelegate::setEditorWindow);
    QWidget *settings = showWindow(&AppDelegate::setMainWindow);
    settings->close();
    EXPECT_FALSE(delegate->mainWindow());
    time.advance(1s);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(AppDelegateTest, closingTheLastLargeWindowReturnsToAccessoryAfterATenthOfASecond) {
    for (auto setWindow :
         {&AppDelegate::setEditorWindow, &AppDelegate::setMainWindow, &AppDelegate::setOnboardingWindow}) {
        showWindow(setWindow)->close();
        time.advance(99ms);
        EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
        time.advance(1ms);
        EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    }
}

TEST_F(AppDelegateTest, aClosedWindowIsForgottenAndDeleted) {
    const QPointer<QWidget> settings = showWindow(&AppDelegate::setMainWindow);
    QWidget *editor = showWindow(&AppDelegate::setEditorWindow);
    settings->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(settings);
    EXPECT_FALSE(delegate->mainWindow());
    EXPECT_EQ(delegate->editorWindow(), editor);
}

TEST_F(AppDelegateTest, aWindowThatRefusesToCloseIsStillHeldUntilItDoes) {
    struct Stubborn : QWidget {
        void closeEvent(QCloseEvent *event) override { event->setAccepted(mayClose); }
        bool mayClose = false;
    };
    auto *window = new Stubborn;
    delegate->setMainWindow(window);
    application.setActivationPolicy(ActivationPolicy::regular);
    window->show();
    EXPECT_FALSE(window->close());
    EXPECT_EQ(delegate->mainWindow(), window);
    time.advance(1s);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    window->mayClose = true;
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(delegate->mainWindow());
    time.advance(1s);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(AppDelegateTest, aHiddenWindowDoesNotKeepTheRegularPolicy) {
    showWindow(&AppDelegate::setEditorWindow)->hide();
    delegate->restoreAccessoryPolicy();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(AppDelegateTest, theOnboardingWindowAloneKeepsTheRegularPolicy) {
    showWindow(&AppDelegate::setOnboardingWindow);
    delegate->restoreAccessoryPolicy();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

// Opening the program again.

TEST_F(AppDelegateTest, reopeningWithoutAnEditorOpensTheSettingsOnHome) {
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("openMainWindow Home"));
}

TEST_F(AppDelegateTest, reopeningWithAVisibleEditorBringsItForward) {
    showWindow(&AppDelegate::setEditorWindow);
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    delegate->editorWindow()->hide();
    EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("openMainWindow Home"));
}

// Notices of the default centre.

TEST_F(AppDelegateTest, theClipboardGearDismissesThePanelsAndOpensItsPage) {
    post("openClipboardSettingsRequested");
    EXPECT_THAT(hooks.takeCalls(),
                ElementsAre("removePanelMonitors", "orderOutFloatingPanels", "openMainWindow Clipboard"));
}

TEST_F(AppDelegateTest, theMiniPlayerDismissesThePanelsAndOpensItsPage) {
    post("openLofiSettingsRequested");
    EXPECT_THAT(hooks.takeCalls(),
                ElementsAre("removePanelMonitors", "orderOutFloatingPanels", "openMainWindow Lo-Fi Vibe"));
}

TEST_F(AppDelegateTest, theEditorTileOpensAnEmptyEditor) {
    post("openTavrineEditorRequested");
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("openEditor"));
}

TEST_F(AppDelegateTest, theEditorDoesNotOpenWhileItsSwitchIsOff) {
    outputOf([&] {
        set(Feature::tavrineEditor, false);
        time.advance(1s);
    });
    hooks.calls.clear();
    EXPECT_EQ(outputOf([&] { post("openTavrineEditorRequested"); }),
              "DEBUG: AppDelegate - openTavrineEditor called\nDEBUG: Tavrine Editor is disabled in FeatureFlags.\n");
    delegate->openTavrineEditorFromMenu();
    delegate->openEditor(QImage());
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

TEST_F(AppDelegateTest, theTrayItemFollowsItsNotice) {
    post("updateMenuBarVisibility", {{text("visible"), false}});
    time.runPending();
    EXPECT_FALSE(statusItem.isVisible());
    post("updateMenuBarVisibility");
    post("updateMenuBarVisibility", {{text("visible"), text("true")}});
    time.runPending();
    EXPECT_FALSE(statusItem.isVisible());
    post("updateMenuBarVisibility", {{text("visible"), true}});
    time.runPending();
    EXPECT_TRUE(statusItem.isVisible());
}

// The program that is left.

TEST_F(AppDelegateTest, theProgramThatIsLeftIsRemembered) {
    EXPECT_FALSE(delegate->previouslyActiveApplication());
    workspace.setFrontmost(text("org.gnome.TextEditor"));
    workspace.setFrontmost(text("firefox"), 4712);
    ASSERT_TRUE(delegate->previouslyActiveApplication());
    EXPECT_EQ(delegate->previouslyActiveApplication()->bundleIdentifier, text("org.gnome.TextEditor"));
    workspace.setFrontmost(text("com.veltrane.Tavrine"), 4713);
    EXPECT_EQ(delegate->previouslyActiveApplication()->bundleIdentifier, text("firefox"));
}

TEST_F(AppDelegateTest, thisProgramIsNeverWhatIsLeft) {
    workspace.setFrontmost(text("com.veltrane.Tavrine"));
    workspace.setFrontmost(text("tavrine"), QCoreApplication::applicationPid());
    workspace.setFrontmost(std::nullopt);
    EXPECT_FALSE(delegate->previouslyActiveApplication());
}

// A capture that arrives through the clipboard.

TEST_F(AppDelegateTest, aFreshImageShowsTheCardWhileACaptureIsAwaited) {
    hooks.isWaiting = true;
    const ClipboardItem capture = item(4.99s, text("a.jpg"));
    ClipboardItem pinned = item(1h, std::nullopt);
    pinned.isPinned = true;
    record({pinned, capture});
    EXPECT_TRUE(hooks.previews.empty());
    time.runPending();
    ASSERT_EQ(hooks.previews.size(), 1U);
    EXPECT_EQ(hooks.previews.front().id, capture.id);
    EXPECT_FALSE(hooks.isWaiting);
    manager->reloadHistory();
    time.runPending();
    EXPECT_EQ(hooks.previews.size(), 1U);
}

TEST_F(AppDelegateTest, anImageOfFiveSecondsIsNotFresh) {
    hooks.isWaiting = true;
    record({item(5s, text("a.jpg"))});
    time.runPending();
    EXPECT_TRUE(hooks.previews.empty());
    EXPECT_TRUE(hooks.isWaiting);
}

TEST_F(AppDelegateTest, anImageFromAClockThatRanAheadCountsByItsDistance) {
    hooks.isWaiting = true;
    record({item(-4.9s, text("a.jpg"))});
    time.runPending();
    EXPECT_EQ(hooks.previews.size(), 1U);
    hooks.isWaiting = true;
    record({item(-5.1s, text("b.jpg"))});
    time.runPending();
    EXPECT_EQ(hooks.previews.size(), 1U);
}

TEST_F(AppDelegateTest, textAndUnawaitedImagesShowNoCard) {
    hooks.isWaiting = true;
    record({item(0s, std::nullopt)});
    time.runPending();
    hooks.isWaiting = false;
    record({item(0s, text("a.jpg"))});
    time.runPending();
    EXPECT_TRUE(hooks.previews.empty());
}

TEST_F(AppDelegateTest, anEmptyHistoryShowsNoCard) {
    hooks.isWaiting = true;
    manager->reloadHistory();
    time.runPending();
    EXPECT_TRUE(hooks.isWaiting);
}

// Entries.

TEST_F(AppDelegateTest, theEntriesCallTheirTools) {
    delegate->startSnip();
    delegate->pickColor();
    delegate->openSettings();
    delegate->onHotKeyPressed();
    delegate->onEmojiPickerHotKeyPressed();
    delegate->openTavrineEditorFromMenu();
    delegate->openEditor(QImage());
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("startSnip", "pickColor", "openMainWindow Home", "toggleClipboardPanel",
                                               "toggleEmojiPanel", "openEditor", "openEditor image"));
}

TEST_F(AppDelegateTest, theMenuOpensWithTheAdvancedPanelClosedAndItsEntriesFresh) {
    defaults.set(text("HotkeyCharacter"), text("b"));
    statusItem.press({10, 10});
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("hideAdvancedPanel"));
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::clipboard).keyEquivalent), text("⌘⇧B"));
    delegate->statusMenu().cancelTracking();
}

TEST_F(AppDelegateTest, theMenusOwnEntriesDoWhatTheySay) {
    delegate->statusMenu().entry(StatusMenuItem::checkForUpdates).action();
    EXPECT_EQ(updater.messages(), QStringList{text("No update feed is configured.")});
    EXPECT_FALSE(application.isTerminated());
    delegate->statusMenu().entry(StatusMenuItem::quit).action();
    EXPECT_TRUE(application.isTerminated());
}

} // namespace
} // namespace tavrine
