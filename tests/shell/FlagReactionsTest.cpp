#include "ShellTest.h"

namespace tavrine {
namespace {

class FlagReactionsTest : public ShellTest {
protected:
    void SetUp() override { launch(); }

    /// Flips a switch and gives what was asked of the tools before the menu is measured again.
    std::vector<std::string> callsAfter(Feature feature, bool isOn) {
        set(feature, isOn);
        EXPECT_THAT(hooks.takeCalls(), IsEmpty()) << "reactions wait for the main queue";
        time.advance(49ms);
        auto calls = hooks.takeCalls();
        time.advance(1s);
        hooks.calls.clear();
        return calls;
    }
};

TEST_F(FlagReactionsTest, notchShelfOffClosesTheController) {
    EXPECT_THAT(callsAfter(Feature::notchShelf, false), ElementsAre("closeNotch"));
    EXPECT_FALSE(hooks.hasNotch());
}

TEST_F(FlagReactionsTest, notchShelfOnMakesOneAndShowsIt) {
    callsAfter(Feature::notchShelf, false);
    EXPECT_THAT(callsAfter(Feature::notchShelf, true), ElementsAre("showNotch"));
}

TEST_F(FlagReactionsTest, turningNotchShelfOnTwiceCreatesOneController) {
    callsAfter(Feature::notchShelf, false);
    set(Feature::notchShelf, true);
    set(Feature::notchShelf, true);
    time.runPending();
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("showNotch"));
}

TEST_F(FlagReactionsTest, notchShelfOnLeavesAControllerThatExists) {
    callsAfter(Feature::notchShelf, false);
    hooks.showNotch();
    hooks.calls.clear();
    EXPECT_THAT(callsAfter(Feature::notchShelf, true), IsEmpty());
}

TEST_F(FlagReactionsTest, snippingToolEitherWayRegistersTheHotKeys) {
    EXPECT_THAT(callsAfter(Feature::snippingTool, false), ElementsAre("registerHotkeys"));
    EXPECT_THAT(callsAfter(Feature::snippingTool, true), ElementsAre("registerHotkeys"));
}

TEST_F(FlagReactionsTest, screenRecorderOffUnloadsItAndRegistersTheHotKeys) {
    EXPECT_THAT(callsAfter(Feature::screenRecorder, false), ElementsAre("unloadScreenRecorder", "registerHotkeys"));
}

TEST_F(FlagReactionsTest, screenRecorderOnRegistersTheHotKeys) {
    callsAfter(Feature::screenRecorder, false);
    EXPECT_THAT(callsAfter(Feature::screenRecorder, true), ElementsAre("registerHotkeys"));
}

constexpr auto editorLine = "DEBUG: TavrineEditor unloading module and purging memory/CPU resources.\n";

TEST_F(FlagReactionsTest, tavrineEditorOffClosesTheEditorAndRestoresThePolicy) {
    const QPointer<QWidget> editor = showWindow(&AppDelegate::setEditorWindow);
    const std::string output = outputOf([&] {
        set(Feature::tavrineEditor, false);
        EXPECT_TRUE(delegate->editorWindow());
        time.runPending();
    });
    EXPECT_EQ(output, editorLine);
    EXPECT_FALSE(delegate->editorWindow());
    EXPECT_TRUE(!editor || !editor->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    time.advance(1s);
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("remeasureQuickActions"));
}

TEST_F(FlagReactionsTest, tavrineEditorOffWithoutAnEditorOnlyPrints) {
    application.setActivationPolicy(ActivationPolicy::regular);
    const auto policies = application.policies().size();
    EXPECT_EQ(outputOf([&] { EXPECT_THAT(callsAfter(Feature::tavrineEditor, false), IsEmpty()); }), editorLine);
    EXPECT_EQ(application.policies().size(), policies);
}

TEST_F(FlagReactionsTest, tavrineEditorOffIsATurnLaterThanTheOtherReactions) {
    showWindow(&AppDelegate::setEditorWindow);
    set(Feature::tavrineEditor, false);
    bool wasOpenOneTurnLater = false;
    time.async([&] { wasOpenOneTurnLater = delegate->editorWindow() != nullptr; });
    outputOf([&] { time.runPending(); });
    EXPECT_TRUE(wasOpenOneTurnLater);
    EXPECT_FALSE(delegate->editorWindow());
}

TEST_F(FlagReactionsTest, tavrineEditorOnDoesNothing) {
    outputOf([&] { callsAfter(Feature::tavrineEditor, false); });
    EXPECT_EQ(outputOf([&] { EXPECT_THAT(callsAfter(Feature::tavrineEditor, true), IsEmpty()); }), "");
}

TEST_F(FlagReactionsTest, clipboardHistoryOffPausesUnloadsAndRegisters) {
    EXPECT_THAT(callsAfter(Feature::clipboardHistory, false), ElementsAre("unloadClipboardPanels", "registerHotkeys"));
    EXPECT_TRUE(manager->isPaused());
    EXPECT_FALSE(manager->isMonitoring());
    EXPECT_FALSE(delegate->statusMenu().entry(StatusMenuItem::clipboard).isEnabled);
}

TEST_F(FlagReactionsTest, turningClipboardHistoryOffRemovesThePanelsAndOnLeavesThemToTheNextUse) {
    // The panels' own release takes their monitors along; on builds nothing.
    EXPECT_THAT(callsAfter(Feature::clipboardHistory, false), testing::Contains("unloadClipboardPanels").Times(1));
    EXPECT_THAT(callsAfter(Feature::clipboardHistory, true), ElementsAre("registerHotkeys"));
}

TEST_F(FlagReactionsTest, clipboardHistoryOnResumesReloadsAndRegisters) {
    pasteboard.copyFromOutside(text("before"));
    time.advance(1s);
    callsAfter(Feature::clipboardHistory, false);
    EXPECT_TRUE(manager->history().empty());
    EXPECT_THAT(callsAfter(Feature::clipboardHistory, true), ElementsAre("registerHotkeys"));
    EXPECT_FALSE(manager->isPaused());
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_EQ(manager->history().size(), 1U);
    EXPECT_TRUE(delegate->statusMenu().entry(StatusMenuItem::clipboard).isEnabled);
}

TEST_F(FlagReactionsTest, anotherExperienceOrdersThePanelsOutAndRefreshesTheEntry) {
    EXPECT_EQ(delegate->statusMenu().entry(StatusMenuItem::clipboard).title, text("Clipboard Search"));
    experience->setSelectedExperience(ClipboardExperience::classic);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    time.advance(1s);
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("orderOutClipboardPanels", "removePanelMonitors"));
    EXPECT_EQ(delegate->statusMenu().entry(StatusMenuItem::clipboard).title, text("Classic Clipboard"));
    experience->setSelectedExperience(ClipboardExperience::classic);
    time.advance(1s);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

TEST_F(FlagReactionsTest, emojiPickerOffDisablesUnloadsRegistersAndRefreshes) {
    defaults.set(text("emojiHotkeyKey"), text("j"));
    EXPECT_THAT(callsAfter(Feature::emojiPicker, false), ElementsAre("unloadEmojiPanel", "registerHotkeys"));
    const StatusMenuEntry &entry = delegate->statusMenu().entry(StatusMenuItem::emojiPicker);
    EXPECT_FALSE(entry.isEnabled);
    EXPECT_EQ(label(entry.keyEquivalent), text("⌘⇧J"));
}

TEST_F(FlagReactionsTest, emojiPickerOnEnablesRegistersAndRefreshes) {
    callsAfter(Feature::emojiPicker, false);
    defaults.set(text("emojiHotkeyMode"), text("doubleOption"));
    EXPECT_THAT(callsAfter(Feature::emojiPicker, true), ElementsAre("registerHotkeys"));
    const StatusMenuEntry &entry = delegate->statusMenu().entry(StatusMenuItem::emojiPicker);
    EXPECT_TRUE(entry.isEnabled);
    EXPECT_EQ(label(entry.keyEquivalent), QString());
}

TEST_F(FlagReactionsTest, networkSpeedOffStopsTheMeterAndDraws) {
    EXPECT_THAT(callsAfter(Feature::networkSpeed, false), ElementsAre("stopMeter", "updateStatusItem"));
}

TEST_F(FlagReactionsTest, networkSpeedOnStartsTheMeterAndDraws) {
    callsAfter(Feature::networkSpeed, false);
    EXPECT_THAT(callsAfter(Feature::networkSpeed, true), ElementsAre("startMeter", "updateStatusItem"));
}

TEST_F(FlagReactionsTest, keepAwakeOffTurnsItOff) {
    EXPECT_THAT(callsAfter(Feature::keepAwake, false), ElementsAre("turnOffKeepAwakeIfAwake"));
    EXPECT_THAT(callsAfter(Feature::keepAwake, true), IsEmpty());
}

TEST_F(FlagReactionsTest, cleaningModeOffStopsTheCleaning) {
    EXPECT_THAT(callsAfter(Feature::cleaningMode, false), ElementsAre("stopCleaningIfCleaning"));
    EXPECT_THAT(callsAfter(Feature::cleaningMode, true), IsEmpty());
}

TEST_F(FlagReactionsTest, loFiOffStopsTheMusic) {
    EXPECT_THAT(callsAfter(Feature::loFi, false), ElementsAre("stopLofi"));
    EXPECT_THAT(callsAfter(Feature::loFi, true), IsEmpty());
}

TEST_F(FlagReactionsTest, aChangeOfKeepAwakeSetsTipAndIcon) {
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    const int images = statusItem.imageCount();
    hooks.keepAwake = {true, text("Lid Closed")};
    hooks.onKeepAwakeChange();
    EXPECT_EQ(statusItem.toolTip(), text("Tavrine"));
    time.runPending();
    EXPECT_EQ(statusItem.toolTip(), text("Tavrine — Keep Awake: Lid Closed"));
    EXPECT_EQ(statusItem.imageCount(), images + 1);
    EXPECT_FALSE(statusItem.image().isTemplate);
    hooks.keepAwake = {};
    hooks.onKeepAwakeChange();
    time.runPending();
    EXPECT_EQ(statusItem.toolTip(), text("Tavrine"));
    EXPECT_TRUE(statusItem.image().isTemplate);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

TEST_F(FlagReactionsTest, whileTheSpeedIsShownAChangeOfKeepAwakeDrawsThat) {
    defaults.set(text("showInternetSpeed"), true);
    const int images = statusItem.imageCount();
    hooks.onKeepAwakeChange();
    time.runPending();
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("updateStatusItem"));
    EXPECT_EQ(statusItem.imageCount(), images);
    callsAfter(Feature::networkSpeed, false);
    hooks.onKeepAwakeChange();
    time.runPending();
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    EXPECT_EQ(statusItem.imageCount(), images + 1);
}

TEST_F(FlagReactionsTest, anyFlagMeasuresTheMenuAgainALittleLater) {
    for (const FeatureText &each : featureTexts) {
        outputOf([&] {
            set(each.feature, false);
            time.advance(49ms);
            hooks.calls.clear();
            time.advance(1ms);
        });
        EXPECT_THAT(hooks.takeCalls(), ElementsAre("remeasureQuickActions")) << each.property;
    }
}

TEST_F(FlagReactionsTest, aFlagThatDoesNotChangeSendsNothing) {
    for (const FeatureText &each : featureTexts)
        set(each.feature, true);
    time.advance(49ms);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

TEST_F(FlagReactionsTest, aFlagThatGoesOffAndOnInOneTurnDoesBoth) {
    set(Feature::networkSpeed, false);
    set(Feature::networkSpeed, true);
    time.advance(49ms);
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("stopMeter", "updateStatusItem", "startMeter", "updateStatusItem"));
}

TEST_F(FlagReactionsTest, theAdvancedPanelAnimatesTheMenu) {
    hooks.onShowAdvancedPanelChange();
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    time.runPending();
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("animateQuickActionsHeight 0.36"));
}

} // namespace
} // namespace tavrine
