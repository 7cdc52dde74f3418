// Movies by the recorder's process: what other programs find in them, and what is left when something goes wrong.
#include "adapters/linux/RecorderProcess.h"

#include "adapters/linux/RecorderSession.h"
#include "support/Eventually.h"
#include "support/MovieReading.h"
#include "support/Recorders.h"
#include "support/ScreenFrames.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <atomic>
#include <cmath>
#include <csignal>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <sys/resource.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr QSize size(320, 180);
constexpr MediaTime start = 1000s;

class RecorderProcessTest : public testing::Test {
protected:
    ~RecorderProcessTest() override {
        writer.reset();
        EXPECT_TRUE(eventually([] { return recorder() == 0; })); // the next test counts its own
    }
    std::unique_ptr<MovieWriter> make(const QString &where) {
        auto made = recorders.makeWriter(where);
        if (auto *whole = std::get_if<std::unique_ptr<MovieWriter>>(&made))
            return std::move(*whole);
        words = std::get<QString>(made);
        return nullptr;
    }
    void begin(bool hasSound = false, int bitRate = 4'000'000) {
        writer = make(path);
        ASSERT_TRUE(writer) << words.toStdString();
        ASSERT_TRUE(writer->addVideoInput(
            {.width = frames.picture().width(), .height = frames.picture().height(), .averageBitRate = bitRate}));
        if (hasSound) {
            ASSERT_TRUE(writer->addAudioInput({}));
        }
        writer->setOnEndedByItself([count = endings] { ++*count; });
        ASSERT_TRUE(writer->startWriting()) << writer->error().value_or(QString()).toStdString();
        writer->startSessionAtSourceTime(start);
    }
    /// Waits for room, as no stream does.
    [[nodiscard]] bool append(MediaTime time, std::shared_ptr<const ScreenFrame> frame) {
        if (!eventually([&] { return writer->isVideoReadyForMoreMediaData(); }))
            return false;
        return writer->appendVideo({.status = 0, .presentationTime = start + time, .frame = std::move(frame)});
    }
    [[nodiscard]] bool appendMoving(MediaTime time) {
        const int x = int(time / 4ms) % (size.width() - 20);
        const QRect changed(x, 40, 40, 40);
        return append(time, frames.next(changed, [&](QPainter &painter) {
            painter.fillRect(changed, Qt::darkBlue);
            painter.fillRect(x + 10, 50, 20, 20, Qt::yellow);
        }));
    }
    void appendSecondsOfPictures(double seconds) {
        for (int i = 0; i < int(seconds * 60); ++i)
            ASSERT_TRUE(appendMoving(i * 1s / 60));
    }
    bool finish(MediaTime end, milliseconds longest = 10s) {
        auto isDone = std::make_shared<std::atomic<bool>>(false);
        writer->finishWriting(start + end, [isDone] { *isDone = true; });
        return eventually([&] { return isDone->load(); }, longest);
    }
    [[nodiscard]] static pid_t recorder() { return recordersOf(QCoreApplication::applicationPid()).value(0); }
    void expectPlayable(int leastFrames) {
        EXPECT_EQ(complaintsAbout(path), "");
        const auto streams = streamsOf(path);
        ASSERT_GE(streams.size(), 1);
        EXPECT_GE(streams[0][QLatin1String("nb_read_frames")].toString().toInt(), leastFrames);
    }
    static QByteArray tone(int count, float level = 0.5F) {
        QByteArray bytes;
        for (int i = 0; i < count; ++i) {
            const float value = level * std::sin(float(i) * 0.1F);
            for (int channel = 0; channel < microphoneChannels; ++channel)
                bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
        }
        return bytes;
    }

    QTemporaryDir folder;
    QString path = folder.filePath(text("a recording.mp4"));
    RecorderProcesses recorders{QCoreApplication::applicationDirPath(), 10s};
    ScreenFrames frames{size, 12};
    std::shared_ptr<std::atomic<int>> endings = std::make_shared<std::atomic<int>>(0); ///< that nobody asked for
    std::unique_ptr<MovieWriter> writer;
    QString words;
};

