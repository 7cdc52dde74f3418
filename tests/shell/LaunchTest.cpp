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

// What stands at the moment of each call that the launch makes, in one log.
TEST_F(Launch, theStepsComeOneAfterTheOther) {
    std::vector<std::string> log;

    class LoggingUpdater final : public Updater {
    public:
        explicit LoggingUpdater(std::function<void()> onStart) : m_onStart(std::move(onStart)) {}
        void start() override { m_onStart(); }
        void checkForUpdates() override {}

    private:
        std::function<void()> m_onStart;
    };

    class LoggingHooks final : public ToolHooks {
    public:
        explicit LoggingHooks(std::function<void(const char *)> note) : m_note(std::move(note)) {}
        void showNotch() override { m_note("shelf"); }
        void registerHotkeys() override { m_note("hot keys"); }
        void startSpeedObservers() override { m_note("speed observers"); }
        void stopMeter() override { m_note("meter off"); }
        void setOnSnipComplete(const std::function<void(const QImage &)> &) override { m_note("snips"); }
        void setOnKeepAwakeChange(const std::function<void()> &) override { m_note("flags"); }
        bool accessibilityTrusted(bool) override {
            m_note("onboarding");
            return true;
        }
        void updateStatusItem() override { m_note("second draw"); }
        void openMainWindow(const QString &) override { ++requests; }
        int requests = 0;

    private:
        std::function<void(const char *)> m_note;
    };

    LoggingHooks *tools = nullptr;
    const auto state = [&] {
        std::string text;
        workspace.setFrontmost(QStringLiteral("org.example.one"), 1001);
        workspace.setFrontmost(QStringLiteral("org.example.two"), 1002);
        if (!delegate->previouslyActiveApplication())
            text += ", deaf";
        if (statusItem.imageCount() > 0)
            text += ", tray item";
        if (manager->isPaused())
            text += ", history paused";
        const int before = tools->requests;
        center.post(QLatin1String("openLofiSettingsRequested"));
        if (tools->requests > before)
            text += ", observers";
        return text;
    };
    LoggingUpdater logged([&] { log.push_back("updater" + state()); });
    LoggingHooks loggingHooks([&](const char *call) { log.push_back(call + state()); });
    tools = &loggingHooks;
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureNetworkSpeed"), false);
    defaults.set(text("featureClipboardHistory"), false);
    construct();
    delegate =
        std::make_unique<AppDelegate>(AppDelegate::Ports{time, defaults, center, workspace, statusItem, application,
                                                         logged, *manager, *flags, *experience, loggingHooks});
    manager->setPaused(false);
    outputOf([&] {
        delegate->applicationDidFinishLaunching();
        time.advance(500ms);
    });
    EXPECT_THAT(log, ElementsAre("updater", "shelf, tray item", "hot keys, tray item", "speed observers, tray item",
                                 "meter off, tray item", "snips, tray item, history paused",
                                 "flags, tray item, history paused", "onboarding, tray item, history paused",
                                 "second draw, tray item, history paused, observers"));
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
