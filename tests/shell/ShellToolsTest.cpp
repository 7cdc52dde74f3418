#include "shell/ShellTools.h"

#include "ShellTest.h"
#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeEventPoster.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeHotKeys.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/FakeToastWindows.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "base/SerialQueue.h"
#include "base/VirtualKeys.h"
#include "capture/ScreenSnipper.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>
#include <QTest>

namespace tavrine {
namespace {

constexpr quint32 commandShift = hotKeyModifier::command | hotKeyModifier::shift;
constexpr int keyV = virtualKey::v;
const int keyE = keyCode(QStringLiteral("E"));
const int key2 = keyCode(QStringLiteral("2"));

/// The shell over fakes, its tools connected as in the program.
class ShellToolsTest : public ShellTest {
protected:
    void SetUp() override {
        flags = std::make_unique<FeatureFlags>(defaults);
        experience = std::make_unique<ClipboardExperienceSettings>(defaults);
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, coder, movies, loginItem, folders, database});
        tools = std::make_unique<ShellTools>(ports(), madeViews());
        delegate =
            std::make_unique<AppDelegate>(AppDelegate::Ports{time, defaults, center, workspace, statusItem, application,
                                                             updater, *manager, *flags, *experience, *tools});
        tools->setDelegate(delegate.get());
        access.setAccessibilityTrusted(true);
    }
    ShellTools::Ports ports() {
        const auto desktop = [this] {
            ++desktops;
            return ShellTools::Desktop{.panels = {.windows = windows,
                                                  .monitors = monitors,
                                                  .poster = poster,
                                                  .screens = screens,
                                                  .workspace = workspace,
                                                  .activator = activator,
                                                  .pasteboard = pasteboard,
                                                  .defaults = defaults,
                                                  .center = center,
                                                  .time = time},
                                       .toastWindows = toasts};
        };
        const auto snipFlow = [this](const ShellTools::Desktop &, const SnipFlow::Actions &actions) {
            auto made = std::make_unique<SnipFlow>(
                SnipFlow::Ports{time, defaults, pasteboard, screens, windows, filePanels, snipper, fileQueue, folders},
                actions, SnipFlow::Views{});
            flow = made.get();
            return made;
        };
        return {time,   defaults,  application, hotKeys,  monitors, access,
                alerts, urlOpener, desktop,     &snipper, nullptr,  snipFlow};
    }
    ShellTools::Views madeViews() {
        ShellTools::Views made;
        made.classic = [this](const auto &orderOut, const auto &paste) {
            orderOutAllWindows = orderOut;
            pasteFromClassic = paste;
            return note("classic");
        };
        made.search = [this](const auto &dismiss, const auto &paste) {
            dismissSearch = dismiss;
            pasteFromSearch = paste;
            return note("search");
        };
        made.emoji = [this](const auto &dismiss, const auto &insert) {
            dismissEmoji = dismiss;
            insertEmoji = insert;
            return note("emoji");
        };
        made.welcome = [this](const auto &onClose) {
            finishWelcome = onClose;
            welcome = new QWidget;
            return welcome.data();
        };
        made.editor = [this](const EditorFlow::Window &window, const auto &close) {
            closeEditor = close;
            editors.push_back(window);
            return new QWidget;
        };
        return made;
    }
    // The tools outlive the delegate, as in the program.
    void TearDown() override { delegate.reset(); }

    std::string launchWith(bool hasCompletedOnboarding) {
        defaults.set(text("hasCompletedOnboarding"), hasCompletedOnboarding);
        return outputOf([this] { delegate->applicationDidFinishLaunching(); });
    }
    void launchQuietly() { static_cast<void>(launchWith(true)); }

    QWidget *note(const char *view) {
        views.push_back(view);
        return nullptr;
    }
    void press(int key) {
        static_cast<void>(outputOf([&] { hotKeys.press(key, commandShift); }));
        time.advance(0ms);
    }
    [[nodiscard]] QString visiblePanel() const {
        return windows.keyWindow() ? windows.keyWindow()->description().title : QString();
    }
    static QImage picture() {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return image;
    }
    ClipboardItem recorded(const char *content) {
        manager->addItem(text(content));
        return manager->history().back();
    }
    void doubleTapOption() {
        for (int tap = 0; tap < 2; ++tap) {
            monitors.flags(modifierFlag::option);
            monitors.flags(0);
            time.advance(100ms);
        }
    }