TEST_F(RecorderProcessTest, aMovieIsHighProfileH264WithItsIndexInFront) {
    begin();
    appendSecondsOfPictures(2);
    ASSERT_TRUE(finish(2s));
    EXPECT_EQ(writer->status(), MovieWriterStatus::completed) << writer->error().value_or(QString()).toStdString();
    expectPlayable(120);
    const QJsonObject video = streamsOf(path).value(0);
    EXPECT_EQ(video[QLatin1String("codec_name")].toString(), text("h264"));
    EXPECT_EQ(video[QLatin1String("profile")].toString(), text("High"));
    EXPECT_EQ(video[QLatin1String("width")].toInt(), size.width());
    EXPECT_EQ(video[QLatin1String("color_space")].toString(), text("bt709"));
    EXPECT_EQ(video[QLatin1String("color_range")].toString(), text("tv"));
    EXPECT_EQ(boxesOf(path), (QList<QByteArray>{"ftyp", "free", "moov", "free", "mdat"}));
}

TEST_F(RecorderProcessTest, everyPictureKeepsItsMomentAndTheLastStaysUntilTheEnd) {
    begin();
    const std::vector<milliseconds> moments{0ms, 16ms, 40ms, 1900ms, 1917ms, 7000ms};
    for (const milliseconds moment : moments)
        ASSERT_TRUE(appendMoving(moment));
    ASSERT_TRUE(finish(9s));
    const auto packets = packetsOf(path);
    ASSERT_EQ(packets.size(), moments.size());
    for (std::size_t i = 0; i < moments.size(); ++i) {
        EXPECT_NEAR(packets[i].start, std::chrono::duration<double>(moments[i]).count(), 0.0001);
        const milliseconds next = i + 1 < moments.size() ? moments[i + 1] : 9000ms;
        EXPECT_NEAR(packets[i].duration, std::chrono::duration<double>(next - moments[i]).count(), 0.0001);
    }
    EXPECT_EQ(complaintsAbout(path), "");
}

TEST_F(RecorderProcessTest, colorsAreReadBackWithinTwoStepsWhileTheMovieIsWrittenAndWhenItIsFinished) {
    const QList<QColor> colors{Qt::red, Qt::green, Qt::blue, Qt::white, Qt::black, QColor(128, 128, 128)};
    begin();
    for (int i = 0; i < colors.size(); ++i)
        for (int repeat = 0; repeat < 10; ++repeat)
            ASSERT_TRUE(append((i * 10 + repeat) * 16ms, frames.plain(colors[i])));
    const auto expectColors = [&](int least) {
        const QByteArray pixels = pixelsOf(path);
        const qsizetype bytes = qsizetype(size.width()) * size.height() * 3;
        ASSERT_GE(pixels.size(), bytes * least);
        for (int frame = 0; frame < least; ++frame)
            for (int channel = 0; channel < 3; ++channel) {
                const QColor &color = colors[frame / 10];
                const int wanted[] = {color.red(), color.green(), color.blue()};
                for (const qsizetype at : {qsizetype(0), bytes / 2, bytes - 3})
                    EXPECT_NEAR(static_cast<unsigned char>(pixels[frame * bytes + at + channel]), wanted[channel], 2)
                        << "frame " << frame << " at " << at << " channel " << channel;
            }
    };
    constexpr int some = 30;
    ASSERT_TRUE(
        eventually([&] { return pixelsOf(path).size() >= qsizetype{some} * size.width() * size.height() * 3; }));
    ASSERT_EQ(writer->status(), MovieWriterStatus::writing);
    expectColors(some);
    ASSERT_TRUE(finish(1s));
    expectColors(60);
}

TEST_F(RecorderProcessTest, aMovieHasTheBitRateThatWasAskedFor) {
    for (const int bitRate : {4'000'000, 12'000'000}) {
        path = folder.filePath(QString::number(bitRate));
        begin(false, bitRate);
        std::mt19937 random(5);
        constexpr int seconds = 4;
        for (int i = 0; i < seconds * 60; ++i) // what no encoder can foresee
            ASSERT_TRUE(append(i * 1s / 60, frames.next(QRect({}, size), [&](QPainter &painter) {
                for (int y = 0; y < size.height(); y += 3)
                    for (int x = 0; x < size.width(); x += 3)
                        painter.fillRect(x, y, 3, 3, QColor::fromRgb(random()));
            })));
        ASSERT_TRUE(finish(seconds * 1s));
        EXPECT_NEAR(bitRateOf(packetsOf(path), seconds), bitRate, bitRate * 0.2);
        writer.reset();
    }
}

