#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "shell/PermissionChecker.h"
#include "shell/WindowManager.h"

#include <QStringList>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

QString string(const char *text) {
    return QString::fromUtf8(text);
}

class PermissionCheckerTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAccess access;
    std::unique_ptr<PermissionChecker> checker = std::make_unique<PermissionChecker>(access, time);
};

TEST_F(PermissionCheckerTest, knowsNothingUntilTheNextTurn) {
    access.setAccessibilityTrusted(true);
    access.setScreenCaptureGranted(true);
    EXPECT_FALSE(checker->accessibilityGranted());
    EXPECT_FALSE(checker->screenRecordingGranted());
    time.runPending();
    EXPECT_TRUE(checker->accessibilityGranted());
    EXPECT_TRUE(checker->screenRecordingGranted());
}

TEST_F(PermissionCheckerTest, seesAGrantWithinTwoSeconds) {
    time.runPending();
    access.setAccessibilityTrusted(true);
    time.advance(1999ms);
    EXPECT_FALSE(checker->accessibilityGranted());
    time.advance(1ms);
    EXPECT_TRUE(checker->accessibilityGranted());
    EXPECT_FALSE(checker->screenRecordingGranted());
}

TEST_F(PermissionCheckerTest, seesAGrantThatIsTakenAway) {
    access.setScreenCaptureGranted(true);
    time.advance(2s);
    access.setScreenCaptureGranted(false);
    time.advance(2s);
    EXPECT_FALSE(checker->screenRecordingGranted());
}

TEST_F(PermissionCheckerTest, tellsOfEachChangeOnce) {
    int changes = 0;
    QObject::connect(checker.get(), &PermissionChecker::accessibilityGrantedChanged, [&] { ++changes; });
    QObject::connect(checker.get(), &PermissionChecker::screenRecordingGrantedChanged, [&] { changes += 10; });
    time.advance(10s);
    EXPECT_EQ(changes, 0);
    access.setAccessibilityTrusted(true);
    time.advance(10s);
    EXPECT_EQ(changes, 1);
    access.setScreenCaptureGranted(true);
    time.advance(10s);
    EXPECT_EQ(changes, 11);
}

TEST_F(PermissionCheckerTest, looksOneSecondAfterItsRequest) {
    time.advance(500ms); // the poll would look at 2.0 s
    checker->requestAccessibility();
    EXPECT_EQ(access.accessibilityPrompts(), 1);
    access.setAccessibilityTrusted(true);
    time.advance(999ms);
    EXPECT_FALSE(checker->accessibilityGranted());
    time.advance(1ms);
    EXPECT_TRUE(checker->accessibilityGranted());
}

TEST_F(PermissionCheckerTest, looksOneSecondAfterTheRequestForTheScreen) {
    time.advance(500ms);
    checker->requestScreenRecording();
    EXPECT_EQ(access.screenCapturePrompts(), 1);
    access.setScreenCaptureGranted(true);
    time.advance(999ms);
    EXPECT_FALSE(checker->screenRecordingGranted());
    time.advance(1ms);
    EXPECT_TRUE(checker->screenRecordingGranted());
}

TEST_F(PermissionCheckerTest, pollsWithoutAPrompt) {
    time.advance(60s);
    EXPECT_EQ(access.accessibilityPrompts(), 0);
    EXPECT_EQ(access.screenCapturePrompts(), 0);
    EXPECT_EQ(access.probes(), 0);
}

TEST_F(PermissionCheckerTest, stopsWithItsOwner) {
    checker->requestAccessibility();
    EXPECT_EQ(time.timerCount(), 1);
    checker.reset();
    EXPECT_EQ(time.timerCount(), 0);
    time.advance(10s);
}

class WindowManagerTest : public testing::Test {
protected:
    WindowManagerTest() {
        alerts.setWhileShown([this] { order.append(string("alert")); });
    }
    /// What `work` printed.
    template <class Work>
    static QString printed(Work work) {
        testing::internal::CaptureStdout();
        work();
        return QString::fromStdString(testing::internal::GetCapturedStdout());
    }

    VirtualTime time;
    FakeAccess access;
    FakeAlerts alerts;
    FakeUrlOpener urlOpener;
    QStringList order;
    WindowManager manager{{access, alerts, urlOpener, time, [this] { order.append(string("clear")); },
                           [this] { order.append(string("activate")); }}};
};

TEST_F(WindowManagerTest, aTrustedProgramIsTrustedWithoutAPrompt) {
    access.setAccessibilityTrusted(true);
    for (const Prompt prompt : {Prompt::never, Prompt::allowed}) {
        EXPECT_EQ(printed([&] { EXPECT_TRUE(manager.isAccessibilityTrusted(prompt)); }),
                  string("DEBUG: Accessibility already trusted\n"));
    }
    EXPECT_EQ(access.accessibilityPrompts(), 0);
}

TEST_F(WindowManagerTest, withoutAllowanceThereIsNoPromptAndNoLine) {
    EXPECT_EQ(printed([&] { EXPECT_FALSE(manager.isAccessibilityTrusted(Prompt::never)); }), QString());
    EXPECT_EQ(access.accessibilityPrompts(), 0);
}

TEST_F(WindowManagerTest, anUntrustedProgramPromptsEachTime) {
    for (int prompts = 1; prompts <= 2; ++prompts) {
        EXPECT_EQ(printed([&] { EXPECT_FALSE(manager.isAccessibilityTrusted(Prompt::allowed)); }),
                  string("DEBUG: Accessibility prompt shown, trusted: false\n"));
        EXPECT_EQ(access.accessibilityPrompts(), prompts);
    }
}