    const RunningApplication editor{text("org.example.Editor"), text("Editor"), 100, 1};
    FakeHotKeys hotKeys;
    FakeEventMonitors monitors;
    FakeAccess access;
    FakeAlerts alerts;
    FakeUrlOpener urlOpener;
    FakePanelWindows windows;
    FakeEventPoster poster;
    FakeScreens screens;
    FakeApplicationActivator activator{workspace};
    FakeToastWindows toasts;
    int desktops = 0;
    std::vector<std::string> views;
    QPointer<QWidget> welcome;
    ShellTools::Views::Dismiss orderOutAllWindows;
    ShellTools::Views::Paste pasteFromClassic;
    ShellTools::Views::Paste pasteFromSearch;
    ShellTools::Views::Dismiss dismissSearch;
    ShellTools::Views::Dismiss dismissEmoji;
    ShellTools::Views::Insert insertEmoji;
    std::function<void()> finishWelcome;
    FakeTaskLauncher launcher;
    FakeFilePanels filePanels{time};
    SerialQueue fileQueue{text("com.tavrine.snip")};
    ScreenSnipper snipper{{launcher, defaults, time, folders.temporary}};
    SnipFlow *flow = nullptr; ///< once there has been a capture

    ShellTools::Views::Dismiss closeEditor;
    std::vector<EditorFlow::Window> editors;
    std::unique_ptr<ShellTools> tools;
};

TEST_F(ShellToolsTest, aLaunchRegistersTheKeysOfTheToolsThatAreThereAndMakesNothingElse) {
    const std::string output = launchWith(true);
    std::vector<quint32> ids;
    for (const auto &each : hotKeys.registrations())
        ids.push_back(each.id.id);
    EXPECT_THAT(ids, testing::UnorderedElementsAre(traits(Trigger::clipboard).hotKeyId,
                                                   traits(Trigger::emojiPicker).hotKeyId, 6U));
    EXPECT_THAT(output, HasSubstr("DEBUG: Hotkey registered successfully for ID: 1"));
    time.advance(5s);
    EXPECT_EQ(desktops, 0);
    EXPECT_THAT(views, IsEmpty());
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(ShellToolsTest, eachHotKeyTogglesItsPanelAndThePanelIsMadeOnce) {
    launchQuietly();
    for (int round = 0; round < 2; ++round) {
        press(keyV);
        EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
        press(keyV);
        EXPECT_EQ(visiblePanel(), QString());
    }
    press(keyE);
    EXPECT_EQ(visiblePanel(), text("Emoji Picker"));
    EXPECT_THAT(views, ElementsAre("search", "emoji"));
    EXPECT_EQ(desktops, 1);
}

TEST_F(ShellToolsTest, theMenuEntriesOpenThePanels) {
    launchQuietly();
    delegate->statusMenu().entry(StatusMenuItem::clipboard).action();
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
    delegate->statusMenu().entry(StatusMenuItem::emojiPicker).action();
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), text("Emoji Picker"));
}

TEST_F(ShellToolsTest, theChosenExperienceDecidesWhichClipboardPanelOpens) {
    launchQuietly();
    experience->setSelectedExperience(ClipboardExperience::classic);
    time.advance(0ms);
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Classic Clipboard"));
    experience->setSelectedExperience(ClipboardExperience::search);
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), QString()); // a change takes both off the screen
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
}

TEST_F(ShellToolsTest, aFlagThatGoesOffTakesKeyAndPanelAndOneThatComesOnBringsTheKeyBack) {
    launchQuietly();
    press(keyV);
    static_cast<void>(outputOf([&] {
        flags->set(Feature::clipboardHistory, false);
        time.advance(0ms);
    }));
    EXPECT_EQ(visiblePanel(), QString());
    press(keyV);
    EXPECT_EQ(visiblePanel(), QString());
    static_cast<void>(outputOf([&] {
        flags->set(Feature::clipboardHistory, true);
        time.advance(0ms);
    }));
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
    EXPECT_THAT(views, ElementsAre("search", "search")); // the first was released
}

