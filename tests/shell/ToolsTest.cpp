// The tools as triggers and menus reach them, over fakes.
#include "ShellTest.h"
#include "base/VirtualKeys.h"
#include "capture/SnipFlow.h"
#include "clipboard/ClipboardPanelTexts.h"
#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "utilities/emoji/EmojiPickerView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QTest>

namespace tavrine {
namespace {

constexpr quint32 commandShift = hotKeyModifier::command | hotKeyModifier::shift;
constexpr int keyV = virtualKey::v;
const int keyE = keyCode(QStringLiteral("E"));
const int key2 = keyCode(QStringLiteral("2"));

class ToolsTest : public ShellTest {
protected:
    void SetUp() override {
        desktop.access().setAccessibilityTrusted(true);
        defaults.set(text("hasCompletedOnboarding"), true);
        QDir().mkpath(home.filePath(text("share")));
        QFile table(home.filePath(text("share/emoji_data.json")));
        ASSERT_TRUE(table.open(QIODevice::WriteOnly));
        table.write(R"([{"emoji":"🚀","name":"rocket","keywords":"space","category":"Travel & Places"}])");
        construct();
        quietly([this] { delegate->applicationDidFinishLaunching(); });
    }
    void TearDown() override {
        delegate.reset();
        qDeleteAll(QApplication::topLevelWidgets());
    }

    void press(int key) {
        quietly([&] { desktop.hotKeys().press(key, commandShift); });
        time.advance(0ms);
    }
    [[nodiscard]] QString visiblePanel() {
        const auto *window = desktop.panelWindows().keyWindow();
        return window ? window->description().title : QString();
    }
    template <class View>
    [[nodiscard]] static View *view() {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *found = qobject_cast<View *>(widget))
                return found;
        return nullptr;
    }
    /// Keys count in the window that the panel is to its view.
    void pressEscape(QWidget *view) {
        view->setWindowTitle(visiblePanel());
        view->show();
        QTest::keyClick(view, Qt::Key_Escape);
    }
    static QImage picture(int width = 30, int height = 20) {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return image;
    }
    ClipboardItem recorded(const char *content) {
        manager().addItem(text(content));
        return manager().history().back();
    }
    void paste(const ClipboardItem &item) {
        quietly([&] { delegate->shell().panels().pasteFromSearch(item); });
    }
    void insert(const char *emoji) {
        quietly([&] { delegate->shell().panels().insertEmoji(text(emoji)); });
    }
    void doubleTapOption() {
        for (int tap = 0; tap < 2; ++tap) {
            desktop.eventMonitors().flags(modifierFlag::option);
            desktop.eventMonitors().flags(0);
            time.advance(100ms);
        }
    }

    const RunningApplication editor{text("org.example.Editor"), text("Editor"), 100, 1};
};

TEST_F(ToolsTest, aLaunchRegistersTheKeysOfTheToolsThatAreThereAndMakesNothingElse) {
    std::vector<quint32> ids;
    for (const auto &each : desktop.hotKeys().registrations())
        ids.push_back(each.id.id);
    EXPECT_THAT(ids, testing::UnorderedElementsAre(traits(Trigger::clipboard).hotKeyId,
                                                   traits(Trigger::emojiPicker).hotKeyId, 6U, 7U));
    time.advance(5s);
    EXPECT_FALSE(desktop.hasAskedForPanels());
    EXPECT_EQ(desktop.panelWindows().made(), 0);
}

TEST_F(ToolsTest, eachHotKeyTogglesItsPanelAndThePanelIsMadeOnce) {
    for (int round = 0; round < 2; ++round) {
        press(keyV);
        EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
        EXPECT_TRUE(view<ClipboardSearchView>());
        press(keyV);
        EXPECT_EQ(visiblePanel(), QString());
    }
    press(keyE);
    EXPECT_EQ(visiblePanel(), text("Emoji Picker"));
    EXPECT_TRUE(view<EmojiPickerView>());
    EXPECT_EQ(desktop.panelWindows().made(), 2);
}

TEST_F(ToolsTest, theMenuEntriesOpenThePanels) {
    delegate->statusMenu().entry(StatusMenuItem::clipboard).action();
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
    delegate->statusMenu().entry(StatusMenuItem::emojiPicker).action();
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), text("Emoji Picker"));
}

