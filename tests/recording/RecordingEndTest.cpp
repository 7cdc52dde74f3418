// How a recording ends: by a stop, by a cancel, by the next one.
#include "recording/RecorderTest.h"

namespace tavrine {
namespace {

class RecordingEnd : public RecorderTest {};

// Stopping.

TEST_F(RecordingEnd, aStopLeadsToThePreview) {
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

TEST_F(RecordingEnd, aStopWithoutARecordingSaysSo) {
    recorder->stopRecording();
    EXPECT_EQ(output(), "DEBUG: ScreenRecorder.stopRecording() called\n"
                        "DEBUG: stopRecording() found no active recordingEngine\n");
}

TEST_F(RecordingEnd, aStopBeforeTheFirstPictureShowsNothing) {
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

TEST_F(RecordingEnd, aStopBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->stopRecording(); // in the same turn
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
    EXPECT_FALSE(recorder->isRecording());
}

TEST_F(RecordingEnd, aCancelBeforeTheRecordingHasBegunBeginsNone) {
    selectArea().start();
    recorder->cancelRecording(); // in the same turn
    time.advance(1min);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(RecordingEnd, aScreenThatIsCapturedOnlyAfterTheStopIsNoRecording) {
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

TEST_F(RecordingEnd, aStopWhileTheRecordingBeginsLeavesNoTimerBehind) {
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

TEST_F(RecordingEnd, aMovieThatCannotBeFinishedStaysWhereItIsAndNothingIsShown) {
    record();
    writers.failNextFinish(text("disk full"));
    recorder->stopRecording();
    settle();
    EXPECT_THAT(output(), HasSubstr("DEBUG: Recording finish error: disk full\n"));
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(temporaryFiles(), testing::SizeIs(1));
}

// Cancelling and beginning anew.

TEST_F(RecordingEnd, aCancelThrowsTheFileAway) {
    record();
    recorder->cancelRecording();
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_EQ(recorder->tempOutputPath(), std::nullopt);
    settle();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(RecordingEnd, aCancelWhileTheFileIsBeingMadeThrowsItAwayToo) {
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

TEST_F(RecordingEnd, aRestartRecordsTheSameAreaAnewWithoutACountdown) {
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

TEST_F(RecordingEnd, aRestartWithoutARecordingDoesNothing) {
    recorder->restartRecording();
    time.advance(1s);
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(RecordingEnd, aRecordingThatAnotherReplacesIsShownOnceThePersonIsFree) {
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
