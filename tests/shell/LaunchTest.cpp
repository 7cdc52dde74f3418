#include "ShellTest.h"
#include "look/Button.h"

#include <QTest>

namespace tavrine {
namespace {

class Launch : public ShellTest {
protected:
    void SetUp() override { desktop.access().setAccessibilityTrusted(true); }

    std::string output(Seconds then = 1s) {
        construct();
        record();
        return outputOf([&] {
            delegate->applicationDidFinishLaunching();
            time.advance(then);
        });
    }
};

TEST_F(Launch, withNoPreferencesEveryFlagIsOnAndTheWelcomeWindowComesAfterAFifthOfASecondWithoutAPrompt) {
    desktop.access().setAccessibilityTrusted(false);
    construct();
    for (const FeatureText &each : featureTexts)
        EXPECT_TRUE(delegate->shell().flags().isOn(each.feature)) << each.property;
    EXPECT_EQ(outputOf([&] { delegate->applicationDidFinishLaunching(); }),
              "[NotchShelf] Starting mouse monitoring (restart #1)\n"
              "DEBUG: Registering Hotkeys...\nDEBUG: Hotkey registered successfully for ID: 1\n"
              "DEBUG: Hotkey registered successfully for ID: 2\nDEBUG: Hotkey registered successfully for ID: 6\n"
              "DEBUG: Hotkey registered successfully for ID: 7\n"
              "[KeepAwake] No battery power source found — assuming plugged in\n");
    time.advance(199ms);
    EXPECT_FALSE(window(LargeWindows::Kind::welcome));
    time.advance(1ms);
    ASSERT_TRUE(window(LargeWindows::Kind::welcome));
    EXPECT_TRUE(window(LargeWindows::Kind::welcome)->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    time.advance(10s);
    EXPECT_EQ(desktop.access().accessibilityPrompts(), 0);
}

TEST_F(Launch, aProgramThatEndsOnTheSecondPageIsWelcomedAgainOnTheFirst) {
    const auto buttons = [this] {
        QStringList visible;
        for (const auto *button : window(LargeWindows::Kind::welcome)->findChildren<look::Button *>()) {
            if (button->isVisible())
                visible.append(button->text());
        }
        return visible;
    };
    static_cast<void>(output());
    EXPECT_THAT(buttons(), Contains(text("Get Started")));
    QTest::keyClick(window(LargeWindows::Kind::welcome), Qt::Key_Return);
    EXPECT_THAT(buttons(), Contains(text("Continue")));
    quietly([this] { delegate.reset(); });
    EXPECT_FALSE(defaults.get<bool>(text("hasCompletedOnboarding")));
    static_cast<void>(output());
    ASSERT_TRUE(window(LargeWindows::Kind::welcome));
    EXPECT_THAT(buttons(), Contains(text("Get Started")));
}

TEST_F(Launch, withOnboardingDoneAndAccessibilityMissingThePromptAppearsAndTheLineEndsInFalse) {
    defaults.set(text("hasCompletedOnboarding"), true);
    desktop.access().setAccessibilityTrusted(false);
    EXPECT_THAT(output(), testing::EndsWith("DEBUG: Accessibility prompt shown, trusted: false\n"
                                            "DEBUG: Accessibility Trusted on Launch: false\n"));
    EXPECT_EQ(desktop.access().accessibilityPrompts(), 1);
    EXPECT_FALSE(window(LargeWindows::Kind::welcome));
}

TEST_F(Launch, withOnboardingDoneAndAccessibilityGivenTheLineEndsInTrue) {
    defaults.set(text("hasCompletedOnboarding"), true);
    EXPECT_THAT(output(), testing::EndsWith("DEBUG: Accessibility Trusted on Launch: true\n"));
    EXPECT_EQ(desktop.access().accessibilityPrompts(), 0);
}

TEST_F(Launch, onADesktopThatHasYetToSayWhatItGrantsTheLineWaitsAndNothingElse) {
    defaults.set(text("hasCompletedOnboarding"), true);
    desktop.access().setAccessibilityTrusted(false);
    desktop.access().keepGrantsBack();
    EXPECT_THAT(output(), Not(HasSubstr("Accessibility")));
    EXPECT_TRUE(manager().isMonitoring());
    desktop.access().setAccessibilityTrusted(true);
    EXPECT_THAT(outputOf([this] { desktop.access().tellGrants(); }),
                testing::EndsWith("DEBUG: Accessibility Trusted on Launch: true\n"));
    EXPECT_EQ(desktop.access().accessibilityPrompts(), 0);
}

TEST_F(Launch, theToolsComeUpInTheirOrder) {
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureNetworkSpeed"), false);
    construct();
    record();
    quietly([&] { delegate->applicationDidFinishLaunching(); });
    EXPECT_THAT(takeCalls(),
                ElementsAre("notchShelf launched", "hot keys", "networkSpeed launched off", "clipboardHistory launched",
                            "snippingTool launched", "screenRecorder launched", "keepAwake launched"));
    time.advance(1min);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Launch, theTrayItemIsDrawnAgainHalfASecondLater) {
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureNetworkSpeed"), false); // nor do its figures
    output(499ms);
    const int images = desktop.statusItem().imageCount();
    time.advance(1ms);
    EXPECT_EQ(desktop.statusItem().imageCount(), images + 1);
    time.advance(1min);
    EXPECT_EQ(desktop.statusItem().imageCount(), images + 1);
}

// What stands at the moment of each call that the launch makes, in one log.
TEST_F(Launch, theStepsComeOneAfterTheOther) {
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureNetworkSpeed"), false);
    defaults.set(text("featureClipboardHistory"), false);
    construct();
    manager().setPaused(false);
    std::vector<std::string> log;
    bool hasUpdater = false;
    const RecordingTool::Note note = [&](const std::string &call) {
        std::string line = call;
        desktop.workspace().setFrontmost(text("org.example.one"), 1001);
        desktop.workspace().setFrontmost(text("org.example.two"), 1002);
        if (!delegate->shell().pasteBack().previouslyActiveApplication())
            line += ", deaf";
        if (hasUpdater)
            line += ", updater";
        line += ", drawn " + std::to_string(desktop.statusItem().imageCount());
        if (manager().isPaused())
            line += ", history paused";
        log.push_back(line);
    };
    for (const FeatureText &each : featureTexts) {
        Tool *&tool = delegate->tools()[each.feature];
        tool = &recorders.emplace_back(each.property, tool, note);
    }
    desktop.hotKeys().setOnInstallation([&] { note("hot keys"); });
    desktop.setOnPackageUpdates([&] {
        hasUpdater = true;
        note("updater starts");
    });
    desktop.access().setAccessibilityTrusted(false);
    desktop.access().setOnAccessibilityPrompt([&] { note("onboarding decided"); });
    quietly([&] { delegate->applicationDidFinishLaunching(); });
    EXPECT_THAT(log, ElementsAre("updater starts, updater, drawn 0", "notchShelf launched, updater, drawn 1",
                                 "hot keys, updater, drawn 1", "networkSpeed launched off, updater, drawn 2",
                                 "clipboardHistory launched off, updater, drawn 2",
                                 "snippingTool launched, updater, drawn 2, history paused",
                                 "screenRecorder launched, updater, drawn 2, history paused",
                                 "keepAwake launched, updater, drawn 2, history paused",
                                 "onboarding decided, updater, drawn 2, history paused"));
    desktop.access().setOnAccessibilityPrompt({});
    desktop.setOnPackageUpdates({});
}

// What is left of the history once it is paused is told like any other, and the newest of it may be a capture.
TEST_F(Launch, theHistoryIsFollowedBeforeItIsPaused) {
    defaults.set(text("hasCompletedOnboarding"), true);
    defaults.set(text("featureClipboardHistory"), false);
    construct();
    const QString file = manager().saveImage(QImage(30, 20, QImage::Format_RGB32)).value_or(QString());
    database.save({QUuid::createUuid(), text("Image"), time.now(), true, false, file});
    delegate->tools().snipping().setWaitingForCapture(true);
    quietly([&] {
        delegate->applicationDidFinishLaunching();
        time.runPending();
    });
    EXPECT_FALSE(delegate->tools().snipping().isWaitingForCapture());
}

// A switch that is flipped before the launch follows them is that of the launch itself: its tool hears of it there.
TEST_F(Launch, theSwitchesAreFollowedFromBehindTheLastToolAndBeforeTheFirstQuestion) {
    defaults.set(text("hasCompletedOnboarding"), true);
    desktop.access().setAccessibilityTrusted(false);
    const auto reactionTo = [this](const std::string &moment) {
        construct();
        set(Feature::snippingTool, true);
        bool isFlipped = false;
        const RecordingTool::Note note = [&](const std::string &call) {
            if (isFlipped)
                calls.push_back(call);
            else if (call == moment) {
                isFlipped = true;
                set(Feature::snippingTool, false);
            }
        };
        for (const FeatureText &each : featureTexts)
            delegate->tools()[each.feature] = &recorders.emplace_back(each.property, nullptr, note);
        desktop.hotKeys().setOnInstallation([&] { note("hot keys"); });
        desktop.access().setOnAccessibilityPrompt([&] { note("question"); });
        quietly([&] {
            delegate->applicationDidFinishLaunching();
            time.advance(1s);
        });
        desktop.access().setOnAccessibilityPrompt({});
        desktop.hotKeys().setOnInstallation({});
        return takeCalls();
    };
    EXPECT_THAT(reactionTo("keepAwake launched"), ElementsAre("question"));
    EXPECT_THAT(reactionTo("question"), ElementsAre("snippingTool off", "hot keys"));
}

TEST_F(Launch, noNoticeIsHeardBeforeTheQuestion) {
    defaults.set(text("hasCompletedOnboarding"), true);
    desktop.access().setAccessibilityTrusted(false);
    construct();
    desktop.access().setOnAccessibilityPrompt([this] { center.post(text("openTavrineEditorRequested")); });
    quietly([&] { delegate->applicationDidFinishLaunching(); });
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    desktop.access().setOnAccessibilityPrompt({});
}

TEST_F(Launch, noticesAreHeardOnceTheLaunchIsOver) {
    defaults.set(text("hasCompletedOnboarding"), true);
    construct();
    center.post(text("openTavrineEditorRequested"));
    EXPECT_FALSE(window(LargeWindows::Kind::editor));
    quietly([&] {
        delegate->applicationDidFinishLaunching();
        center.post(text("openTavrineEditorRequested"));
    });
    EXPECT_TRUE(window(LargeWindows::Kind::editor));
}

TEST_F(Launch, toolsThatAreOffStayDown) {
    defaults.set(text("featureNotchShelf"), false);
    defaults.set(text("featureClipboardHistory"), false);
    output();
    EXPECT_THAT(calls, Contains("notchShelf launched off"));
    EXPECT_FALSE(manager().isMonitoring());
    EXPECT_TRUE(manager().isPaused());
}

TEST_F(Launch, withTheHistoryOnThePollRuns) {
    output();
    EXPECT_TRUE(manager().isMonitoring());
    EXPECT_THAT(calls, Contains("networkSpeed launched"));
}

TEST_F(Launch, aCopyIsRecordedOnceTheProgramIsUp) {
    output();
    desktop.pasteboard().copyFromOutside(text("hello"));
    time.advance(ClipboardManager::pollInterval);
    ASSERT_EQ(manager().history().size(), 1U);
    EXPECT_EQ(manager().history().front().content, text("hello"));
}

TEST_F(Launch, theTrayItemIsVisibleUnlessABoolSaysOtherwise) {
    output();
    EXPECT_TRUE(desktop.statusItem().isVisible());
    defaults.set(text("showInMenuBar"), text("no"));
    output();
    EXPECT_TRUE(desktop.statusItem().isVisible());
    defaults.set(text("showInMenuBar"), false);
    output();
    EXPECT_FALSE(desktop.statusItem().isVisible());
}

TEST_F(Launch, theTrayItemShowsTheTemplateIconAndTheProgramsName) {
    output();
    EXPECT_EQ(desktop.statusItem().toolTip(), text("Tavrine"));
    EXPECT_TRUE(desktop.statusItem().image().isTemplate);
    EXPECT_EQ(desktop.statusItem().image().width, 18);
    EXPECT_EQ(desktop.statusItem().image().height, 18);
}

TEST_F(Launch, makesNothingThatOnlyPanelsNeed) {
    defaults.set(text("hasCompletedOnboarding"), true);
    output(5s);
    EXPECT_FALSE(desktop.hasAskedForPanels());
    EXPECT_FALSE(delegate->shell().panelsIfMade());
    EXPECT_FALSE(delegate->tools().snipping().flowIfMade());
}

TEST_F(Launch, aProgramThatHasEndedHearsOfNothing) {
    output();
    delegate.reset();
    center.post(text("openTavrineEditorRequested"));
    desktop.statusItem().press({10, 10});
    desktop.workspace().setFrontmost(text("org.example.one"), 1001);
    time.advance(1min);
}

} // namespace
} // namespace tavrine