TEST_F(ToolsTest, theChosenExperienceDecidesWhichClipboardPanelOpens) {
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    time.advance(0ms);
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Classic Clipboard"));
    EXPECT_TRUE(view<ContentView>());
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::search);
    time.advance(0ms);
    EXPECT_EQ(visiblePanel(), QString()); // a change takes both off the screen
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
}

TEST_F(ToolsTest, aFlagThatGoesOffTakesKeyAndPanelAndOneThatComesOnBringsTheKeyBack) {
    press(keyV);
    quietly([&] {
        set(Feature::clipboardHistory, false);
        time.advance(0ms);
    });
    EXPECT_EQ(visiblePanel(), QString());
    press(keyV);
    EXPECT_EQ(visiblePanel(), QString());
    quietly([&] {
        set(Feature::clipboardHistory, true);
        time.advance(0ms);
    });
    press(keyV);
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
    EXPECT_EQ(desktop.panelWindows().made(), 2); // the first was released
}

TEST_F(ToolsTest, aDoubleTapOfOptionOpensTheToolThatIsSetToIt) {
    defaults.set(text("clipboardHotkeyMode"), text("doubleOption"));
    construct();
    quietly([this] { delegate->applicationDidFinishLaunching(); });
    press(keyV);
    EXPECT_EQ(visiblePanel(), QString());
    doubleTapOption();
    EXPECT_EQ(visiblePanel(), text("Clipboard Search"));
}

TEST_F(ToolsTest, aPasteGoesToTheProgramThatWasLeftBeforeTheFirstPanelWasMade) {
    desktop.workspace().setFrontmost(editor);
    desktop.workspace().setFrontmost(std::nullopt); // the person is on the bare desktop
    press(keyV);
    paste(recorded("a line"));
    EXPECT_EQ(visiblePanel(), QString());
    ASSERT_EQ(desktop.applicationActivator().activated().size(), 1U);
    EXPECT_EQ(desktop.applicationActivator().activated().front(), editor);
    time.advance(80ms);
    EXPECT_THAT(desktop.eventPoster().posted(),
                ElementsAre(FakeEventPoster::Posted{keyV, true, modifierFlag::command},
                            FakeEventPoster::Posted{keyV, false, modifierFlag::command}));
    EXPECT_EQ(desktop.pasteboard().string(), text("a line"));
}

TEST_F(ToolsTest, escapeInAViewClosesItsPanel) {
    press(keyV);
    pressEscape(view<ClipboardSearchView>());
    EXPECT_EQ(visiblePanel(), QString());
    press(keyE);
    pressEscape(view<EmojiPickerView>());
    time.advance(80ms);
    EXPECT_EQ(visiblePanel(), QString());
}

TEST_F(ToolsTest, theClassicPanelsButtonTakesEveryPanelAndLargeWindowOffTheScreen) {
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    time.advance(0ms);
    QWidget *settings = showWindow(LargeWindows::Kind::settings);
    ClipboardItem captured;
    captured.imageFileName = manager().saveImage(picture());
    delegate->tools().snipping().showPreviewCard(captured);
    press(keyE);
    press(keyV); // the classic panel leaves the others where they are
    for (auto *button : view<ContentView>()->findChildren<QAbstractButton *>())
        if (button->toolTip() == text(classicPanelTexts::closeToolTip))
            button->click();
    EXPECT_EQ(visiblePanel(), QString());
    EXPECT_FALSE(settings->isVisible());
    EXPECT_EQ(window(LargeWindows::Kind::settings), settings); // it is not closed
    EXPECT_TRUE(delegate->tools().snipping().flowIfMade()->isPreviewShown()) << "nothing would bring a card back";
}

