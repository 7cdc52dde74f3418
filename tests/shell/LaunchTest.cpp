#include "ShellTest.h"

namespace tavrine {
namespace {

class Launch : public ShellTest {
protected:
    std::string output(Seconds then = 1s) {
        construct();
        return outputOf([&] {
            delegate->applicationDidFinishLaunching();
            time.advance(then);
        });
    }
};

TEST_F(Launch, withNoPreferencesEveryFlagIsOnAndTheWelcomeWindowComesAfterAFifthOfASecondWithoutAPrompt) {
    construct();
    for (const FeatureText &each : featureTexts)
        EXPECT_TRUE(flags->isOn(each.feature)) << each.property;
    EXPECT_EQ(outputOf([&] { delegate->applicationDidFinishLaunching(); }), "DEBUG: Registering Hotkeys...\n");
    time.advance(199ms);
    EXPECT_THAT(hooks.calls, testing::Not(testing::Contains("showOnboarding")));
    time.advance(1ms);
    EXPECT_THAT(hooks.calls, testing::Contains("showOnboarding"));
    time.advance(10s);
    EXPECT_THAT(hooks.calls, testing::Not(testing::Contains(HasSubstr("accessibilityTrusted"))));
}

TEST_F(Launch, withOnboardingDoneAndAccessibilityMissingThePromptAppearsAndTheLineEndsInFalse) {
    defaults.set(text("hasCompletedOnboarding"), true);
    hooks.isTrusted = false;
    EXPECT_EQ(output(), "DEBUG: Registering Hotkeys...\nDEBUG: Accessibility Trusted on Launch: false\n");
    EXPECT_THAT(hooks.calls, testing::Contains("accessibilityTrusted, prompt allowed").Times(1));
    EXPECT_THAT(hooks.calls, testing::Not(testing::Contains("showOnboarding")));
}

TEST_F(Launch, withOnboardingDoneAndAccessibilityGivenTheLineEndsInTrue) {
    defaults.set(text("hasCompletedOnboarding"), true);
    EXPECT_EQ(output(), "DEBUG: Registering Hotkeys...\nDEBUG: Accessibility Trusted on Launch: true\n");
}

TEST_F(Launch, theToolsComeUpInTheirOrder) {
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureNetworkSpeed"), false);
    construct();
    outputOf([&] { delegate->applicationDidFinishLaunching(); });
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("showNotch", "registerHotkeys", "startSpeedObservers", "stopMeter",
                                               "setOnSnipComplete", "setOnKeepAwakeChange",
                                               "setOnShowAdvancedPanelChange", "accessibilityTrusted, prompt allowed"));
    time.runPending();
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("animateQuickActionsHeight 0.36"));
    time.advance(499ms);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
    time.advance(1ms);
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("updateStatusItem"));
    time.advance(1min);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

TEST_F(Launch, theTrayItemStandsBeforeTheTools) {
    struct Looker final : ToolHooks {
        FakeStatusItem &item;
        FakeUpdater &updater;
        int imagesAtNotch = -1;
        int startsAtNotch = -1;
        Looker(FakeStatusItem &theItem, FakeUpdater &theUpdater) : item(theItem), updater(theUpdater) {}
        void showNotch() override {
            imagesAtNotch = item.imageCount();
            startsAtNotch = updater.starts();
        }
    } looker(statusItem, updater);
    construct();
    delegate = std::make_unique<AppDelegate>(AppDelegate::Ports{
        time, defaults, center, workspace, statusItem, application, updater, *manager, *flags, *experience, looker});
    outputOf([&] { delegate->applicationDidFinishLaunching(); });
    EXPECT_EQ(looker.imagesAtNotch, 1);
    EXPECT_EQ(looker.startsAtNotch, 1);
    EXPECT_EQ(updater.starts(), 1);
}

TEST_F(Launch, toolsThatAreOffStayDown) {
    defaults.set(text("featureNotchShelf"), false);
    defaults.set(text("featureClipboardHistory"), false);
    output();
    EXPECT_THAT(hooks.calls, testing::Not(testing::Contains("showNotch")));
    EXPECT_FALSE(manager->isMonitoring());
    EXPECT_TRUE(manager->isPaused());
}

TEST_F(Launch, withTheHistoryOnThePollRunsAndTheMeterIsLeftAlone) {
    output();
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_THAT(hooks.calls, testing::Not(testing::Contains("stopMeter")));
}

TEST_F(Launch, aCopyIsRecordedOnceTheProgramIsUp) {
    output();
    pasteboard.copyFromOutside(text("hello"));
    time.advance(ClipboardManager::pollInterval);
    ASSERT_EQ(manager->history().size(), 1U);
    EXPECT_EQ(manager->history().front().content, text("hello"));
}

TEST_F(Launch, theTrayItemIsVisibleUnlessABoolSaysOtherwise) {
    output();
    EXPECT_TRUE(statusItem.isVisible());
    defaults.set(text("showInMenuBar"), text("no"));
    output();
    EXPECT_TRUE(statusItem.isVisible());
    defaults.set(text("showInMenuBar"), false);
    output();
    EXPECT_FALSE(statusItem.isVisible());
}

TEST_F(Launch, theTrayItemShowsTheTemplateIconAndTheProgramsName) {
    output();
    EXPECT_EQ(statusItem.toolTip(), text("Tavrine"));
    EXPECT_TRUE(statusItem.image().isTemplate);
    EXPECT_EQ(statusItem.image().width, 18);
    EXPECT_EQ(statusItem.image().height, 18);
}

TEST_F(Launch, aSnipGoesToTheToolThatPresentsItWhileTheProgramLives) {
    output();
    hooks.calls.clear();
    hooks.onSnipComplete(QImage());
    EXPECT_THAT(hooks.takeCalls(), ElementsAre("presentSnip"));
    delegate.reset();
    hooks.onSnipComplete(QImage());
    hooks.onKeepAwakeChange();
    time.advance(1s);
    EXPECT_THAT(hooks.takeCalls(), IsEmpty());
}

} // namespace
} // namespace tavrine
