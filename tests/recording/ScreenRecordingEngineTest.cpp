#include "recording/ScreenRecordingEngine.h"

#include "adapters/fake/FakeMicrophoneSessions.h"
#include "adapters/fake/FakeMovieWriter.h"
#include "adapters/fake/FakeScreenStreams.h"
#include "adapters/fake/VirtualTime.h"
#include "support/Eventually.h"

#include <QTemporaryDir>

#include <atomic>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

constexpr auto complete = static_cast<int>(ScreenFrameStatus::complete);

class Engine : public testing::Test {
protected:
    struct Outcome {
        std::optional<QString> path;
        std::optional<QString> error;
        bool isOnMainThread = false;
    };

    Engine() {
        streams.withholdFrames();
        request.screen = {.number = FakeScreenStreams::displayID,
                          .localizedName = text("Built-in"),
                          .frame = QRectF(0, 0, 1440, 900),
                          .visibleFrame = QRectF(0, 0, 1440, 876),
                          .scale = 1.0};
        request.displayID = FakeScreenStreams::displayID;
        request.area = QRectF(100, 200, 320, 240);
        request.outputPath = folder.filePath(text("movie.mp4"));
        testing::internal::CaptureStdout();
    }
    ~Engine() override {
        engine.reset();
        testing::internal::GetCapturedStdout();
    }

    void begin() {
        engine->start(request, [this](const auto &error) {
            ++startAnswers;
            startError = error;
        });
    }
    /// Begins, and lets what is asked be answered.
    void start() {
        begin();
        time.runPending();
    }
    /// The screen gives a picture, and whoever gets it has done with it.
    void deliver(std::optional<int> status, MediaTime when) {
        auto frame = streams.makeFrame({320, 240}, 1);
        const std::weak_ptr<const ScreenFrame> out = frame;
        streams.deliver({status, when, std::move(frame)});
        ASSERT_TRUE(test::eventually([&] { return out.expired(); }));
    }
    /// The same for the microphone.
    void hear(MediaTime when, float value = 0.5F) {
        const QByteArray data(reinterpret_cast<const char *>(&value), sizeof value);
        microphones.deliver({when, data});
        ASSERT_TRUE(test::eventually([&] { return data.isDetached(); }));
    }
    /// Ends it and waits for its answer: everything that was handed in before is done by then.
    Outcome stop(const std::function<void()> &meanwhile = [] {}) {
        auto answer = std::make_shared<std::pair<std::atomic<int>, Outcome>>();
        engine->stop([answer, main = QThread::currentThread()](const auto &path, const auto &error) {
            answer->second = {path, error, QThread::currentThread() == main};
            ++answer->first;
        });
        EXPECT_EQ(answer->first, 0) << "it came within the call";
        meanwhile();
        EXPECT_TRUE(test::eventually([&] {
            time.runPending();
            return answer->first > 0;
        }));
        EXPECT_EQ(answer->first, 1);
        return answer->second;
    }
    [[nodiscard]] std::string output() {
        const std::string printed = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return printed;
    }
    [[nodiscard]] const FakeMovie &movie() { return *writers.movies.back(); }
    [[nodiscard]] const FakeScreenStreams::Stream &stream() { return *streams.streams().front(); }
    [[nodiscard]] bool happens(const std::function<bool()> &claim) {
        return test::eventually([&] {
            time.runPending();
            return claim();
        });
    }

    QTemporaryDir folder;
    VirtualTime time;
    FakeScreenStreams streams{time};
    FakeMicrophoneSessions microphones{time};
    FakeMovieWriters writers{time};
    MediaTime now = 1s;
    ScreenRecordingEngine::Request request;
    std::shared_ptr<ScreenRecordingEngine> engine = std::make_shared<ScreenRecordingEngine>(
        ScreenRecordingEngine::Ports{streams, microphones, writers, time, [this] { return now; }});
    int startAnswers = 0;
    std::optional<RecordingError> startError;
};

// Starting.