TEST_F(ToolsTest, aPasteWithoutAccessibilityAsksAndShowsAToast) {
    desktop.access().setAccessibilityTrusted(false);
    press(keyV);
    const ClipboardItem item = recorded("a line");
    const std::string output = outputOf([&] {
        delegate->shell().panels().pasteFromSearch(item);
        time.advance(0ms);
    });
    EXPECT_THAT(output, HasSubstr("DEBUG: Accessibility prompt shown, trusted: false"));
    EXPECT_EQ(desktop.access().accessibilityPrompts(), 1);
    EXPECT_EQ(desktop.panelWindows().living(), 2); // the panel, and a toast
    time.advance(3s);
    EXPECT_THAT(desktop.eventPoster().posted(), IsEmpty());
    EXPECT_EQ(desktop.panelWindows().living(), 1);
}

TEST_F(ToolsTest, anInsertedEmojiIsRecordedAsATextUnlessTheProgramInFrontIsExcluded) {
    desktop.workspace().setFrontmost(editor);
    press(keyE);
    insert("🚀");
    EXPECT_EQ(desktop.pasteboard().string(), text("🚀"));
    time.advance(1s);
    EXPECT_EQ(desktop.eventPoster().posted().size(), 2U);
    ASSERT_EQ(manager().history().size(), 1U);
    EXPECT_EQ(manager().history().front().content, text("🚀"));
    EXPECT_FALSE(manager().history().front().imageFileName);
    manager().addExcludedApp({QUuid::createUuid(), editor.bundleIdentifier, editor.localizedName});
    press(keyE);
    insert("🎉");
    time.advance(1s);
    EXPECT_EQ(manager().history().size(), 1U);
    EXPECT_EQ(desktop.pasteboard().string(), text("🎉"));
}

// Captures.

class CapturesTest : public ToolsTest {
protected:
    void SetUp() override {
        ToolsTest::SetUp();
        desktop.access().setScreenCaptureGranted(true);
    }
    [[nodiscard]] int captures() { return static_cast<int>(desktop.taskLauncher().tasks().size()); }
    /// The tool that runs leaves a picture of this size and ends.
    void finishCapture(int width, int height) {
        const auto task = desktop.taskLauncher().tasks().last();
        ASSERT_TRUE(picture(width, height).save(task->arguments().last()));
        quietly([&] {
            task->finish(0);
            time.advance(0ms);
        });
    }
    [[nodiscard]] const SnipFlow *flow() { return delegate->tools().snipping().flowIfMade(); }
};

TEST_F(CapturesTest, theHotKeyStartsTheToolAndItsPictureComesOnACard) {
    press(key2);
    ASSERT_EQ(captures(), 1);
    finishCapture(8, 6);
    ASSERT_TRUE(flow());
    EXPECT_TRUE(flow()->isPreviewShown());
    EXPECT_EQ(desktop.pasteboard().image()->size(), QSize(8, 6));
}

TEST_F(CapturesTest, theHistoryLearnsOfACaptureAsOfAnyOtherCopy) {
    press(key2);
    finishCapture(8, 6);
    const auto isPicture = testing::Field(&ClipboardItem::content, text("Copied Image"));
    EXPECT_THAT(manager().history(), Not(Contains(isPicture)));
    time.advance(500ms);
    EXPECT_THAT(manager().history(), Contains(isPicture));
}

TEST_F(CapturesTest, theHotKeyWithoutThePermissionOfTheScreenExplains) {
    desktop.access().setScreenCaptureGranted(false);
    press(key2);
    EXPECT_EQ(captures(), 0);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().first().message, text("Screen Recording Permission Required"));
}

TEST_F(CapturesTest, theMenusWayIntoACaptureAsksForThePermissionToo) {
    desktop.access().setScreenCaptureGranted(false);
    delegate->startSnip();
    time.advance(0ms);
    EXPECT_EQ(captures(), 0);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
    desktop.access().setScreenCaptureGranted(true);
    delegate->startSnip();
    EXPECT_EQ(captures(), 1);
}

TEST_F(CapturesTest, aCaptureThatIsStartedAnewAsksForNoPermission) {
    desktop.access().setScreenCaptureGranted(false);
    quietly([&] {
        delegate->handleRestartSnip();
        time.advance(1s);
    });
    EXPECT_EQ(captures(), 1);
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
}