TEST_F(RecorderProcessTest, aMovieOfTwoByTwoPixelsIsWritten) {
    frames = ScreenFrames({2, 2}, 12);
    begin();
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(append(i * 16ms, frames.plain(i < 5 ? Qt::red : Qt::blue)));
    ASSERT_TRUE(finish(1s));
    EXPECT_EQ(writer->status(), MovieWriterStatus::completed) << writer->error().value_or(QString()).toStdString();
    expectPlayable(10);
    const QJsonObject video = streamsOf(path).value(0);
    EXPECT_EQ(video[QLatin1String("width")].toInt(), 2);
    EXPECT_EQ(video[QLatin1String("height")].toInt(), 2);
    const QByteArray pixels = pixelsOf(path);
    ASSERT_EQ(pixels.size(), 10 * 2 * 2 * 3);
    EXPECT_NEAR(static_cast<unsigned char>(pixels[0]), 255, 4);
    EXPECT_NEAR(static_cast<unsigned char>(pixels[pixels.size() - 1]), 255, 4);
    EXPECT_NEAR(static_cast<unsigned char>(pixels[pixels.size() - 3]), 0, 4);
}

TEST_F(RecorderProcessTest, soundHasItsTwoChannelsAndItsBitRate) {
    begin(true);
    constexpr int seconds = 4;
    std::mt19937 random(3);
    std::uniform_real_distribution<float> noise(-0.5F, 0.5F);
    QByteArray samples;
    for (int i = 0; i < seconds * microphoneSampleRate; ++i) {
        const bool isFirstHalf = i < seconds * microphoneSampleRate / 2;
        const float both[] = {isFirstHalf ? 0 : noise(random), noise(random)};
        samples.append(reinterpret_cast<const char *>(both), sizeof both);
    }
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start, .data = samples}));
    ASSERT_TRUE(appendMoving(0ms));
    ASSERT_TRUE(finish(seconds * 1s));
    const QJsonObject sound = streamsOf(path).value(1);
    EXPECT_EQ(sound[QLatin1String("codec_name")].toString(), text("aac"));
    EXPECT_EQ(sound[QLatin1String("channels")].toInt(), 2);
    EXPECT_EQ(sound[QLatin1String("sample_rate")].toString(), text("44100"));
    EXPECT_NEAR(bitRateOf(packetsOf(path, "a"), seconds), 128'000, 128'000 * 0.15);
    const auto loudness = [](const std::vector<float> &samplesOfOne, std::size_t from, std::size_t to) {
        double sum = 0;
        for (std::size_t i = from; i < std::min(to, samplesOfOne.size()); ++i)
            sum += std::abs(double(samplesOfOne[i]));
        return sum / double(to - from);
    };
    constexpr std::size_t second = microphoneSampleRate;
    EXPECT_LT(loudness(soundOf(path, 0), second / 2, second), 0.02);
    EXPECT_GT(loudness(soundOf(path, 1), second / 2, second), 0.1);
    EXPECT_GT(loudness(soundOf(path, 0), 3 * second, 4 * second - second / 2), 0.1);
}

TEST_F(RecorderProcessTest, aBrowserAndAPlayerOfMoviesPlayIt) {
    begin(true);
    for (int i = 0; i < 120; ++i)
        ASSERT_TRUE(append(i * 1s / 60, frames.plain(i < 60 ? QColor(20, 160, 60) : QColor(200, 40, 90))));
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start, .data = tone(2 * microphoneSampleRate)}));
    ASSERT_TRUE(finish(2s));
    const auto player = runProgram(text("mpv"), {text("--vo=null"), text("--ao=null"), text("--no-config"),
                                                 text("--untimed"), text("--msg-level=all=warn"), path});
    EXPECT_EQ(player.exitCode, 0) << (player.output + player.complaints).constData();
    const auto browser = runProgram(text(PLAYS_IN_A_BROWSER), {path, text("1.5")}, 120'000);
    const QJsonObject told = QJsonDocument::fromJson(browser.output).object();
    EXPECT_EQ(QSize(told[QLatin1String("width")].toInt(), told[QLatin1String("height")].toInt()), size)
        << browser.output.constData() << browser.complaints.constData();
    EXPECT_NEAR(told[QLatin1String("duration")].toDouble(), 2, 0.05);
    EXPECT_TRUE(told[QLatin1String("sound")].toBool());
    const QJsonArray colour = told[QLatin1String("colour")].toArray();
    EXPECT_NEAR(colour.at(0).toInt(), 200, 4);
    EXPECT_NEAR(colour.at(1).toInt(), 40, 4);
    EXPECT_NEAR(colour.at(2).toInt(), 90, 4);
}