TEST_F(Engine, theStreamShowsTheAreaInItsOwnPixels) {
    request.area = QRectF(10, 20, 100.5, 33.3);
    request.screen.scale = 2;
    start();
    const ScreenStreamConfiguration expected{.sourceRect = QRectF(10, 900 - 20 - 33.3, 100.5, 33.3),
                                             .width = 200,
                                             .height = 66,
                                             .showsCursor = true,
                                             .minimumFrameInterval = 1'000'000'000ns / 60,
                                             .queueDepth = 6};
    EXPECT_EQ(stream().configuration, expected);
    EXPECT_EQ(movie().video, (MovieVideoSettings{200, 66, 4'000'000, 60}));
    EXPECT_EQ(stream().filter.displayID, FakeScreenStreams::displayID);
}

TEST_F(Engine, aPointOnAScreenOfScaleOneIsAMovieOfTwoPixelsAtTheLowestRate) {
    request.area = QRectF(100, 200, 1, 1);
    start();
    EXPECT_EQ(movie().video, (MovieVideoSettings{2, 2, 4'000'000, 60}));
    EXPECT_EQ(stream().configuration.sourceRect, QRectF(100, 900 - 200 - 1, 1, 1));
    EXPECT_EQ(QSize(stream().configuration.width, stream().configuration.height), QSize(2, 2));
}

TEST_F(Engine, onlyListedWindowsAreLeftOutOfThePicture) {
    streams.setContent({.displays = {{1}}, .windows = {{7}, {8}, {9}}});
    request.excludedWindows = {9, 3, 7}; // 3 has closed meanwhile
    start();
    EXPECT_THAT(stream().filter.excludingWindows, ElementsAre(7, 9));
}

TEST_F(Engine, theStartIsAnsweredOnceAndNotWithinTheCall) {
    begin();
    EXPECT_EQ(startAnswers, 0);
    time.advance(1min);
    EXPECT_EQ(startAnswers, 1);
    EXPECT_EQ(startError, std::nullopt);
    EXPECT_TRUE(stream().isRunning);
}