TEST_F(WindowManagerTest, aPromptThatIsGrantedAtOnceIsTrust) {
    access.grantNextAccessibilityRequest();
    EXPECT_EQ(printed([&] { EXPECT_TRUE(manager.isAccessibilityTrusted(Prompt::allowed)); }),
              string("DEBUG: Accessibility prompt shown, trusted: true\n"));
}

TEST_F(WindowManagerTest, aGrantedScreenMayBeCapturedAtOnce) {
    access.setScreenCaptureGranted(true);
    EXPECT_TRUE(manager.mayCaptureScreen());
    time.runPending();
    EXPECT_EQ(access.screenCapturePrompts(), 0);
    EXPECT_EQ(access.probes(), 0);
    EXPECT_THAT(alerts.shown(), IsEmpty());
}

TEST_F(WindowManagerTest, aRequestThatIsGrantedStopsWithoutAnAlertSoThatThePersonStartsAgain) {
    access.grantNextScreenCaptureRequest();
    EXPECT_FALSE(manager.mayCaptureScreen());
    time.runPending();
    EXPECT_EQ(access.probes(), 0);
    EXPECT_THAT(alerts.shown(), IsEmpty());
    EXPECT_TRUE(manager.mayCaptureScreen());
}

TEST_F(WindowManagerTest, aRefusedRequestProbesAndThenShowsTheAlert) {
    EXPECT_FALSE(manager.mayCaptureScreen());
    EXPECT_EQ(access.screenCapturePrompts(), 1);
    EXPECT_EQ(access.probes(), 1);
    EXPECT_THAT(alerts.shown(), IsEmpty()) << "not within the call";
    time.runPending();
    EXPECT_EQ(
        alerts.shown(),
        (QList<Alert>{{string("Screen Recording Permission Required"),
                       string("To capture screenshots, this app needs Screen Recording access. Please grant access "
                              "in System Settings > Privacy & Security > Screen Recording."),
                       {string("Open Settings"), string("Cancel")}}}));
    EXPECT_THAT(urlOpener.opened(), IsEmpty());
}

TEST_F(WindowManagerTest, theFirstButtonOfTheScreenAlertOpensItsSettings) {
    alerts.answerNextWithFirstButton();
    manager.showScreenRecordingAlert();
    EXPECT_EQ(urlOpener.opened(), QList{QUrl(string("x-apple.systempreferences:com.apple.preference.security?"
                                                    "Privacy_ScreenCapture"))});
    EXPECT_EQ(order, QStringList{string("alert")}) << "no window is cleared for it";
}

TEST_F(WindowManagerTest, aFailedProbeSaysSo) {
    access.setProbeError(string("declined"));
    manager.probeScreenCapture();
    EXPECT_EQ(printed([&] { access.finishProbes(); }),
              string("Debug: SCShareableContent check failed (Expected if permission denied): declined\n"));
}

TEST_F(WindowManagerTest, aProbeThatSucceedsSaysNothing) {
    access.setScreenCaptureGranted(true);
    manager.probeScreenCapture();
    EXPECT_EQ(printed([&] { access.finishProbes(); }), QString());
}

TEST_F(WindowManagerTest, anAuthorizedMicrophoneIsHeard) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    EXPECT_TRUE(manager.checkMicrophonePermission());
    time.runPending();
    EXPECT_EQ(access.microphonePrompts(), 0);
    EXPECT_THAT(order, IsEmpty());
}

TEST_F(WindowManagerTest, anUndeterminedMicrophoneIsAskedForAndItsAnswerIgnored) {
    EXPECT_FALSE(manager.checkMicrophonePermission());
    EXPECT_EQ(access.microphonePrompts(), 1);
    access.answerMicrophone(false);
    time.runPending();
    EXPECT_THAT(order, IsEmpty()) << "no alert follows the first refusal";
}

TEST_F(WindowManagerTest, aDeniedMicrophoneShowsTheAlertAfterTheSelectionWindowIsGone) {
    for (const auto state : {MicrophoneAuthorization::denied, MicrophoneAuthorization::restricted}) {
        order.clear();
        access.setMicrophone(state);
        EXPECT_FALSE(manager.checkMicrophonePermission());
        EXPECT_THAT(order, IsEmpty()) << "not within the call";
        time.runPending();
        EXPECT_EQ(order, (QStringList{string("clear"), string("activate"), string("alert")}));
    }
    EXPECT_EQ(access.microphonePrompts(), 0);
    EXPECT_EQ(
        alerts.shown().first(),
        (Alert{string("Microphone Permission Required"),
               string("Tavrine needs Microphone access to record audio during screen recording. Please grant access "
                      "in System Settings > Privacy & Security > Microphone."),
               {string("Open System Settings"), string("Cancel")}}));
    EXPECT_THAT(urlOpener.opened(), IsEmpty());
}

TEST_F(WindowManagerTest, theFirstButtonOfTheMicrophoneAlertOpensItsSettings) {
    alerts.answerNextWithFirstButton();
    manager.showMicrophoneAlert();
    EXPECT_EQ(urlOpener.opened(), QList{QUrl(string("x-apple.systempreferences:com.apple.preference.security?"
                                                    "Privacy_Microphone"))});
}

TEST(MicrophoneAuthorizationNumbers, areThoseOfThePlatform) {
    EXPECT_EQ(static_cast<int>(MicrophoneAuthorization::notDetermined), 0);
    EXPECT_EQ(static_cast<int>(MicrophoneAuthorization::authorized), 3);
}

} // namespace
} // namespace tavrine
