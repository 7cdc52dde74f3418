// The way from the first press to the recording: overlay, card, microphone, countdown.
#include "base/VirtualKeys.h"
#include "recording/RecorderTest.h"

namespace tavrine {
namespace {

class RecordingSetUp : public RecorderTest {};

// Into the selection.

TEST_F(RecordingSetUp, whileItIsSwitchedOffNothingStarts) {
    isEnabled = false;
    recorder->startScreenRecording();
    EXPECT_EQ(output(), "DEBUG: Screen Recorder is disabled in FeatureFlags.\n");
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(RecordingSetUp, withoutThePermissionThereIsNoWindow) {
    mayCapture = false;
    recorder->startScreenRecording();
    EXPECT_EQ(windows.made(), 0);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(RecordingSetUp, theOverlayCoversTheScreenUnderThePointerAndTakesTheKeyboard) {
    const Screen left = screens.screens().first();
    Screen right = left;
    right.number = 2;
    right.frame = QRectF(1440, 100, 800, 600);
    right.scale = 2;
    screens.setScreens({left, right});
    screens.setMouseLocation({1500, 300});
    recorder->startScreenRecording();
    const auto &overlay = fake(recorder->overlayWindow());
    EXPECT_EQ(overlay.frame(), right.frame);
    EXPECT_TRUE(overlay.isVisible());
    EXPECT_TRUE(overlay.isKey());
    EXPECT_EQ(overlay.description().level, 1000);
    EXPECT_FALSE(overlay.description().hasShadow);
    EXPECT_FALSE(overlay.description().ignoresMouseEvents);
    EXPECT_THAT(events, ElementsAre(text("activate")));
}

TEST_F(RecordingSetUp, aPointerOnNoScreenLeadsToTheMainOne) {
    screens.setMouseLocation({-500, -500});
    recorder->startScreenRecording();
    EXPECT_EQ(recorder->overlayWindow()->frame(), QRectF(0, 0, 1440, 900));
}

TEST_F(RecordingSetUp, withoutAScreenThereIsNoOverlay) {
    screens.setScreens({});
    recorder->startScreenRecording();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(RecordingSetUp, escapeClosesTheOverlayAndIsSwallowed) {
    monitors.setActive(true);
    recorder->startScreenRecording();
    EXPECT_FALSE(monitors.send({.type = eventMask::keyDown, .keyCode = virtualKey::a, .scrollDelta = {}}));
    EXPECT_TRUE(monitors.send({.type = eventMask::keyDown, .keyCode = virtualKey::escape, .scrollDelta = {}}));
    time.runPending();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(monitors.localCount(), 0);
    EXPECT_FALSE(monitors.send({.type = eventMask::keyDown, .keyCode = virtualKey::escape, .scrollDelta = {}}));
}

TEST_F(RecordingSetUp, aDragThatIsTooSmallGivesTheFlowUp) {
    recorder->startScreenRecording();
    recorder->selectionModel()->drag({0, 0}, {10, 200});
    recorder->selectionModel()->endDrag();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(monitors.localCount(), 0);
}

TEST_F(RecordingSetUp, theDesktopMayCloseTheOverlay) {
    recorder->startScreenRecording();
    fake(recorder->overlayWindow()).closeFromOutside();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(RecordingSetUp, aScreenThatGoesTakesTheOverlayWithIt) {
    recorder->startScreenRecording();
    Screen other = screens.screens().first();
    other.frame.setWidth(1024);
    screens.setScreens({other});
    time.runPending();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(RecordingSetUp, aScreenThatOnlyHasAnotherTaskBarKeepsTheOverlay) {
    recorder->startScreenRecording();
    Screen same = screens.screens().first();
    same.visibleFrame.setHeight(500);
    screens.setScreens({same});
    time.runPending();
    EXPECT_TRUE(recorder->overlayWindow());
}

TEST_F(RecordingSetUp, aSecondStartReplacesTheOverlayAndLeavesNoneBehind) {
    recorder->startScreenRecording();
    const PanelWindow *first = recorder->overlayWindow();
    recorder->startScreenRecording();
    EXPECT_NE(recorder->overlayWindow(), first);
    EXPECT_TRUE(first->isVisible()); // it goes once the next is on the screen
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    EXPECT_TRUE(recorder->overlayWindow()->isVisible());
    EXPECT_EQ(monitors.localCount(), 1);
}

// The microphone's switch.

TEST_F(RecordingSetUp, withThePermissionTheMicIsSwitchedInTheCard) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.pressMic();
    EXPECT_TRUE(card.includesMic());
    card.pressMic();
    EXPECT_FALSE(card.includesMic());
}

TEST_F(RecordingSetUp, theMicBeforeItsPermissionWasEverAskedForStartsAnewOnConsent) {
    selectArea().pressMic();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(access.microphonePrompts(), 1);
    time.advance(1min);
    access.answerMicrophone(true);
    EXPECT_FALSE(recorder->overlayWindow()); // in a later turn
    time.runPending();
    ASSERT_TRUE(recorder->selectionModel());
    EXPECT_FALSE(recorder->selectionModel()->isConfirming());
    EXPECT_FALSE(recorder->selectionModel()->includesMic());
}

TEST_F(RecordingSetUp, theMicThatIsRefusedAtItsFirstQuestionShowsThePrompt) {
    selectArea().pressMic();
    access.answerMicrophone(false);
    time.runPending();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(events.last(), text("microphone alert"));
}

TEST_F(RecordingSetUp, theMicThatIsDeniedClosesTheOverlayAndShowsThePrompt) {
    for (const auto state : {MicrophoneAuthorization::restricted, MicrophoneAuthorization::denied}) {
        access.setMicrophone(state);
        events.clear();
        selectArea().pressMic();
        EXPECT_FALSE(recorder->overlayWindow());
        time.runPending();
        EXPECT_EQ(events.last(), text("microphone alert"));
        EXPECT_EQ(access.microphonePrompts(), 0);
    }
}

TEST_F(RecordingSetUp, theAnswerToTheMicOfARecorderThatHasGoneIsLeftAlone) {
    selectArea().pressMic();
    recorder.reset();
    access.answerMicrophone(true);
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

// The start from the card.

TEST_F(RecordingSetUp, theAreaIsHandedOverInBothPlanes) {
    record();
    const auto &stream = *streams.streams().front();
    EXPECT_EQ(stream.configuration.sourceRect, QRectF(100, 200, 320, 240));
    EXPECT_EQ(stream.filter.displayID, 1U);
}

TEST_F(RecordingSetUp, withoutASwitchThereIsNoSoundAndNoQuestion) {
    record();
    EXPECT_EQ(access.microphonePrompts(), 0);
    EXPECT_THAT(microphones.sessions(), IsEmpty());
    EXPECT_EQ(writers.movies.front()->audio, std::nullopt);
}

TEST_F(RecordingSetUp, theSystemSwitchAloneRecordsTheMicrophone) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    ASSERT_TRUE(happens([this] { return microphones.sessions().size() == 1 && recorder->isRecording(); }));
    awaitPicture();
    const QByteArray sound(8, '\1');
    microphones.deliver({2s, sound});
    ASSERT_TRUE(happens([&] { return sound.isDetached(); })); // whoever was given it has done with it
    recorder->stopRecording();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_THAT(writers.movies.front()->sounds, ElementsAre(2s));
}

TEST_F(RecordingSetUp, theSystemSwitchWithADeniedMicrophoneShowsThePromptAndRecordsNothing) {
    access.setMicrophone(MicrophoneAuthorization::denied);
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    EXPECT_TRUE(recorder->overlayWindow()); // it is the prompt that takes it away
    time.advance(1min);
    EXPECT_EQ(events.last(), text("microphone alert"));
    EXPECT_THAT(writers.movies, IsEmpty());
    EXPECT_FALSE(recorder->floatingStopWindow());
}

TEST_F(RecordingSetUp, aMicrophoneGrantedAtTheStartRecords) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    EXPECT_TRUE(recorder->overlayWindow()); // the card waits
    access.answerMicrophone(true);
    EXPECT_TRUE(happens([this] { return recorder->isRecording(); }));
    EXPECT_EQ(microphones.sessions().size(), 1U);
}

TEST_F(RecordingSetUp, aMicrophoneRefusedAtTheStartRecordsNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    access.answerMicrophone(false);
    time.advance(1min);
    EXPECT_EQ(events.last(), text("microphone alert"));
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingSetUp, aQuestionForTheMicrophoneThatWasLeftOpenIsAskedOnceMore) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    access.answerMicrophone(false);
    access.setMicrophone(MicrophoneAuthorization::notDetermined); // closed without an answer
    time.runPending();
    EXPECT_EQ(access.microphonePrompts(), 2);
    EXPECT_TRUE(recorder->overlayWindow());
    EXPECT_FALSE(events.contains(text("microphone alert")));
    access.answerMicrophone(true); // it starts nothing by itself
    time.advance(1min);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingSetUp, aRefusalThatReadsAsAPermissionDoesNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    events.clear();
    access.answerMicrophone(false);
    access.setMicrophone(MicrophoneAuthorization::authorized); // given elsewhere, before the answer is looked at
    time.advance(1min);
    EXPECT_TRUE(recorder->overlayWindow());
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(access.microphonePrompts(), 1);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingSetUp, aMicrophoneThatIsRestrictedShowsThePromptAndRecordsNothing) {
    access.setMicrophone(MicrophoneAuthorization::restricted);
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    time.advance(1min);
    EXPECT_EQ(events.last(), text("microphone alert"));
    EXPECT_EQ(access.microphonePrompts(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingSetUp, aRefusalThatReadsAsARestrictionShowsThePromptAndRecordsNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    access.answerMicrophone(false);
    access.setMicrophone(MicrophoneAuthorization::restricted);
    time.advance(1min);
    EXPECT_EQ(events.last(), text("microphone alert"));
    EXPECT_EQ(access.microphonePrompts(), 1);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingSetUp, twoPressesOnStartAreOneRecording) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    card.start();
    access.answerMicrophone(true);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    time.advance(1s);
    EXPECT_EQ(writers.movies.size(), 1U);
}

TEST_F(RecordingSetUp, aCardThatIsGivenUpMeanwhileRecordsNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    card.cancel();
    access.answerMicrophone(true);
    time.advance(1min);
    EXPECT_THAT(writers.movies, IsEmpty());
}

// The countdown.

TEST_F(RecordingSetUp, aDelayIsCountedDownSecondBySecond) {
    auto &card = selectArea();
    card.setTimerDelay(3);
    card.start();
    EXPECT_FALSE(recorder->overlayWindow());
    ASSERT_TRUE(recorder->countdownWindow());
    const auto &window = fake(recorder->countdownWindow());
    EXPECT_EQ(window.frame(), QRectF(0, 0, 1440, 900));
    EXPECT_TRUE(window.description().ignoresMouseEvents);
    EXPECT_EQ(window.description().level, 1000);
    EXPECT_FALSE(window.isKey());
    time.advance(2'999ms);
    EXPECT_FALSE(recorder->borderOverlayWindow());
    EXPECT_THAT(writers.movies, IsEmpty());
    time.advance(1ms);
    EXPECT_FALSE(recorder->countdownWindow());
    EXPECT_TRUE(recorder->borderOverlayWindow());
    EXPECT_TRUE(happens([this] { return recorder->isRecording(); }));
}

TEST_F(RecordingSetUp, aCountdownThatIsFollowedByAnotherGivesWay) {
    for (int i = 0; i < 2; ++i) {
        auto &card = selectArea();
        card.setTimerDelay(5);
        card.start();
        time.advance(2s);
    }
    time.advance(3s);
    EXPECT_TRUE(happens([this] { return recorder->isRecording(); }));
    EXPECT_EQ(writers.movies.size(), 1U);
    EXPECT_FALSE(recorder->countdownWindow());
}

} // namespace
} // namespace tavrine