TEST_F(ShellToolsTest, aDoubleTapOfOptionOpensTheToolThatIsSetToIt) {
    defaults.set(text("clipboardHotkeyMode"), text("doubleOption"));
    launchQuietly();
    press(keyV);
    EXPECT_EQ(visiblePanel(), QString());
    doubleTapOption();
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
}

TEST_F(ShellToolsTest, aPasteGoesToTheProgramThatWasLeftBeforeTheFirstPanelWasMade) {
    launchQuietly();
    workspace.setFrontmost(editor);
    workspace.setFrontmost(std::nullopt); // the person is on the bare desktop
    press(keyV);
    const ClipboardItem item = recorded("a line");
    static_cast<void>(outputOf([&] { pasteFromSearch(item); }));
    EXPECT_EQ(visiblePanel(), QString());
    ASSERT_EQ(activator.activated().size(), 1U);
    EXPECT_EQ(activator.activated().front(), editor);
    time.advance(80ms);
    EXPECT_THAT(poster.posted(), ElementsAre(FakeEventPoster::Posted{keyV, true, modifierFlag::command},
                                             FakeEventPoster::Posted{keyV, false, modifierFlag::command}));
    EXPECT_EQ(pasteboard.string(), text("a line"));
}

TEST_F(ShellToolsTest, thePanelsAreTakenOffBeforeASettingsPageOpens) {
    launchQuietly();
    press(keyV);
    delegate->handleOpenClipboardSettingsRequested();
    EXPECT_EQ(visiblePanel(), QString());
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(ShellToolsTest, dismissingFromWithinAViewClosesItsPanel) {
    launchQuietly();
    press(keyV);
    dismissSearch();
    EXPECT_EQ(visiblePanel(), QString());
    press(keyE);
    dismissEmoji();
    time.advance(80ms);
    EXPECT_EQ(visiblePanel(), QString());
}

TEST_F(ShellToolsTest, theClassicPanelsButtonTakesEveryWindowOffTheScreen) {
    launchQuietly();
    experience->setSelectedExperience(ClipboardExperience::classic);
    time.advance(0ms);
    QWidget *window = showWindow(&AppDelegate::setMainWindow);
    press(keyE);
    press(keyV); // the classic panel leaves the others where they are
    orderOutAllWindows();
    EXPECT_EQ(visiblePanel(), QString());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(delegate->mainWindow(), window); // it is not closed
}

TEST_F(ShellToolsTest, aPasteWithoutAccessibilityAsksAndShowsAToast) {
    launchQuietly();
    access.setAccessibilityTrusted(false);
    press(keyV);
    const ClipboardItem item = recorded("a line");
    const std::string output = outputOf([&] {
        pasteFromSearch(item);
        time.advance(0ms);
    });
    EXPECT_THAT(output, HasSubstr("DEBUG: Accessibility prompt shown, trusted: false"));
    EXPECT_EQ(access.accessibilityPrompts(), 1);
    EXPECT_EQ(toasts.messages(), QStringList{text("Enable Accessibility to paste automatically")});
    time.advance(3s);
    EXPECT_THAT(poster.posted(), IsEmpty());
    EXPECT_EQ(toasts.messages(), QStringList());
}

TEST_F(ShellToolsTest, anEmojiIsInsertedIntoTheProgramInFront) {
    launchQuietly();
    workspace.setFrontmost(editor);
    press(keyE);
    static_cast<void>(outputOf([&] { insertEmoji(text("😀")); }));
    EXPECT_EQ(pasteboard.string(), text("😀"));
    time.advance(1s);
    EXPECT_EQ(poster.posted().size(), 2U);
}

// Captures.

TEST_F(ShellToolsTest, theHotKeyOfTheCaptureStartsTheToolAndItsPictureComesOnACard) {
    access.setScreenCaptureGranted(true);
    launchQuietly();
    press(key2);
    ASSERT_EQ(launcher.tasks().size(), 1);
    ASSERT_TRUE(QImage(8, 6, QImage::Format_RGB32).save(launcher.tasks().first()->arguments().last()));
    static_cast<void>(outputOf([&] {
        launcher.tasks().first()->finish(0);
        time.advance(0ms);
    }));
    ASSERT_NE(flow, nullptr);
    EXPECT_TRUE(flow->isPreviewShown());
    EXPECT_EQ(pasteboard.image()->size(), QSize(8, 6));
}

TEST_F(ShellToolsTest, theHistoryLearnsOfACaptureAsOfAnyOtherCopy) {
    launchQuietly();
    static_cast<void>(outputOf([&] { delegate->hooks().presentSnip(QImage(8, 6, QImage::Format_RGB32)); }));
    EXPECT_THAT(manager->history(),
                testing::Not(testing::Contains(testing::Field(&ClipboardItem::content, text("Copied Image")))));
    time.advance(500ms);
    EXPECT_THAT(manager->history(), testing::Contains(testing::Field(&ClipboardItem::content, text("Copied Image"))));
}

TEST_F(ShellToolsTest, theHotKeyWithoutThePermissionOfTheScreenExplains) {
    access.setScreenCaptureGranted(false);
    launchQuietly();
    press(key2);
    EXPECT_THAT(launcher.tasks(), IsEmpty());
    ASSERT_EQ(alerts.shown().size(), 1);
    EXPECT_EQ(alerts.shown().first().message, text("Screen Recording Permission Required"));
}

TEST_F(ShellToolsTest, theMenusWayIntoACaptureAsksForThePermissionToo) {
    access.setScreenCaptureGranted(false);
    launchQuietly();
    delegate->startSnip();
    time.advance(0ms);
    EXPECT_THAT(launcher.tasks(), IsEmpty());
    EXPECT_EQ(alerts.shown().size(), 1);
    access.setScreenCaptureGranted(true);
    delegate->startSnip();
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(ShellToolsTest, aCaptureThatIsStartedAnewAsksForNoPermission) {
    access.setScreenCaptureGranted(false);
    launchQuietly();
    static_cast<void>(outputOf([&] {
        delegate->handleRestartSnip();
        time.advance(1s);
    }));
    EXPECT_EQ(launcher.tasks().size(), 1);
    EXPECT_THAT(alerts.shown(), IsEmpty());
}

TEST_F(ShellToolsTest, captureSwitchedOffTakesItsKeyAndItsWindows) {
    access.setScreenCaptureGranted(true);
    launchQuietly();
    static_cast<void>(outputOf([&] { delegate->hooks().presentSnip(QImage(8, 6, QImage::Format_RGB32)); }));
    ASSERT_TRUE(flow->isPreviewShown());
    static_cast<void>(outputOf([&] {
        flags->set(Feature::snippingTool, false);
        time.advance(0ms);
    }));
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_EQ(windows.living(), 0);
    press(key2);
    delegate->startSnip();
    EXPECT_THAT(launcher.tasks(), IsEmpty());
    static_cast<void>(outputOf([&] {
        flags->set(Feature::snippingTool, true);
        time.advance(0ms);
    }));
    press(key2);
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(ShellToolsTest, aCaptureFromTheHistoryIsShownOnTheCard) {
    launchQuietly();
    const auto name = manager->saveImage(QImage(30, 20, QImage::Format_RGB32));
    delegate->hooks().showPreviewCard({QUuid::createUuid(), text("Copied Image"), time.now(), false, false, name});
    ASSERT_NE(flow, nullptr);
    EXPECT_EQ(flow->previewModel()->image().size(), QSize(30, 20));
    flow->dismissSnipPreview(Dismissal::atOnce);
    delegate->hooks().showPreviewCard({QUuid::createUuid(), text("gone"), time.now(), false, false, text("no.jpg")});
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(ShellToolsTest, anInsertedEmojiIsRecordedAsATextUnlessTheProgramInFrontIsExcluded) {
    launchQuietly();
    workspace.setFrontmost(editor);
    press(keyE);
    static_cast<void>(outputOf([&] {
        insertEmoji(text("🚀"));
        time.advance(1s);
    }));
    ASSERT_EQ(manager->history().size(), 1U);
    EXPECT_EQ(manager->history().front().content, text("🚀"));
    EXPECT_FALSE(manager->history().front().imageFileName);
    manager->addExcludedApp({QUuid::createUuid(), editor.bundleIdentifier, editor.localizedName});
    press(keyE);
    static_cast<void>(outputOf([&] {
        insertEmoji(text("🎉"));
        time.advance(1s);
    }));
    EXPECT_EQ(manager->history().size(), 1U);
    EXPECT_EQ(pasteboard.string(), text("🎉"));
}

TEST_F(ShellToolsTest, theLaunchAsksForAccessibilityAndTellsTheAnswer) {
    access.setAccessibilityTrusted(false);
    const std::string output = launchWith(true);
    EXPECT_THAT(output, HasSubstr("DEBUG: Accessibility prompt shown, trusted: false"));
    EXPECT_THAT(output, HasSubstr("DEBUG: Accessibility Trusted on Launch: false"));
}

TEST_F(ShellToolsTest, aFirstLaunchShowsTheWelcomeWindowAndAsksForNothing) {
    access.setAccessibilityTrusted(false);
    static_cast<void>(launchWith(false));
    time.advance(199ms);
    EXPECT_FALSE(welcome);
    time.advance(1ms);
    ASSERT_TRUE(welcome);
    EXPECT_TRUE(welcome->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    EXPECT_EQ(access.accessibilityPrompts(), 0);
}

TEST_F(ShellToolsTest, theWelcomeWindowStaysWhenAWindowManagerWantsItClosed) {
    static_cast<void>(launchWith(false));
    time.advance(200ms);
    ASSERT_TRUE(welcome);
    QCloseEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event); // from outside
    qApp->notify(welcome, &event);
    EXPECT_FALSE(event.isAccepted());
    time.advance(1s);
    EXPECT_EQ(delegate->onboardingWindow(), welcome);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(ShellToolsTest, finishingClosesTheWelcomeWindowAndLeavesTheTaskBar) {
    static_cast<void>(launchWith(false));
    time.advance(200ms);
    ASSERT_TRUE(welcome);
    finishWelcome();
    EXPECT_EQ(delegate->onboardingWindow(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(welcome);
    time.advance(1s);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    tools->showOnboarding();
    EXPECT_TRUE(welcome); // made anew
}

// The editor.

TEST_F(ShellToolsTest, theEditorsWindowIsTheDelegatesAndComesToTheFront) {
    launchQuietly();
    const std::string output = outputOf([this] { delegate->openTavrineEditorFromMenu(); });
    EXPECT_EQ(output, "DEBUG: AppDelegate - openTavrineEditor called\nDEBUG: AppDelegate - Editor window opened!\n");
    ASSERT_TRUE(delegate->editorWindow());
    EXPECT_FALSE(delegate->editorWindow()->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    time.advance(120ms);
    EXPECT_TRUE(delegate->editorWindow()->isVisible());
    ASSERT_EQ(editors.size(), 1U);
    EXPECT_TRUE(editors[0].hasLanding);
}

TEST_F(ShellToolsTest, closingTheEditorReleasesItAndLeavesTheTaskBar) {
    launchQuietly();
    static_cast<void>(outputOf([this] { tools->openEditorDirectly(picture()); }));
    const QPointer<QWidget> window = delegate->editorWindow();
    ASSERT_TRUE(window && window->isVisible());
    closeEditor();
    EXPECT_FALSE(delegate->editorWindow());
    time.advance(100ms);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(window);
}

TEST_F(ShellToolsTest, aSecondEditorReplacesTheFirstAndStaysRegular) {
    launchQuietly();
    static_cast<void>(outputOf([this] { tools->openEditorDirectly(picture()); }));
    const QPointer<QWidget> first = delegate->editorWindow();
    static_cast<void>(outputOf([this] { tools->openEditorDirectly(picture()); }));
    EXPECT_NE(delegate->editorWindow(), first);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(first);
    time.advance(1s);
    EXPECT_TRUE(delegate->editorWindow()->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(ShellToolsTest, anItemsImageOpensByItselfAndTextDoesNot) {
    launchQuietly();
    const std::optional<QString> name = manager->saveImage(picture());
    ASSERT_TRUE(name);
    ClipboardItem item = recorded("words");
    tools->openEditorForItem(item);
    EXPECT_FALSE(delegate->editorWindow());
    item.imageFileName = text("gone.jpg");
    tools->openEditorForItem(item);
    EXPECT_FALSE(delegate->editorWindow());
    item.imageFileName = name;
    tools->openEditorForItem(item);
    ASSERT_TRUE(delegate->editorWindow());
    EXPECT_EQ(editors.back().title, text("Tavrine Snap Editor"));
    EXPECT_EQ(editors.back().image->size(), picture().size());
}

} // namespace
} // namespace tavrine