TEST_F(Engine, aDisplayThatIsNotThereIsErrorOne) {
    request.displayID = 5;
    start();
    EXPECT_EQ(startAnswers, 1);
    EXPECT_EQ(startError, (RecordingError{RecordingError::Code::displayUnavailable,
                                          text("Selected display is unavailable for capture.")}));
    EXPECT_EQ(startError->description(),
              text("Error Domain=Tavrine.ScreenRecorder Code=1 \"Selected display is unavailable for capture.\""));
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(Engine, aRefusalOfTheContentIsHandedOnUnchanged) {
    streams.failNextContent(text("no content"));
    start();
    EXPECT_EQ(startError, (RecordingError{RecordingError::Code::platform, text("no content")}));
    EXPECT_EQ(startError->description(), text("no content"));
}

TEST_F(Engine, aFileThatCannotBeMadeStopsTheStart) {
    writers.failNextMake(text("read-only"));
    start();
    EXPECT_EQ(startError->localizedDescription, text("read-only"));
    EXPECT_THAT(streams.streams(), IsEmpty());
}

TEST_F(Engine, aRefusedVideoInputIsErrorTwoAndLeavesNoFile) {
    writers.refuseVideo(true);
    start();
    EXPECT_EQ(startError, (RecordingError{RecordingError::Code::videoRefused, text("Could not attach video output.")}));
    EXPECT_EQ(startError->description(),
              text("Error Domain=Tavrine.ScreenRecorder Code=2 \"Could not attach video output.\""));
    EXPECT_EQ(movie().status, MovieWriterStatus::cancelled);
    EXPECT_FALSE(QFile::exists(request.outputPath));
}

TEST_F(Engine, aRefusedAudioInputIsNoError) {
    writers.refuseAudio(true);
    request.includeAudio = true;
    start();
    EXPECT_EQ(startError, std::nullopt);
    deliver(complete, 1s);
    time.runPending();
    hear(2s);
    EXPECT_EQ(stop().path, request.outputPath);
    EXPECT_THAT(movie().sounds, IsEmpty());
    EXPECT_FALSE(movie().isAudioFinished);
}

TEST_F(Engine, aScreenThatIsNotGivenStopsTheStartAndLeavesNoFile) {
    streams.failNextStart(text("no screen"));
    request.includeAudio = true;
    start();
    EXPECT_EQ(startError->localizedDescription, text("no screen"));
    engine.reset();
    EXPECT_FALSE(QFile::exists(request.outputPath));
    EXPECT_EQ(movie().status, MovieWriterStatus::cancelled);
    EXPECT_EQ(movie().sessionStart, std::nullopt); // it was never started
    EXPECT_THAT(microphones.sessions(), IsEmpty());
}

// The microphone.

TEST_F(Engine, withoutAudioNoMicrophoneIsLookedFor) {
    start();
    EXPECT_THAT(microphones.sessions(), IsEmpty());
    EXPECT_EQ(movie().audio, std::nullopt);
    EXPECT_EQ(engine->microphoneSilence(), std::nullopt);
}

TEST_F(Engine, theMicrophoneIsHeardOnceTheScreenIsCaptured) {
    request.includeAudio = true;
    streams.beSlow();
    begin();
    time.advance(1s);
    EXPECT_THAT(microphones.sessions(), IsEmpty());
    streams.answerAll();
    time.runPending();
    ASSERT_EQ(microphones.sessions().size(), 1U);
    EXPECT_TRUE(microphones.sessions().front()->isRunning);
    EXPECT_EQ(movie().audio, (MovieAudioSettings{2, 44'100, 128'000}));
}

TEST_F(Engine, theStartDoesNotWaitForTheMicrophone) {
    request.includeAudio = true;
    microphones.beSlow();
    start();
    EXPECT_EQ(startAnswers, 1);
}

TEST_F(Engine, withoutAMicrophoneTheFileIsWrittenAllTheSame) {
    request.includeAudio = true;
    microphones.setDevices({});
    start();
    EXPECT_THAT(output(), HasSubstr("DEBUG: No usable microphone device found for recording\n"));
    deliver(complete, 1s);
    EXPECT_EQ(stop().path, request.outputPath);
    EXPECT_TRUE(movie().audio); // its track stays empty
}

TEST_F(Engine, aMicrophoneThatGoesWhileItIsOpenedIsNone) {
    request.includeAudio = true;
    microphones.refuseNext();
    start();
    EXPECT_THAT(output(), HasSubstr("DEBUG: No usable microphone device found for recording\n"));
    EXPECT_EQ(startError, std::nullopt);
}

TEST_F(Engine, silenceIsCountedFromTheStartAndFromTheLastSound) {
    request.includeAudio = true;
    start();
    now += 2s;
    EXPECT_EQ(engine->microphoneSilence(), 2s);
    hear(2s, 0.0F);
    EXPECT_EQ(engine->microphoneSilence(), 2s);
    hear(3s, 0.5F);
    EXPECT_EQ(engine->microphoneSilence(), 0s);
    now += 5s;
    EXPECT_EQ(engine->microphoneSilence(), 5s);
    stop();
    EXPECT_EQ(engine->microphoneSilence(), std::nullopt);
}

TEST_F(Engine, quietIsSilence) {
    SilenceWatch watch;
    watch.begin(1s);
    const auto sound = [](float value) {
        return AudioSample{0s, QByteArray(reinterpret_cast<const char *>(&value), sizeof value)};
    };
    watch.hear(sound(-0.000'99F), 4s);
    EXPECT_EQ(watch.silence(5s), 4s);
    watch.hear(sound(-0.001F), 4s);
    EXPECT_EQ(watch.silence(5s), 1s);
    watch.hear({0s, QByteArray("abc")}, 9s); // less than one value
    EXPECT_EQ(watch.silence(5s), 1s);
    watch.end();
    watch.hear(sound(1), 9s);
    EXPECT_EQ(watch.silence(10s), std::nullopt);
}

// Pictures.

TEST_F(Engine, theTimeLineBeginsWithTheFirstPicture) {
    start();
    EXPECT_EQ(movie().status, MovieWriterStatus::unknown); // the writer waits for it
    deliver(complete, 5s);
    deliver(complete, 6s);
    const Outcome outcome = stop();
    EXPECT_EQ(outcome.path, request.outputPath);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(movie().sessionStart, 5s);
    EXPECT_THAT(movie().pictures, ElementsAre(5s, 6s));
    EXPECT_THAT(output(), HasSubstr("DEBUG: AVAssetWriter session started from first SCStream frame\n"));
}

TEST_F(Engine, onlyCompletePicturesAreWritten) {
    start();
    deliver(complete, 1s);
    for (const int status : {1, 2, 3, 4, 5, 77, -1}) // idle, blank, suspended, started, stopped, and no such one
        deliver(status, 2s);
    deliver(complete, 3s);
    stop();
    EXPECT_THAT(movie().pictures, ElementsAre(1s, 3s));
}

TEST_F(Engine, aPictureWhoseStatusCannotBeReadIsWritten) {
    start();
    deliver(std::nullopt, 1s);
    stop();
    EXPECT_THAT(movie().pictures, ElementsAre(1s));
    EXPECT_THAT(output(), HasSubstr("DEBUG: SCStream frame attachment status unparseable; accepting frame anyway\n"));
}

TEST_F(Engine, aSampleWithoutAPictureIsNothing) {
    start();
    streams.deliver({complete, 1s, nullptr});
    streams.deliver({std::nullopt, 1s, nullptr});
    EXPECT_EQ(stop().path, std::nullopt);
    EXPECT_THAT(output(), Not(HasSubstr("unparseable")));
}

TEST_F(Engine, aWriterThatCannotStartIsTriedAgainWithTheNextPicture) {
    writers.failNextStart(text("disk full"));
    writers.failNextStart(text("disk full"));
    start();
    for (const auto when : {1s, 2s, 3s})
        deliver(complete, when);
    EXPECT_EQ(stop().path, request.outputPath);
    EXPECT_EQ(movie().sessionStart, 3s);
    EXPECT_THAT(movie().pictures, ElementsAre(3s));
    EXPECT_THAT(output(), HasSubstr("DEBUG: AVAssetWriter failed to start: disk full\n"
                                    "DEBUG: AVAssetWriter failed to start: disk full\n"
                                    "DEBUG: AVAssetWriter session started from first SCStream frame\n"));
}

TEST_F(Engine, aWriterThatGivesNoReasonFailsForAnUnknownOne) {
    writers.failNextStart(std::nullopt);
    start();
    deliver(complete, 1s);
    EXPECT_EQ(stop().path, std::nullopt); // nothing was written, so it is discarded
    EXPECT_THAT(output(), HasSubstr("DEBUG: AVAssetWriter failed to start: unknown\n"));
    EXPECT_FALSE(QFile::exists(request.outputPath));
}

TEST_F(Engine, aBusyWriterLosesPicturesAndNobodyWaits) {
    start();
    deliver(complete, 1s);
    writers.movies.back()->isVideoReady = false;
    deliver(complete, 2s);
    writers.movies.back()->isVideoReady = true;
    deliver(complete, 3s);
    EXPECT_EQ(stop().path, request.outputPath);
    EXPECT_THAT(movie().pictures, ElementsAre(1s, 3s));
    EXPECT_EQ(movie().refusals, 0); // it was not even asked
}

// Sound.

TEST_F(Engine, soundFromBeforeTheFirstPictureIsLeftOut) {
    request.includeAudio = true;
    start();
    hear(1s);
    deliver(complete, 2s);
    hear(3s);
    stop();
    EXPECT_THAT(movie().sounds, ElementsAre(3s));
    EXPECT_EQ(movie().refusals, 0);
    EXPECT_TRUE(movie().isAudioFinished);
}

TEST_F(Engine, aBusyWriterLosesSound) {
    request.includeAudio = true;
    start();
    deliver(complete, 2s);
    writers.movies.back()->isAudioReady = false;
    hear(3s);
    stop();
    EXPECT_THAT(movie().sounds, IsEmpty());
    EXPECT_EQ(movie().refusals, 0);
}

// Stopping.

TEST_F(Engine, theStopGoesThroughItsStepsInTheirOrder) {
    request.includeAudio = true;
    start();
    deliver(complete, 1s);
    now = 9s;
    static_cast<void>(output());
    const Outcome outcome = stop();
    EXPECT_EQ(outcome.path, request.outputPath);
    EXPECT_FALSE(outcome.isOnMainThread);
    EXPECT_TRUE(movie().isVideoFinished);
    EXPECT_TRUE(movie().isAudioFinished);
    EXPECT_THAT(output(), testing::EndsWith("DEBUG: stop() invoked, stopping SCStream capture...\n"
                                            "DEBUG: SCStream capture stopped cleanly\n"
                                            "DEBUG: finishing AVAssetWriter (status before finish: 1)...\n"
                                            "DEBUG: AVAssetWriter finished with status 2, error: nil\n"));
    EXPECT_EQ(stream().stops, 1);
    EXPECT_FALSE(microphones.sessions().front()->isRunning);
}

TEST_F(Engine, theLastPictureLastsUntilTheStop) {
    start();
    deliver(complete, 1s);
    now = 42s;
    stop([this] { now = 50s; }); // whatever finishing takes
    EXPECT_EQ(movie().end, 42s);
}

TEST_F(Engine, nothingIsWrittenOnceTheStopHasBegun) {
    request.includeAudio = true;
    start();
    deliver(complete, 1s);
    stop([this] { // the screen and the microphone go on until the main thread gets to them
        ASSERT_TRUE(stream().isRunning);
        deliver(complete, 2s);
        hear(2s);
    });
    EXPECT_THAT(movie().pictures, ElementsAre(1s));
    EXPECT_THAT(movie().sounds, IsEmpty());
}

TEST_F(Engine, withoutAPictureThereIsNoMovieAndNoError) {
    start();
    deliver(static_cast<int>(ScreenFrameStatus::idle), 1s);
    deliver(static_cast<int>(ScreenFrameStatus::blank), 2s);
    const Outcome outcome = stop();
    EXPECT_FALSE(QFile::exists(request.outputPath));
    EXPECT_EQ(outcome.path, std::nullopt);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_FALSE(outcome.isOnMainThread);
    EXPECT_EQ(movie().status, MovieWriterStatus::cancelled);
    EXPECT_THAT(output(), HasSubstr("DEBUG: stopRecording called before any video frame was written; discarding\n"));
}

TEST_F(Engine, aStopBeforeTheStreamIsThereFindsNone) {
    streams.beSlow();
    request.includeAudio = true;
    begin();
    streams.answerAll(); // the content …
    streams.beSlow();
    ASSERT_TRUE(happens([&] { return streams.streams().size() == 1; }));
    const Outcome outcome = stop(); // … and not the start
    EXPECT_EQ(outcome.path, std::nullopt);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(movie().status, MovieWriterStatus::cancelled);
    EXPECT_EQ(stream().stops, 0);
    EXPECT_THAT(output(), AllOf(HasSubstr("DEBUG: SCStream capture stopped cleanly\n"), HasSubstr("discarding\n")));
    streams.answerAll();
    time.runPending();
    EXPECT_EQ(startAnswers, 1);
    EXPECT_THAT(microphones.sessions(), IsEmpty()); // nobody is heard any more
    EXPECT_EQ(engine->microphoneSilence(), std::nullopt);
    engine.reset();
    EXPECT_TRUE(stream().isDropped);
}

TEST_F(Engine, aStopBeforeTheStreamIsThereKeepsWhatHasAlreadyCome) {
    streams.runBeforeTheyAnswer();
    streams.beSlow();
    begin();
    streams.answerAll(); // the content …
    streams.beSlow();
    ASSERT_TRUE(happens([&] { return streams.streams().size() == 1; }));
    deliver(static_cast<int>(ScreenFrameStatus::complete), 1s);
    now = 2s;
    const Outcome outcome = stop(); // … and not the start
    EXPECT_EQ(outcome.path, request.outputPath);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_FALSE(outcome.isOnMainThread);
    EXPECT_EQ(movie().status, MovieWriterStatus::completed);
    EXPECT_EQ(stream().stops, 0);
    EXPECT_THAT(output(), HasSubstr("DEBUG: SCStream capture stopped cleanly\n"));
    const auto taken = movie().pictures.size();
    deliver(static_cast<int>(ScreenFrameStatus::complete), 3s);
    EXPECT_EQ(movie().pictures.size(), taken);
}

TEST_F(Engine, aStopBeforeTheMicrophoneIsOpenOpensNone) {
    request.includeAudio = true;
    microphones.beSlow();
    start();
    deliver(complete, 1s);
    EXPECT_EQ(stop().path, request.outputPath);
    microphones.answerAll();
    time.runPending();
    EXPECT_THAT(microphones.sessions(), IsEmpty());
}

TEST_F(Engine, aStopBeforeTheWriterIsThereCompletesWithNeither) {
    streams.beSlow();
    begin();
    const Outcome outcome = stop();
    EXPECT_EQ(outcome.path, std::nullopt);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_FALSE(outcome.isOnMainThread);
    EXPECT_THAT(output(), HasSubstr("DEBUG: stopRecording called with no active AVAssetWriter\n"));
    streams.answerAll();
    time.runPending();
    EXPECT_EQ(startAnswers, 1); // as a start that came to nothing
    EXPECT_TRUE(startError);
    EXPECT_THAT(writers.movies, IsEmpty());
}

TEST_F(Engine, aStreamThatCannotBeStoppedIsNoReasonToLoseTheMovie) {
    start();
    deliver(complete, 1s);
    streams.failNextStop(text("stuck"));
    EXPECT_EQ(stop().path, request.outputPath);
    EXPECT_THAT(output(),
                AllOf(HasSubstr("DEBUG: SCStream stopCapture threw: stuck\n"), Not(HasSubstr("stopped cleanly"))));
}

TEST_F(Engine, aStreamThatEndsByItselfLeavesWhatWasWritten) {
    start();
    deliver(complete, 1s);
    streams.endStreams(text("display gone"));
    time.runPending();
    EXPECT_THAT(output(), HasSubstr("DEBUG: SCStream stopped unexpectedly: display gone\n"));
    EXPECT_EQ(stop().path, request.outputPath);
}

TEST_F(Engine, aMovieThatCannotBeFinishedIsAnError) {
    writers.failNextFinish(text("disk full"));
    start();
    deliver(complete, 1s);
    const Outcome outcome = stop();
    EXPECT_EQ(outcome.path, std::nullopt);
    EXPECT_EQ(outcome.error, text("disk full"));
    EXPECT_THAT(output(), HasSubstr("DEBUG: AVAssetWriter finished with status 3, error: Optional(disk full)\n"));
}

TEST_F(Engine, anEngineThatIsDroppedEndsAtOnce) {
    request.includeAudio = true;
    start();
    deliver(complete, 1s);
    engine->stop([](const auto &, const auto &) { ADD_FAILURE() << "nobody is there to hear it"; });
    engine.reset();
    EXPECT_TRUE(stream().isDropped);
    EXPECT_TRUE(microphones.sessions().front()->isDropped);
    time.advance(1min);
}

TEST_F(Engine, anEngineThatIsDroppedWhileItStartsAnswersOnceThatItDidNot) {
    streams.beSlow();
    begin();
    engine.reset();
    EXPECT_EQ(startAnswers, 0) << "later, and not within the end";
    time.advance(1min);
    EXPECT_EQ(startAnswers, 1);
    ASSERT_TRUE(startError);
    EXPECT_EQ(startError->localizedDescription, QStringLiteral("The recording was ended before it began."));
    streams.answerAll();
    time.advance(1min);
    EXPECT_EQ(startAnswers, 1);
}

TEST_F(Engine, soDoesOneThatIsDroppedWhileItsStreamBegins) {
    streams.beSlow();
    begin();
    streams.answerAll(); // what there is to be captured
    streams.beSlow();
    time.runPending();
    ASSERT_EQ(streams.streams().size(), 1U);
    engine.reset();
    time.advance(1min);
    EXPECT_EQ(startAnswers, 1);
    EXPECT_TRUE(startError);
    streams.answerAll();
    time.advance(1min);
    EXPECT_EQ(startAnswers, 1);
}

} // namespace
} // namespace tavrine
