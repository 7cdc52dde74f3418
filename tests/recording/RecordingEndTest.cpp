// How a recording ends: by a stop, by a cancel, by the next one.
#include "recording/RecorderTest.h"

namespace tavrine {
namespace {

class EndOfARecording : public RecorderTest {
protected:
    /// From then on nothing drives the first movie's writer, which hangs.
    [[nodiscard]] bool isToBeFinished() {
        return happens([this] { return writers.movies.front()->isToFinish.load(); });
    }
};

// Stopping.

TEST_F(EndOfARecording, aStopLeadsToThePreview) {
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

TEST_F(EndOfARecording, aStopWithoutARecordingSaysSo) {
    recorder->stopRecording();
    EXPECT_EQ(output(), "DEBUG: ScreenRecorder.stopRecording() called\n"
                        "DEBUG: stopRecording() found no active recordingEngine\n");
}

TEST_F(EndOfARecording, aStopBeforeTheFirstPictureShowsNothing) {
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

TEST_F(EndOfARecording, aStopBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->stopRecording(); // in the same turn
    time.advance(1min);
    EXPECT_TRUE(happens([this] { return windows.living() == 0; }));
    EXPECT_THAT(writers.movies, IsEmpty());
    EXPECT_FALSE(recorder->isRecording());
}

TEST_F(EndOfARecording, aCancelBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->cancelRecording(); // in the same turn
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(EndOfARecording, aScreenThatIsCapturedOnlyAfterTheStopIsNoRecording) {
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

TEST_F(EndOfARecording, aStopWhileTheRecordingBeginsLeavesNoTimerBehind) {
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

TEST_F(EndOfARecording, aMovieThatCannotBeFinishedIsShownAsFarAsItGoesAndThePersonIsTold) {
    record();
    const QString path = *recorder->tempOutputPath();
    writers.failNextFinish(text("disk full"));
    recorder->stopRecording();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finish error: disk full\n"));
    EXPECT_EQ(recorder->previewModel()->filePath(), path);
    EXPECT_EQ(recorder->previewModel()->notice(), text("The recording may lack its end"));
    EXPECT_THAT(toasts, ElementsAre(text("The recording may lack its end|exclamationmark.triangle.fill")));
}

TEST_F(EndOfARecording, aMovieThatIsWholeComesWithoutAWord) {
    EXPECT_THAT(recordAndStop().notice(), text(""));
    EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(EndOfARecording, aCancelRightAfterTheStopIsNotMeantForTheMovie) {
    record();
    const QString path = *recorder->tempOutputPath();
    recorder->stopRecording();
    recorder->cancelRecording(); // the bar is there for the rest of the turn
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewModel()->filePath(), path);
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(EndOfARecording, theOverlayOfTheNextOneEndsItForWhoHasNoPointer) {
    recorder->startScreenRecording();
    EXPECT_FALSE(recorder->selectionModel()->canStopRecording());
    recorder->selectionModel()->cancel();
    record();
    const QString path = *recorder->tempOutputPath();
    recorder->startScreenRecording();
    ASSERT_TRUE(recorder->selectionModel()->canStopRecording());
    recorder->selectionModel()->stopRecording();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_FALSE(recorder->isRecording());
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewModel()->filePath(), path);
}

TEST_F(EndOfARecording, anOverlayThatIsOlderThanTheEndOnlyGoes) {
    record();
    recorder->startScreenRecording();
    recorder->cancelRecording();
    static_cast<void>(output());
    recorder->selectionModel()->stopRecording();
    EXPECT_FALSE(recorder->overlayWindow());
    EXPECT_EQ(output().find("stopRecording() called"), std::string::npos);
}

// An end that nobody asked for.

TEST_F(EndOfARecording, anEncoderThatDiesEndsTheRecordingAtOnceAndShowsWhatThereIs) {
    record();
    const QString path = *recorder->tempOutputPath();
    writers.die(text("the encoder ended unexpectedly"));
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_FALSE(recorder->floatingStopWindow());
    EXPECT_FALSE(recorder->borderOverlayWindow());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(recorder->previewModel()->filePath(), path);
    EXPECT_EQ(recorder->previewModel()->notice(), text("Recording stopped unexpectedly"));
    EXPECT_THAT(toasts, ElementsAre(text("Recording stopped unexpectedly|exclamationmark.triangle.fill")));
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finish error: the encoder ended unexpectedly\n"));
    settle(); // the screen is not captured any more
}

TEST_F(EndOfARecording, aFullDiskIsNamed) {
    record();
    writers.die(text("No space left on device"), MovieWriterFailure::diskIsFull);
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewModel()->notice(), text("Recording stopped: the disk is full"));
}

TEST_F(EndOfARecording, anEncoderThatAnotherProgramEndsLeavesAWholeMovieAndAWord) {
    record();
    writers.endByRequest();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finished successfully at "));
    EXPECT_EQ(recorder->previewModel()->notice(), text("Recording stopped unexpectedly"));
}

TEST_F(EndOfARecording, anEncoderThatDiesBeforeItHasWrittenAnythingIsToldAndNothingIsShown) {
    record();
    QFile::remove(*recorder->tempOutputPath());
    writers.die(text("the encoder ended unexpectedly"));
    ASSERT_TRUE(happens([this] { return !recorder->floatingStopWindow(); }));
    settle();
    EXPECT_THAT(toasts, ElementsAre(text("Recording stopped unexpectedly|exclamationmark.triangle.fill")));
    EXPECT_FALSE(recorder->previewModel());
}

TEST_F(EndOfARecording, anEncoderThatDiesAfterTheStopEndsNothingTwice) {
    record();
    writers.hang();
    recorder->stopRecording();
    ASSERT_TRUE(isToBeFinished());
    writers.die(text("the encoder ended unexpectedly"));
    writers.finishHung();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(toasts.size(), 1);
    EXPECT_EQ(recorder->previewModel()->notice(), text("The recording may lack its end"));
}

TEST_F(EndOfARecording, aRecordingThatEndsByItselfWhileTheNextIsSetUpIsShownOverIt) {
    record();
    selectArea();
    writers.die(text("the encoder ended unexpectedly"));
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_TRUE(recorder->overlayWindow());
}

// A movie that takes long.

TEST_F(EndOfARecording, aMovieThatTakesLongSaysSo) {
    record();
    writers.hang();
    recorder->stopRecording();
    ASSERT_TRUE(isToBeFinished());
    time.advance(299ms);
    EXPECT_FALSE(recorder->finishingWindow());
    time.advance(1ms);
    ASSERT_TRUE(recorder->finishingWindow());
    const auto &sign = fake(recorder->finishingWindow());
    EXPECT_TRUE(sign.description().ignoresMouseEvents);
    EXPECT_FALSE(sign.isKey());
    time.advance(30s);
    EXPECT_TRUE(recorder->finishingWindow());
    writers.finishHung();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_FALSE(recorder->finishingWindow());
}

TEST_F(EndOfARecording, aMovieThatIsThereSoonNeedsNoSign) {
    recordAndStop();
    time.advance(1s);
    EXPECT_FALSE(recorder->finishingWindow());
}

TEST_F(EndOfARecording, theNextRecordingTakesThePlaceOfTheSignAndIsNotDisturbed) {
    record();
    writers.hang();
    recorder->stopRecording();
    ASSERT_TRUE(isToBeFinished());
    time.advance(1s);
    ASSERT_TRUE(recorder->finishingWindow());
    record();
    EXPECT_FALSE(recorder->finishingWindow()); // it would be in the picture
    time.advance(1s);
    EXPECT_FALSE(recorder->finishingWindow());
    writers.finishHung();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_TRUE(recorder->isRecording());
}

TEST_F(EndOfARecording, whatWasLeftWaitsForAMovieThatTakesLong) {
    record();
    writers.hang();
    recorder->stopRecording();
    ASSERT_TRUE(isToBeFinished());
    recorder->offer({leftover("tavrine-rec-1.mp4")});
    time.advance(1s);
    EXPECT_FALSE(recorder->previewModel());
    writers.finishHung();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewModel()->filePath(), writers.movies.front()->path);
}

TEST_F(EndOfARecording, switchingItOffTakesTheSignAndTheMovieComesWhenItIsOnAgain) {
    record();
    writers.hang();
    recorder->stopRecording();
    ASSERT_TRUE(isToBeFinished());
    time.advance(1s);
    isEnabled = false;
    recorder->unload();
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
    writers.finishHung();
    settle();
    EXPECT_FALSE(recorder->previewModel());
    isEnabled = true;
    recorder->offer({});
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(recorder->previewModel()->filePath(), writers.movies.front()->path);
}

// Cancelling and beginning anew.

TEST_F(EndOfARecording, aCancelThrowsTheFileAway) {
    record();
    recorder->cancelRecording();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(recorder->tempOutputPath(), std::nullopt);
    settle();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(EndOfARecording, aCancelWhileTheFileIsBeingMadeThrowsItAwayToo) {
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

TEST_F(EndOfARecording, aRestartRecordsTheSameAreaAnewWithoutACountdown) {
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

TEST_F(EndOfARecording, aRestartKeepsTheSoundAndTheScreenWhereverThePointerIsByThen) {
    const QList<Screen> both{
        {.number = 1, .localizedName = {}, .frame = QRectF(0, 0, 1440, 900), .visibleFrame = QRectF(0, 0, 1440, 876)},
        {.number = 2,
         .localizedName = {},
         .frame = QRectF(1440, 0, 800, 600),
         .visibleFrame = QRectF(1440, 0, 800, 600)}};
    screens.setScreens(both);
    streams.setContent({.displays = {{1}, {2}}, .windows = {}});
    screens.setMouseLocation({1500, 100});
    access.setMicrophone(MicrophoneAuthorization::authorized);
    auto &card = selectArea({10, 20, 300, 200});
    card.pressMic();
    card.start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    awaitPicture();
    ASSERT_EQ(streams.streams().back()->filter.displayID, 2U);
    ASSERT_EQ(microphones.sessions().size(), 1U);
    screens.setMouseLocation({100, 100});
    recorder->restartRecording();
    time.advance(150ms);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    ASSERT_EQ(streams.streams().size(), 2U);
    EXPECT_EQ(streams.streams().back()->filter.displayID, 2U);
    EXPECT_EQ(streams.streams().back()->configuration.sourceRect, QRectF(10, 20, 300, 200));
    EXPECT_EQ(borders.last().second, 2U);
    ASSERT_EQ(microphones.sessions().size(), 2U);
    EXPECT_TRUE(microphones.sessions().back()->isRunning);
}

TEST_F(EndOfARecording, aRestartWithoutARecordingDoesNothing) {
    recorder->restartRecording();
    time.advance(1s);
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(EndOfARecording, aRecordingThatAnotherReplacesIsShownOnceThePersonIsFree) {
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

} // namespace
} // namespace tavrine