TEST_F(RecorderProcessTest, whatDidNotChangeIsKeptAndALeftOutFrameIsMadeUpFor) {
    begin();
    ASSERT_TRUE(append(0ms, frames.plain(Qt::white)));
    const QRect first(3, 5, 31, 29);
    const QRect second(200, 100, 33, 35);
    ASSERT_TRUE(append(20ms, frames.next(first, [&](QPainter &painter) { painter.fillRect(first, Qt::black); })));
    // Never appended, and the next one does not name it.
    frames.next(second, [&](QPainter &painter) { painter.fillRect(second, Qt::black); });
    const QRect third(100, 20, 2, 2);
    for (int i = 2; i < 20; ++i)
        ASSERT_TRUE(append(i * 20ms, frames.next(third, [&](QPainter &painter) { painter.fillRect(third, Qt::red); })));
    ASSERT_TRUE(finish(1s));
    const QByteArray pixels = pixelsOf(path);
    const qsizetype bytes = qsizetype(size.width()) * size.height() * 3;
    ASSERT_EQ(pixels.size(), bytes * 20);
    const auto green = [&](int x, int y) {
        return int(static_cast<unsigned char>(pixels[19 * bytes + (qsizetype(y) * size.width() + x) * 3 + 1]));
    };
    EXPECT_LT(green(18, 20), 30);
    EXPECT_LT(green(215, 115), 30);
    EXPECT_GT(green(280, 20), 225);
}

TEST_F(RecorderProcessTest, soundStandsWhereItsTimeStampsSay) {
    begin(true);
    EXPECT_TRUE(writer->isAudioReadyForMoreMediaData());
    constexpr int tenth = microphoneSampleRate / 10;
    // From before the movie, then a hole of 700 ms.
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start - 100ms, .data = tone(tenth * 3)}));
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start + 900ms, .data = tone(tenth * 3)}));
    appendSecondsOfPictures(1.5);
    ASSERT_TRUE(finish(1500ms));
    ASSERT_EQ(streamsOf(path).size(), 2);
    EXPECT_EQ(complaintsAbout(path), "");
    const std::vector<float> samples = soundOf(path);
    EXPECT_NEAR(double(samples.size()), tenth * 12, 1024);
    const auto loudness = [&](int from, int to) {
        double sum = 0;
        for (int i = from; i < to && i < int(samples.size()); ++i)
            sum += std::abs(double(samples[std::size_t(i)]));
        return sum / (to - from);
    };
    constexpr int margin = microphoneSampleRate / 100;
    EXPECT_GT(loudness(margin, tenth * 2 - margin), 0.2);
    EXPECT_LT(loudness(tenth * 2 + margin, tenth * 9 - margin), 0.01);
    EXPECT_GT(loudness(tenth * 9 + margin, tenth * 12 - margin), 0.2);
}

TEST_F(RecorderProcessTest, theFirstSoundedSampleIsWhereItWasHeardToTheSample) {
    begin(true);
    QByteArray click(microphoneSampleRate * 2 * qsizetype(sizeof(float)), '\0');
    constexpr int at = 10'000;
    for (int i = at; i < at + 40; ++i) {
        const float loud = i % 2 ? -0.9F : 0.9F;
        for (int channel = 0; channel < 2; ++channel)
            std::memcpy(click.data() + (i * 2 + channel) * qsizetype(sizeof(float)), &loud, sizeof loud);
    }
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start, .data = click}));
    ASSERT_TRUE(appendMoving(0ms));
    ASSERT_TRUE(finish(1s));
    const std::vector<float> samples = soundOf(path);
    std::size_t loudest = 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (std::abs(samples[i]) > std::abs(samples[loudest]))
            loudest = i;
    EXPECT_NEAR(double(loudest), at + 20, 40);
    EXPECT_NEAR(double(samples.size()), microphoneSampleRate, 1024); // whole packets
}