TEST_F(CapturesTest, switchedOffTakesTheKeyAndLeavesACardThatStands) {
    press(key2);
    finishCapture(8, 6);
    quietly([&] {
        set(Feature::snippingTool, false);
        time.advance(0ms);
    });
    EXPECT_TRUE(flow()->isPreviewShown());
    press(key2);
    delegate->startSnip();
    EXPECT_EQ(captures(), 1);
    quietly([&] {
        set(Feature::snippingTool, true);
        time.advance(0ms);
    });
    press(key2);
    time.advance(200ms); // the card leaves the screen first
    EXPECT_EQ(captures(), 2);
}

TEST_F(CapturesTest, theCardOpensTheEditor) {
    press(key2);
    finishCapture(8, 6);
    quietly([&] { flow()->previewModel()->pressEdit(); });
    EXPECT_TRUE(window(LargeWindows::Kind::editor));
}

// The editor.

TEST_F(ToolsTest, theEditorsWindowComesToTheFront) {
    EXPECT_EQ(outputOf([this] { delegate->openTavrineEditorFromMenu(); }),
              "DEBUG: AppDelegate - openTavrineEditor called\nDEBUG: AppDelegate - Editor window opened!\n");
    const QWidget *shown = window(LargeWindows::Kind::editor);
    ASSERT_TRUE(shown);
    EXPECT_FALSE(shown->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    time.advance(120ms);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(shown->windowTitle(), text("Tavrine Editor"));
}

TEST_F(ToolsTest, closingTheEditorReleasesItAndLeavesTheTaskBar) {
    quietly([this] { delegate->tools().editor().openEditorDirectly(picture()); });
    const QPointer<QWidget> shown = window(LargeWindows::Kind::editor);
    ASSERT_TRUE(shown && shown->isVisible());
    static_cast<EditorView *>(shown.data())->model().close();
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    time.advance(100ms);
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(shown);
}

TEST_F(ToolsTest, aSecondEditorReplacesTheFirstAndStaysRegular) {
    quietly([this] { delegate->tools().editor().openEditorDirectly(picture()); });
    const QPointer<QWidget> first = window(LargeWindows::Kind::editor);
    quietly([this] { delegate->tools().editor().openEditorDirectly(picture()); });
    EXPECT_NE(window(LargeWindows::Kind::editor), first);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(first);
    time.advance(1s);
    EXPECT_TRUE(window(LargeWindows::Kind::editor)->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
}

TEST_F(ToolsTest, anItemsImageOpensByItselfAndTextDoesNot) {
    EditorTool &tool = delegate->tools().editor();
    const std::optional<QString> name = manager().saveImage(picture());
    ASSERT_TRUE(name);
    ClipboardItem item = recorded("words");
    quietly([&] { tool.openEditorForItem(item); });
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    item.imageFileName = text("gone.jpg");
    quietly([&] { tool.openEditorForItem(item); });
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    item.imageFileName = name;
    quietly([&] { tool.openEditorForItem(item); });
    ASSERT_TRUE(window(LargeWindows::Kind::editor));
    EXPECT_EQ(window(LargeWindows::Kind::editor)->windowTitle(), text("Tavrine Snap Editor"));
}

// The first run.

TEST_F(ToolsTest, theLastPageOfTheWelcomeWindowEndsIt) {
    defaults.set(text("hasCompletedOnboarding"), false);
    construct();
    quietly([this] { delegate->applicationDidFinishLaunching(); });
    time.advance(200ms);
    const QPointer<QWidget> welcome = window(LargeWindows::Kind::welcome);
    ASSERT_TRUE(welcome);
    for (int page = 0; page < 3; ++page) {
        QTest::keyClick(welcome, Qt::Key_Return);
        time.advance(1s);
    }
    EXPECT_FALSE(window(LargeWindows::Kind::welcome));
    EXPECT_TRUE(window(LargeWindows::Kind::settings)) << "the settings follow it";
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    EXPECT_EQ(defaults.get<bool>(text("hasCompletedOnboarding")), true);
}

} // namespace
} // namespace tavrine
