#include "ShellTest.h"

namespace tavrine {
namespace {

class FlagReactionsTest : public ShellTest {
protected:
    void SetUp() override {
        launch();
        record();
    }

    /// Flips a switch and gives what was asked of tools and hot keys.
    std::vector<std::string> callsAfter(Feature feature, bool isOn) {
        std::vector<std::string> made;
        quietly([&] {
            set(feature, isOn);
            EXPECT_THAT(takeCalls(), IsEmpty()) << "reactions wait for the main queue";
            time.runPending();
            made = takeCalls();
            time.advance(1s);
        });
        EXPECT_THAT(takeCalls(), IsEmpty());
        return made;
    }
    [[nodiscard]] const StatusMenuEntry &entry(StatusMenuItem item) { return delegate->statusMenu().entry(item); }
};

TEST_F(FlagReactionsTest, aToolHearsOfItsSwitch) {
    for (const Feature feature : {Feature::notchShelf, Feature::keepAwake, Feature::cleaningMode, Feature::loFi}) {
        const std::string name = textOf(feature).property;
        EXPECT_THAT(callsAfter(feature, false), ElementsAre(name + " off"));
        EXPECT_THAT(callsAfter(feature, true), ElementsAre(name + " on"));
    }
}

TEST_F(FlagReactionsTest, toolsWithATriggerAreFollowedByTheHotKeys) {
    for (const Feature feature :
         {Feature::snippingTool, Feature::screenRecorder, Feature::clipboardHistory, Feature::emojiPicker}) {
        const std::string name = textOf(feature).property;
        EXPECT_THAT(callsAfter(feature, false), ElementsAre(name + " off", "hot keys"));
        EXPECT_THAT(callsAfter(feature, true), ElementsAre(name + " on", "hot keys"));
    }
}

TEST_F(FlagReactionsTest, theMeterIsFollowedByADrawing) {
    defaults.set(text("showInternetSpeed"), true);
    time.runPending();
    EXPECT_EQ(desktop.statusItem().image().width, 70);
    EXPECT_THAT(callsAfter(Feature::networkSpeed, false), ElementsAre("networkSpeed off"));
    EXPECT_EQ(desktop.statusItem().image().width, 18);
    EXPECT_THAT(callsAfter(Feature::networkSpeed, true), ElementsAre("networkSpeed on"));
    EXPECT_EQ(desktop.statusItem().image().width, 70);
}

TEST_F(FlagReactionsTest, aToolThatIsNotBuiltYetIsPassedOver) {
    delegate->tools()[Feature::loFi] = nullptr;
    EXPECT_THAT(callsAfter(Feature::loFi, false), IsEmpty());
}

TEST_F(FlagReactionsTest, turningAToolOnTwiceTellsItOnce) {
    callsAfter(Feature::notchShelf, false);
    set(Feature::notchShelf, true);
    set(Feature::notchShelf, true);
    time.runPending();
    EXPECT_THAT(takeCalls(), ElementsAre("notchShelf on"));
}

TEST_F(FlagReactionsTest, aFlagThatDoesNotChangeSendsNothing) {
    for (const FeatureText &each : featureTexts)
        set(each.feature, true);
    time.advance(1s);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(FlagReactionsTest, aFlagThatGoesOffAndOnInOneTurnDoesBoth) {
    set(Feature::networkSpeed, false);
    set(Feature::networkSpeed, true);
    time.runPending();
    EXPECT_THAT(takeCalls(), ElementsAre("networkSpeed off", "networkSpeed on"));
}

// The editor.

constexpr auto editorLine = "DEBUG: TavrineEditor unloading module and purging memory/CPU resources.\n";

TEST_F(FlagReactionsTest, tavrineEditorOffClosesTheEditorAndRestoresThePolicy) {
    const QPointer<QWidget> editor = showWindow(LargeWindows::Kind::editor);
    EXPECT_EQ(outputOf([&] {
                  set(Feature::tavrineEditor, false);
                  EXPECT_TRUE(window(LargeWindows::Kind::editor));
                  time.runPending();
              }),
              editorLine);
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    EXPECT_TRUE(!editor || !editor->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(FlagReactionsTest, tavrineEditorOffWithoutAnEditorOnlyPrints) {
    desktop.application().setActivationPolicy(ActivationPolicy::regular);
    const auto policies = desktop.application().policies().size();
    EXPECT_EQ(outputOf([&] {
                  set(Feature::tavrineEditor, false);
                  time.runPending();
              }),
              editorLine);
    EXPECT_EQ(desktop.application().policies().size(), policies);
}

TEST_F(FlagReactionsTest, tavrineEditorOffIsATurnLaterThanTheOtherReactions) {
    showWindow(LargeWindows::Kind::editor);
    set(Feature::tavrineEditor, false);
    bool wasOpenOneTurnLater = false;
    time.async([&] { wasOpenOneTurnLater = window(LargeWindows::Kind::editor) != nullptr; });
    quietly([&] { time.runPending(); });
    EXPECT_TRUE(wasOpenOneTurnLater);
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
}

TEST_F(FlagReactionsTest, tavrineEditorOnDoesNothing) {
    callsAfter(Feature::tavrineEditor, false);
    EXPECT_EQ(outputOf([&] {
                  set(Feature::tavrineEditor, true);
                  time.advance(1s);
              }),
              "");
}

// The history.

TEST_F(FlagReactionsTest, clipboardHistoryOffPausesAndDisablesItsEntry) {
    callsAfter(Feature::clipboardHistory, false);
    EXPECT_TRUE(manager().isPaused());
    EXPECT_FALSE(manager().isMonitoring());
    EXPECT_FALSE(entry(StatusMenuItem::clipboard).isEnabled);
}

TEST_F(FlagReactionsTest, clipboardHistoryOnResumesReloadsAndEnables) {
    desktop.pasteboard().copyFromOutside(text("before"));
    time.advance(1s);
    callsAfter(Feature::clipboardHistory, false);
    EXPECT_TRUE(manager().history().empty());
    callsAfter(Feature::clipboardHistory, true);
    EXPECT_FALSE(manager().isPaused());
    EXPECT_TRUE(manager().isMonitoring());
    EXPECT_EQ(manager().history().size(), 1U);
    EXPECT_TRUE(entry(StatusMenuItem::clipboard).isEnabled);
}

TEST_F(FlagReactionsTest, turningClipboardHistoryOffRemovesThePanelsAndOnLeavesThemToTheNextUse) {
    const int atRest = desktop.eventMonitors().globalCount();
    delegate->tools().clipboard().open(Trigger::clipboard);
    time.runPending();
    ASSERT_EQ(desktop.panelWindows().living(), 1);
    EXPECT_GT(desktop.eventMonitors().globalCount(), atRest);
    callsAfter(Feature::clipboardHistory, false);
    EXPECT_EQ(desktop.panelWindows().living(), 0);
    EXPECT_EQ(desktop.eventMonitors().globalCount(), atRest);
    callsAfter(Feature::clipboardHistory, true);
    EXPECT_EQ(desktop.panelWindows().living(), 0);
    delegate->tools().clipboard().open(Trigger::clipboard);
    time.runPending();
    EXPECT_EQ(desktop.panelWindows().living(), 1);
}

TEST_F(FlagReactionsTest, anotherExperienceOrdersThePanelsOutAndRefreshesTheEntry) {
    const int atRest = desktop.eventMonitors().globalCount();
    delegate->tools().clipboard().open(Trigger::clipboard);
    time.runPending();
    ASSERT_TRUE(desktop.panelWindows().keyWindow());
    EXPECT_EQ(entry(StatusMenuItem::clipboard).title, text("Clipboard Search"));
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    EXPECT_TRUE(desktop.panelWindows().keyWindow());
    time.runPending();
    EXPECT_FALSE(desktop.panelWindows().keyWindow());
    EXPECT_EQ(desktop.eventMonitors().globalCount(), atRest);
    EXPECT_EQ(entry(StatusMenuItem::clipboard).title, text("Classic Clipboard"));
}

// The emoji picker.

TEST_F(FlagReactionsTest, emojiPickerOffDisablesUnloadsAndRefreshes) {
    delegate->tools().emojiPicker().open(Trigger::emojiPicker);
    time.runPending();
    ASSERT_EQ(desktop.panelWindows().living(), 1);
    defaults.set(text("emojiHotkeyKey"), text("j"));
    callsAfter(Feature::emojiPicker, false);
    EXPECT_EQ(desktop.panelWindows().living(), 0);
    EXPECT_FALSE(entry(StatusMenuItem::emojiPicker).isEnabled);
    EXPECT_EQ(label(entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧J"));
}

TEST_F(FlagReactionsTest, emojiPickerOnEnablesAndRefreshes) {
    callsAfter(Feature::emojiPicker, false);
    defaults.set(text("emojiHotkeyMode"), text("doubleOption"));
    callsAfter(Feature::emojiPicker, true);
    EXPECT_TRUE(entry(StatusMenuItem::emojiPicker).isEnabled);
    EXPECT_EQ(label(entry(StatusMenuItem::emojiPicker).keyEquivalent), QString());
}

// Keep Awake on the tray item.

TEST_F(FlagReactionsTest, theItemTellsOfKeepAwakeByTipAndIcon) {
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    delegate->display().setKeepAwake({true, text("Lid Closed")});
    EXPECT_EQ(desktop.statusItem().toolTip(), text("Tavrine — Keep Awake: Lid Closed"));
    EXPECT_FALSE(desktop.statusItem().image().isTemplate);
    delegate->display().setKeepAwake({});
    EXPECT_EQ(desktop.statusItem().toolTip(), text("Tavrine"));
    EXPECT_TRUE(desktop.statusItem().image().isTemplate);
}

} // namespace
} // namespace tavrine