TEST_F(RecorderProcessTest, twentyMinutesWithoutSoundAreSilenceInNoTime) {
    begin(true);
    ASSERT_TRUE(appendMoving(0ms));
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start, .data = tone(4410)}));
    EXPECT_TRUE(writer->appendAudio({.presentationTime = start + 20min, .data = tone(4410)}));
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(appendMoving(20min));
    ASSERT_TRUE(finish(20min + 1s));
    EXPECT_LT(timer.elapsed(), 2000);
    const auto packets = packetsOf(path, "a");
    ASSERT_FALSE(packets.empty());
    EXPECT_NEAR(packets.back().start, 1200.1, 0.1);
}

TEST_F(RecorderProcessTest, aTrackOfSoundThatNeverCameStaysEmpty) {
    begin(true);
    appendSecondsOfPictures(0.2);
    ASSERT_TRUE(finish(200ms));
    EXPECT_EQ(writer->status(), MovieWriterStatus::completed);
    expectPlayable(12);
    ASSERT_EQ(streamsOf(path).size(), 2);
    const QJsonObject sound = streamsOf(path).value(1);
    EXPECT_EQ(sound[QLatin1String("codec_name")].toString(), text("aac"));
    EXPECT_EQ(sound[QLatin1String("nb_frames")].toString(text("0")), text("0"));
    EXPECT_TRUE(packetsOf(path, "a").empty());
}

TEST_F(RecorderProcessTest, theFirstPictureCanBePlayedBeforeTheSecondComes) {
    begin();
    ASSERT_TRUE(appendMoving(0ms));
    EXPECT_TRUE(eventually([&] { return boxesOf(path).contains("mdat"); }, 2s));
    expectPlayable(1);
}

TEST_F(RecorderProcessTest, anEncoderThatIsKilledLeavesAMovieUpToItsLastSecond) {
    begin(true);
    QElapsedTimer timer;
    timer.start();
    int appended = 0;
    while (timer.elapsed() < 1300) {
        ASSERT_TRUE(appendMoving(milliseconds(timer.elapsed())));
        ++appended;
        EXPECT_TRUE(writer->appendAudio({.presentationTime = start + appended * 20ms, .data = tone(882)}));
        letPass(20ms);
    }
    ASSERT_NE(recorder(), 0);
    ::kill(recorder(), SIGKILL);
    EXPECT_TRUE(eventually([&] { return writer->status() == MovieWriterStatus::failed; }));
    EXPECT_EQ(writer->error(), text("the encoder ended unexpectedly"));
    EXPECT_FALSE(writer->isVideoReadyForMoreMediaData());
    EXPECT_FALSE(writer->isAudioReadyForMoreMediaData());
    EXPECT_TRUE(finish(2s)); // told at once
    EXPECT_EQ(writer->status(), MovieWriterStatus::failed);
    expectPlayable(appended / 3);
    const auto packets = packetsOf(path);
    ASSERT_FALSE(packets.empty());
    EXPECT_GT(packets.back().start + packets.back().duration, 0.4);
    EXPECT_EQ(recordersOf(QCoreApplication::applicationPid()), QList<pid_t>());
}

TEST_F(RecorderProcessTest, aStillScreenIsAsLongAsItStoodWhenTheEncoderIsKilled) {
    begin();
    ASSERT_TRUE(appendMoving(0ms));
    const auto shown = [this] { return streamsOf(path).value(0)[QLatin1String("duration")].toString().toDouble(); };
    EXPECT_TRUE(eventually([&] { return shown() > 0.9; }, 4s));
    ::kill(recorder(), SIGKILL);
    EXPECT_TRUE(eventually([&] { return writer->status() == MovieWriterStatus::failed; }));
    EXPECT_GT(shown(), 0.9);
    expectPlayable(1);
}

TEST_F(RecorderProcessTest, whoeverDropsTheWriterLeavesAFinishedMovie) {
    begin();
    appendSecondsOfPictures(0.5);
    writer.reset();
    EXPECT_TRUE(eventually([] { return recorder() == 0; }));
    expectPlayable(30);
    EXPECT_EQ(boxesOf(path).value(2), "moov");
}

