// The way from the first press to the preview.
#include "base/VirtualKeys.h"
#include "recording/RecorderTest.h"

namespace tavrine {
namespace {

class Recorder : public RecorderTest {};

// Into the selection.

TEST_F(Recorder, whileItIsSwitchedOffNothingStarts) {
    isEnabled = false;
    recorder->startScreenRecording();
    EXPECT_EQ(output(), "DEBUG: Screen Recorder is disabled in FeatureFlags.\n");
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(Recorder, withoutThePermissionThereIsNoWindow) {
    mayCapture = false;
    recorder->startScreenRecording();
    EXPECT_EQ(windows.made(), 0);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Recorder, theOverlayCoversTheScreenUnderThePointerAndTakesTheKeyboard) {
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

TEST_F(Recorder, aPointerOnNoScreenLeadsToTheMainOne) {
    screens.setMouseLocation({-500, -500});
    recorder->startScreenRecording();
    EXPECT_EQ(recorder->overlayWindow()->frame(), QRectF(0, 0, 1440, 900));
}

TEST_F(Recorder, withoutAScreenThereIsNoOverlay) {
    screens.setScreens({});
    recorder->startScreenRecording();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(Recorder, escapeClosesTheOverlayAndIsSwallowed) {
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

TEST_F(Recorder, aDragThatIsTooSmallGivesTheFlowUp) {
    selectArea({0, 0, 10, 200});
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(monitors.localCount(), 0);
}

TEST_F(Recorder, theDesktopMayCloseTheOverlay) {
    recorder->startScreenRecording();
    fake(recorder->overlayWindow()).closeFromOutside();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(Recorder, aScreenThatGoesTakesTheOverlayWithIt) {
    recorder->startScreenRecording();
    Screen other = screens.screens().first();
    other.frame.setWidth(1024);
    screens.setScreens({other});
    time.runPending();
    EXPECT_FALSE(recorder->overlayWindow());
}

TEST_F(Recorder, aScreenThatOnlyHasAnotherTaskBarKeepsTheOverlay) {
    recorder->startScreenRecording();
    Screen same = screens.screens().first();
    same.visibleFrame.setHeight(500);
    screens.setScreens({same});
    time.runPending();
    EXPECT_TRUE(recorder->overlayWindow());
}

TEST_F(Recorder, aSecondStartReplacesTheOverlayAndLeavesNoneBehind) {
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

TEST_F(Recorder, withThePermissionTheMicIsSwitchedInTheCard) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.pressMic();
    EXPECT_TRUE(card.includesMic());
    card.pressMic();
    EXPECT_FALSE(card.includesMic());
}

TEST_F(Recorder, theMicBeforeItsPermissionWasEverAskedForStartsAnewOnConsent) {
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

TEST_F(Recorder, theMicThatIsRefusedAtItsFirstQuestionShowsThePrompt) {
    selectArea().pressMic();
    access.answerMicrophone(false);
    time.runPending();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(events.last(), text("microphone alert"));
}

TEST_F(Recorder, theMicThatIsDeniedClosesTheOverlayAndShowsThePrompt) {
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

TEST_F(Recorder, theAnswerToTheMicOfARecorderThatHasGoneIsLeftAlone) {
    selectArea().pressMic();
    recorder.reset();
    access.answerMicrophone(true);
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

// The start from the card.

TEST_F(Recorder, theAreaIsHandedOverInBothPlanes) {
    record();
    const auto &stream = *streams.streams().front();
    EXPECT_EQ(stream.configuration.sourceRect, QRectF(100, 200, 320, 240));
    EXPECT_EQ(stream.filter.displayID, 1U);
}

TEST_F(Recorder, withoutASwitchThereIsNoSoundAndNoQuestion) {
    record();
    EXPECT_EQ(access.microphonePrompts(), 0);
    EXPECT_THAT(microphones.sessions(), IsEmpty());
    EXPECT_EQ(writers.movies.front()->audio, std::nullopt);
}

TEST_F(Recorder, theSystemSwitchAloneRecordsTheMicrophone) {
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

TEST_F(Recorder, theSystemSwitchWithADeniedMicrophoneShowsThePromptAndRecordsNothing) {
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

TEST_F(Recorder, aMicrophoneGrantedAtTheStartRecords) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    EXPECT_TRUE(recorder->overlayWindow()); // the card waits
    access.answerMicrophone(true);
    EXPECT_TRUE(happens([this] { return recorder->isRecording(); }));
    EXPECT_EQ(microphones.sessions().size(), 1U);
}

TEST_F(Recorder, aMicrophoneRefusedAtTheStartRecordsNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    access.answerMicrophone(false);
    time.advance(1min);
    EXPECT_EQ(events.last(), text("microphone alert"));
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(Recorder, aQuestionForTheMicrophoneThatWasLeftOpenIsAskedOnceMore) {
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

TEST_F(Recorder, twoPressesOnStartAreOneRecording) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    card.start();
    access.answerMicrophone(true);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    time.advance(1s);
    EXPECT_EQ(writers.movies.size(), 1U);
}

TEST_F(Recorder, aCardThatIsGivenUpMeanwhileRecordsNothing) {
    auto &card = selectArea();
    card.flipSystemAudio();
    card.start();
    card.cancel();
    access.answerMicrophone(true);
    time.advance(1min);
    EXPECT_THAT(writers.movies, IsEmpty());
}

// The countdown.

TEST_F(Recorder, aDelayIsCountedDownSecondBySecond) {
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

TEST_F(Recorder, aCountdownThatIsFollowedByAnotherGivesWay) {
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

// The recording.

TEST_F(Recorder, theBorderAndTheBarAreThereBeforeTheRecordingAndAreLeftOutOfIt) {
    streams.setContent({.displays = {{1}}, .windows = {{1}, {2}, {3}, {4}}});
    selectArea().start();
    EXPECT_FALSE(recorder->borderOverlayWindow()); // both come in a later turn
    time.runPending();
    auto &border = fake(recorder->borderOverlayWindow());
    auto &bar = fake(recorder->floatingStopWindow());
    EXPECT_EQ(border.frame(), QRectF(0, 0, 1440, 900));
    EXPECT_TRUE(border.description().ignoresMouseEvents);
    EXPECT_FALSE(bar.description().ignoresMouseEvents);
    EXPECT_EQ(bar.frame(), QRectF((1440 - 200) / 2.0, 900 - 40 - 40, 200, 40));
    for (const auto *window : {&border, &bar}) {
        EXPECT_EQ(window->description().sharing, WindowSharing::none);
        EXPECT_EQ(window->description().level, 1000);
        EXPECT_FALSE(window->description().hasShadow);
        EXPECT_FALSE(window->isKey());
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_THAT(streams.streams().front()->filter.excludingWindows,
                ElementsAre(border.windowNumber(), bar.windowNumber()));
}

TEST_F(Recorder, theBarShowsNothingUntilTheRecordingRuns) {
    streams.beSlow();
    selectArea().start();
    time.advance(10s);
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(recorder->recordingDuration(), 0s);
    streams.answerAll();
    time.runPending();
    streams.answerAll();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    time.advance(2'999ms);
    EXPECT_EQ(recorder->recordingDuration(), 2s);
}

TEST_F(Recorder, theNextRecordingBeginsAtZeroAndKnowsNothingOfTheLast) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.pressMic();
    card.start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    mediaNow += 7s;
    time.advance(7s);
    ASSERT_TRUE(recorder->isMicrophoneSilent());
    selectArea(); // over the recording, which goes on
    EXPECT_EQ(recorder->recordingDuration(), 7s);
    recorder->selectionModel()->start();
    EXPECT_EQ(recorder->recordingDuration(), 0s); // the bar that is made now shows it
    EXPECT_FALSE(recorder->isMicrophoneSilent());
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    time.advance(2s);
    recorder->stopRecording();
    EXPECT_EQ(recorder->recordingDuration(), 2s);
    streams.beSlow();
    selectArea().start();
    time.runPending();
    EXPECT_TRUE(recorder->floatingStopWindow());
    EXPECT_EQ(recorder->recordingDuration(), 0s);
    streams.answerAll();
}

TEST_F(Recorder, aClockThatIsSetAndAMachineThatSleepsChangeNeitherTheBarNorTheMovie) {
    record();
    time.advance(2s);
    time.setWallClock({time.now().secondsSince1970 - 86'400.0 * 400});
    time.setSystemUptime(time.systemUptime() + 8h);
    time.runPending();
    EXPECT_EQ(recorder->recordingDuration(), 2s);
    time.advance(3s);
    EXPECT_EQ(recorder->recordingDuration(), 5s);
    mediaNow = 6s;
    recorder->stopRecording();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(writers.movies.front()->end, 6s);
}

TEST_F(Recorder, theBarStaysWithinReachWhenItsScreenGoes) {
    const Screen left = screens.screens().first();
    Screen right = left;
    right.number = 2;
    right.frame = right.visibleFrame = QRectF(1440, 100, 800, 600);
    screens.setScreens({left, right});
    screens.setMouseLocation({1500, 300});
    streams.setContent({.displays = {{1}, {2}}, .windows = {}});
    record();
    const QRectF there = recorder->floatingStopWindow()->frame();
    EXPECT_TRUE(right.frame.contains(there));
    Screen higher = right;
    higher.frame = higher.visibleFrame = QRectF(1440, 0, 800, 900);
    screens.setScreens({left, higher});
    EXPECT_EQ(recorder->floatingStopWindow()->frame(), there); // it is on a screen
    screens.setScreens({left});
    EXPECT_TRUE(left.frame.contains(recorder->floatingStopWindow()->frame()));
    EXPECT_EQ(recorder->floatingStopWindow()->frame().size(), there.size());
    EXPECT_TRUE(recorder->isRecording()); // the person ends it
}

TEST_F(Recorder, theMovieLiesInTheFolderOfTemporaryFiles) {
    record();
    const QString path = *recorder->tempOutputPath();
    EXPECT_EQ(QFileInfo(path).path(), folders.temporary);
    EXPECT_THAT(path.toStdString(), testing::MatchesRegex(".*/tavrine-rec-[0-9A-F-]{36}\\.mp4"));
    EXPECT_EQ(writers.movies.front()->path, path);
}

TEST_F(Recorder, aRecordingThatCannotStartTakesItsWindowsAway) {
    streams.failNextStart(text("no screen"));
    selectArea().start();
    ASSERT_TRUE(happens([this] { return !recorder->floatingStopWindow() && !writers.movies.empty(); }));
    EXPECT_THAT(output(), HasSubstr("DEBUG: Failed to start ScreenCaptureKit recording: no screen\n"));
    EXPECT_FALSE(recorder->borderOverlayWindow());
    EXPECT_FALSE(recorder->isRecording());
    settle();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(Recorder, aSilentMicrophoneIsToldAfterThreeSeconds) {
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea();
    card.pressMic();
    card.start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    const auto second = [this] {
        mediaNow += 1s;
        time.advance(1s);
    };
    second();
    second();
    EXPECT_FALSE(recorder->isMicrophoneSilent());
    second();
    EXPECT_TRUE(recorder->isMicrophoneSilent());
    microphones.speak(20ms);
    EXPECT_TRUE(test::eventually([&] {
        time.advance(1s);
        return !recorder->isMicrophoneSilent();
    }));
}

TEST_F(Recorder, aRecordingWithoutSoundIsNeverCalledSilent) {
    record();
    mediaNow += 1min;
    time.advance(1min);
    EXPECT_FALSE(recorder->isMicrophoneSilent());
}

// Stopping.

TEST_F(Recorder, aStopLeadsToThePreview) {
    record();
    const QString path = *recorder->tempOutputPath();
    static_cast<void>(output());
    recorder->stopRecording();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_TRUE(recorder->floatingStopWindow()); // its own button pressed it
    time.runPending();
    EXPECT_FALSE(recorder->floatingStopWindow());
    EXPECT_FALSE(recorder->borderOverlayWindow());
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewModel()->filePath(), path);
    const std::string printed = output();
    EXPECT_THAT(printed, testing::StartsWith("DEBUG: ScreenRecorder.stopRecording() called\n"));
    EXPECT_THAT(printed, testing::EndsWith("DEBUG: Recording finished successfully at " + path.toStdString() +
                                           ", showing preview\n"));
}

TEST_F(Recorder, aStopWithoutARecordingSaysSo) {
    recorder->stopRecording();
    EXPECT_EQ(output(), "DEBUG: ScreenRecorder.stopRecording() called\n"
                        "DEBUG: stopRecording() found no active recordingEngine\n");
}

TEST_F(Recorder, aStopBeforeTheFirstPictureShowsNothing) {
    streams.withholdFrames();
    selectArea().start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    recorder->stopRecording();
    settle();
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finished with no output URL and no error\n"));
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(toasts, IsEmpty());
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(Recorder, aStopBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->stopRecording(); // in the same turn
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
    EXPECT_FALSE(recorder->isRecording());
}

TEST_F(Recorder, aCancelBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->cancelRecording(); // in the same turn
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(Recorder, aScreenThatIsCapturedOnlyAfterTheStopIsNoRecording) {
    streams.beSlow();
    selectArea().start();
    time.runPending();
    streams.answerAll(); // what there is to see …
    streams.beSlow();
    time.runPending();
    ASSERT_EQ(streams.streams().size(), 1U);
    recorder->stopRecording();
    streams.answerAll(); // … and that it is seen
    settle();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(Recorder, aStopWhileTheRecordingBeginsLeavesNoTimerBehind) {
    streams.beSlow();
    selectArea().start();
    time.runPending();
    recorder->stopRecording();
    streams.answerAll();
    settle();
    time.runPending();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(Recorder, aMovieThatCannotBeFinishedStaysWhereItIsAndNothingIsShown) {
    record();
    writers.failNextFinish(text("disk full"));
    recorder->stopRecording();
    settle();
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finish error: disk full\n"));
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(temporaryFiles(), testing::SizeIs(1));
}

// Cancelling and beginning anew.

TEST_F(Recorder, aCancelThrowsTheFileAway) {
    record();
    recorder->cancelRecording();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(recorder->tempOutputPath(), std::nullopt);
    settle();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(Recorder, aCancelWhileTheFileIsBeingMadeThrowsItAwayToo) {
    streams.beSlow();
    selectArea().start();
    time.runPending();
    recorder->cancelRecording();
    streams.answerAll();
    settle();
    time.advance(1s);
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(Recorder, aRestartRecordsTheSameAreaAnewWithoutACountdown) {
    auto &card = selectArea({10, 20, 300, 200});
    card.setTimerDelay(5);
    card.start();
    time.advance(5s);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    awaitPicture();
    time.advance(7s);
    EXPECT_EQ(recorder->recordingDuration(), 7s);
    const QString first = *recorder->tempOutputPath();
    recorder->restartRecording();
    EXPECT_FALSE(QFile::exists(first));
    EXPECT_EQ(recorder->recordingDuration(), 0s);
    time.advance(149ms);
    EXPECT_FALSE(recorder->floatingStopWindow());
    time.advance(1ms);
    EXPECT_TRUE(recorder->floatingStopWindow());
    EXPECT_FALSE(recorder->countdownWindow());
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    EXPECT_EQ(recorder->recordingDuration(), 0s);
    EXPECT_NE(*recorder->tempOutputPath(), first);
    EXPECT_EQ(streams.streams().back()->configuration.sourceRect, QRectF(10, 20, 300, 200));
    EXPECT_EQ(streams.streams().size(), 2U);
}

TEST_F(Recorder, aRestartWithoutARecordingDoesNothing) {
    recorder->restartRecording();
    time.advance(1s);
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(Recorder, aRecordingThatAnotherReplacesIsShownOnceThePersonIsFree) {
    record();
    const QString first = *recorder->tempOutputPath();
    record();
    EXPECT_EQ(windows.living(), 2); // one border, one bar
    time.advance(2s);
    EXPECT_EQ(recorder->recordingDuration(), 2s);
    EXPECT_EQ(time.timerCount(), 1);
    const QString second = *recorder->tempOutputPath();
    recorder->stopRecording();
    // Both are finished beside each other; whichever is whole first is shown first.
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    const QString shownFirst = recorder->previewModel()->filePath();
    recorder->previewModel()->pressDelete();
    ASSERT_TRUE(
        happens([&] { return recorder->previewModel() && recorder->previewModel()->filePath() != shownFirst; }));
    EXPECT_THAT((QStringList{shownFirst, recorder->previewModel()->filePath()}),
                testing::UnorderedElementsAre(first, second));
}

// The switch.

TEST_F(Recorder, unloadingDuringARecordingThrowsItAway) {
    record();
    recorder->unload();
    EXPECT_TRUE(recorder->isRecording()); // in a later turn
    settle();
    EXPECT_THAT(output(), HasSubstr("DEBUG: ScreenRecorder unloading module and purging memory/CPU resources.\n"));
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(recorder->recordingDuration(), 0s);
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(Recorder, unloadingDuringTheSelectionClosesIt) {
    selectArea();
    recorder->unload();
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(monitors.localCount(), 0);
}

TEST_F(Recorder, unloadingDuringTheCountdownEndsIt) {
    auto &card = selectArea();
    card.setTimerDelay(5);
    card.start();
    recorder->unload();
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(Recorder, unloadingWhileARecordingBeginsEndsIt) {
    streams.beSlow();
    selectArea().start();
    time.runPending();
    recorder->unload();
    time.runPending();
    streams.answerAll();
    settle();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(Recorder, unloadingBetweenACancelAndItsRestartBeginsNothing) {
    record();
    recorder->restartRecording();
    recorder->unload();
    settle();
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(writers.movies.size(), 1U);
}

TEST_F(Recorder, unloadingDuringThePreviewClosesItAndKeepsTheFile) {
    recordAndStop();
    recorder->unload();
    time.runPending();
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(temporaryFiles(), testing::SizeIs(1));
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(Recorder, theEndOfTheProgramDuringARecordingTakesItsWindows) {
    record();
    recorder.reset();
    EXPECT_EQ(windows.living(), 0);
    EXPECT_TRUE(streams.streams().front()->isDropped);
}

} // namespace
} // namespace tavrine
