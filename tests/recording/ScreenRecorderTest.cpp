// A recording that runs: its windows, its time, its file, and the switch of the tool.
#include "recording/RecorderTest.h"

namespace tavrine {
namespace {

class Recorder : public RecorderTest {};

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

TEST_F(Recorder, theBorderLiesRoundTheAreaInThePlaneWithItsOriginAtTheBottom) {
    selectArea({100, 200, 320, 240}).start();
    time.runPending();
    EXPECT_EQ(borders, (QList<std::pair<QRectF, quint32>>{{QRectF(100, 460, 320, 240), 1}}));
}

TEST_F(Recorder, theScreenUnderThePointerIsRecordedInItsOwnPixels) {
    const Screen left = screens.screens().first();
    Screen right = left;
    right.number = 2;
    right.scale = 2;
    right.frame = right.visibleFrame = QRectF(1440, 100, 800, 600);
    screens.setScreens({left, right});
    screens.setMouseLocation({1500, 300});
    streams.setContent({.displays = {{1}, {2}}, .windows = {}});
    record();
    const auto &stream = *streams.streams().front();
    EXPECT_EQ(stream.filter.displayID, 2U);
    EXPECT_EQ(stream.configuration.sourceRect, QRectF(100, 200, 320, 240));
    EXPECT_EQ(stream.configuration.width, 640);
    EXPECT_EQ(stream.configuration.height, 480);
    EXPECT_EQ(borders, (QList<std::pair<QRectF, quint32>>{{QRectF(100, 160, 320, 240), 2}}));
}

/// A desktop whose pictures show all windows, with one screen of 1440 by 900 points.
class RecorderOfAllWindows : public Recorder {
protected:
    RecorderOfAllWindows() { streams.setTellsWindows(false); }
    /// The bar's place while `area`, with its origin at the top left, is recorded.
    [[nodiscard]] QRectF barBeside(const QRectF &area) {
        recorder->cancelRecording(); // of another area
        selectArea(area).start();
        EXPECT_TRUE(happens([this] { return recorder->isRecording(); }));
        return recorder->floatingStopWindow()->frame();
    }
};

TEST_F(RecorderOfAllWindows, theBarStaysAtItsPlaceWhereNothingOfItIsRecorded) {
    EXPECT_EQ(barBeside({100, 90, 1000, 700}), QRectF(620, 820, 200, 40));
}

TEST_F(RecorderOfAllWindows, theBarGoesOutOfTheAreaTheShortestWayAndClearOfTheBorder) {
    EXPECT_EQ(barBeside({100, 60, 1000, 700}), QRectF(620, 900 - 55, 200, 40)); // above it
    EXPECT_EQ(barBeside({100, 20, 1000, 700}), QRectF(1105, 820, 200, 40));
    EXPECT_EQ(barBeside({0, 20, 1440, 400}), QRectF(620, 480 - 5 - 40, 200, 40));
    EXPECT_EQ(barBeside({0, 0, 700, 900}), QRectF(705, 820, 200, 40));
    EXPECT_EQ(barBeside({600, 0, 840, 900}), QRectF(595 - 200, 820, 200, 40));
}

TEST_F(RecorderOfAllWindows, aBarThatGrowsStaysOutOfTheArea) {
    EXPECT_EQ(barBeside({0, 0, 700, 900}), QRectF(705, 820, 200, 40));
    recorder->fitStopBar({300, 40});
    EXPECT_EQ(recorder->floatingStopWindow()->frame(), QRectF(705, 820, 300, 40));
}

TEST_F(RecorderOfAllWindows, withoutRoomTheBarGoesToAnotherScreenAndStaysWhereThereIsNone) {
    const QRectF usual(620, 820, 200, 40);
    EXPECT_EQ(barBeside({10, 10, 1420, 880}), usual);
    Screen other = screens.screens().first();
    other.number = 2;
    other.frame = other.visibleFrame = QRectF(1440, 100, 800, 600);
    screens.setScreens({screens.screens().first(), other});
    EXPECT_EQ(barBeside({10, 10, 1420, 880}), QRectF(1440 + 300, 700 - 80, 200, 40));
}

TEST_F(Recorder, theBarStaysAtItsPlaceWhereItIsKeptOutOfThePictures) {
    selectArea({100, 20, 1000, 700}).start();
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    EXPECT_EQ(recorder->floatingStopWindow()->frame(), QRectF(620, 820, 200, 40));
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
    recorder->offer({}); // it is on again
    time.runPending();
    EXPECT_TRUE(recorder->previewModel());
}

TEST_F(Recorder, theEndOfTheProgramDuringARecordingTakesItsWindows) {
    record();
    recorder.reset();
    EXPECT_EQ(windows.living(), 0);
    EXPECT_TRUE(streams.streams().front()->isDropped);
}

} // namespace
} // namespace tavrine