TEST_F(RecorderProcessTest, anEncoderThatIsAskedToEndFinishesTheMovie) {
    begin();
    appendSecondsOfPictures(0.5);
    ::kill(recorder(), SIGTERM);
    EXPECT_TRUE(eventually([&] { return writer->status() != MovieWriterStatus::writing; }));
    EXPECT_EQ(writer->status(), MovieWriterStatus::completed);
    EXPECT_TRUE(eventually([&] { return *endings == 1; })); // and not because we asked
    expectPlayable(30);
}

TEST_F(RecorderProcessTest, anEncoderThatStandsStillRefusesWhatItCannotHoldAndIsGivenUp) {
    recorders = RecorderProcesses(QCoreApplication::applicationDirPath(), 300ms);
    begin(true);
    appendSecondsOfPictures(0.5);
    ASSERT_TRUE(eventually([&] { return boxesOf(path).contains("mdat"); }));
    letPass(600ms);
    ::kill(recorder(), SIGSTOP);
    letPass(50ms);
    QElapsedTimer timer;
    timer.start();
    std::size_t taken = 0;
    std::weak_ptr<const ScreenFrame> held;
    for (std::size_t i = 0; i < 2 * RecorderSession::mostHeldFrames; ++i) {
        auto frame = frames.plain(Qt::red);
        if (i == 0)
            held = frame;
        const bool isReady = writer->isVideoReadyForMoreMediaData();
        const bool isTaken = writer->appendVideo(
            {.status = 0, .presentationTime = start + 1s + int(i) * 16ms, .frame = std::move(frame)});
        EXPECT_EQ(isTaken, isReady);
        taken += isTaken;
    }
    EXPECT_EQ(taken, RecorderSession::mostHeldFrames);
    EXPECT_FALSE(held.expired());
    int sounds = 0;
    while (sounds < 10'000 && writer->appendAudio({.presentationTime = start + sounds * 10ms, .data = tone(441)}))
        ++sounds;
    EXPECT_LT(sounds, 1'000);
    EXPECT_GE(sounds, 30);
    EXPECT_FALSE(writer->isAudioReadyForMoreMediaData());
    EXPECT_LT(timer.elapsed(), 5'000); // nothing waited for it
    EXPECT_TRUE(finish(2s, 2s));
    EXPECT_EQ(writer->status(), MovieWriterStatus::failed);
    EXPECT_EQ(writer->error(), text("the encoder does not answer"));
    EXPECT_TRUE(held.expired());
    EXPECT_TRUE(eventually([] { return recorder() == 0; }));
    expectPlayable(20);
}

/// Says three times that it gets on and then that it is done, each `pause` after the other.
void writeSlowProgram(const QString &path, const char *pause) {
    QFile program(path);
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nfor kind in 2 2 2 3; do sleep " + QByteArray(pause) +
                  "; printf \"\\00$kind\\000\\000\\000\" >&0; done\nsleep 30\n");
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(RecorderProcessTest, anEndThatTakesLongIsWaitedForAsLongAsItComesNearer) {
    recorders = RecorderProcesses(folder.path(), 2s);
    writeSlowProgram(folder.filePath(text("TavrineRecorder")), "0.8");
    begin();
    ASSERT_TRUE(finish(1s, 20s)); // 3.2 s later
    EXPECT_EQ(writer->status(), MovieWriterStatus::completed) << writer->error().value_or(QString()).toStdString();
}

TEST_F(RecorderProcessTest, anEndThatComesNoNearerIsGivenUp) {
    recorders = RecorderProcesses(folder.path(), 100ms);
    writeSlowProgram(folder.filePath(text("TavrineRecorder")), "20");
    begin();
    ASSERT_TRUE(finish(1s));
    EXPECT_EQ(writer->status(), MovieWriterStatus::failed);
    EXPECT_EQ(writer->error(), text("the encoder does not answer"));
}

TEST_F(RecorderProcessTest, aProgramThatIsNotThereIsAnErrorAndMayBeTriedAgain) {
    recorders = RecorderProcesses(folder.path());
    writer = make(path);
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer->addVideoInput({.width = 2, .height = 2, .averageBitRate = 4'000'000}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(writer->startWriting());
        EXPECT_EQ(writer->error(), text("the encoder: No such file or directory"));
        EXPECT_EQ(writer->status(), MovieWriterStatus::unknown);
    }
    QFile::link(QCoreApplication::applicationDirPath() + text("/TavrineRecorder"),
                folder.filePath(text("TavrineRecorder")));
    EXPECT_TRUE(writer->startWriting());
    EXPECT_EQ(writer->status(), MovieWriterStatus::writing);
}

TEST_F(RecorderProcessTest, aMovieIsThePersonsAlone) {
    begin();
    EXPECT_EQ(QFileInfo(path).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(RecorderProcessTest, theEncoderHasItsSocketAndItsFileAndNothingElseOfOurs) {
    begin();
    ASSERT_TRUE(appendMoving(0ms));
    ASSERT_TRUE(eventually([&] { return boxesOf(path).contains("mdat"); }));
    const QDir open(QStringLiteral("/proc/%1/fd").arg(recorder()));
    EXPECT_EQ(open.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System, QDir::Name),
              (QStringList{text("0"), text("1"), text("2"), text("3")}));
    EXPECT_EQ(QFile::symLinkTarget(open.filePath(text("1"))), text("/dev/null"));
    EXPECT_EQ(QFile::symLinkTarget(open.filePath(text("2"))), text("/dev/null"));
}

TEST_F(RecorderProcessTest, aFolderThatVanishesIsToldAtTheEnd) {
    begin();
    appendSecondsOfPictures(0.3);
    ASSERT_TRUE(folder.remove());
    appendSecondsOfPictures(0.3);
    ASSERT_TRUE(finish(1s));
    EXPECT_EQ(writer->status(), MovieWriterStatus::failed);
    EXPECT_EQ(writer->error(), text("the file is gone"));
}

TEST_F(RecorderProcessTest, aFileThatMayNotGrowIsCutBackToWhatCanBePlayed) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{(1 << 20) + 900'000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    begin(true);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::mt19937 random(7);
    for (int i = 0; i < 1200 && writer->status() == MovieWriterStatus::writing; ++i) {
        const QRect whole({}, size);
        auto frame = frames.next(whole, [&](QPainter &painter) {
            for (int n = 0; n < 30; ++n)
                painter.fillRect(int(random() % 300), int(random() % 160), 30, 30, QColor::fromRgb(random()));
        });
        if (eventually([&] {
                return writer->isVideoReadyForMoreMediaData() || writer->status() != MovieWriterStatus::writing;
            }))
            writer->appendVideo({.status = 0, .presentationTime = start + i * 1s / 60, .frame = frame});
    }
    EXPECT_TRUE(eventually([&] { return writer->status() == MovieWriterStatus::failed; }));
    EXPECT_EQ(writer->error(), text("File too large"));
    expectPlayable(30);
    EXPECT_EQ(boxesOf(path), (QList<QByteArray>{"ftyp", "free", "moov", "free", "mdat"}));
    EXPECT_LE(QFileInfo(path).size(), (1 << 20) + 900'000);
}

TEST_F(RecorderProcessTest, twoHundredWritersLeaveNothingBehind) {
    const auto descriptors = [] {
        return QDir(text("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
    };
    const auto memory = [] {
        QFile file(text("/proc/self/statm"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4 : 0; // KiB
    };
    qsizetype descriptorsBefore = 0;
    qint64 memoryBefore = 0;
    for (int i = 0; i < 200; ++i) {
        path = folder.filePath(QString::number(i));
        begin(i % 2 == 0);
        ASSERT_TRUE(appendMoving(0ms));
        if (i % 4 == 0) {
            ASSERT_TRUE(finish(1s));
        } else if (i % 4 == 1) {
            writer->cancelWriting();
            EXPECT_FALSE(QFile::exists(path));
        } else if (i % 4 == 2) {
            ::kill(recorder(), SIGKILL);
        }
        writer.reset();
        if (i % 20 == 19) {
            ASSERT_TRUE(eventually([] { return recorder() == 0; }));
        }
        if (i == 39) {
            descriptorsBefore = descriptors();
            memoryBefore = memory();
        }
    }
    EXPECT_TRUE(eventually([&] { return descriptors() <= descriptorsBefore; }))
        << descriptors() << " descriptors, and " << descriptorsBefore << " before";
    EXPECT_LT(memory() - memoryBefore, 2'000);
}

} // namespace
} // namespace tavrine::test
