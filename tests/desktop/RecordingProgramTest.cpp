// The built program with all its real parts: an area is recorded by the hot key, while another program counts in it and
// a tone is heard, and the movie is compared with what that program says it drew.

#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/CountingWindow.h"
#include "support/MovieReading.h"
#include "support/SoundRecording.h"
#include "support/TonePlayer.h"
#include "support/Wait.h"

#include <QColor>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <map>

#include <gmock/gmock.h>

using namespace tavrine::test;
using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

using Clock = CountingWindow::Clock;
using Seconds = std::chrono::duration<double>;

constexpr int keySix = 15;
constexpr QRect area(100, 140, 320, 240);
constexpr auto overlay = "Select Area to Record";
constexpr auto bar = "Recording";
constexpr auto preview = "Recording Complete";
constexpr auto pace = 20ms;                    ///< longer than a frame, so that each number can be one
constexpr std::size_t count = 50;              ///< of the numbers
constexpr auto frameLength = 1'000'000us / 60; ///< the shortest

class RecordingsOfAProgram : public ::testing::Test {
protected:
    static void pass(std::chrono::milliseconds length) {
        (void)waitUntil([] { return false; }, length);
    }
    /// By the hot key, a drag, the switch of the microphone and the button: by keys.
    void startRecording(bool hasSound) {
        desktop.keyboard.chord({key::leftSuper, key::leftShift, keySix});
        ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(overlay); })) << qPrintable(program.output());
        desktop.keyboard.movePointer(area.left(), area.top());
        pass(200ms);
        desktop.keyboard.press(1);
        desktop.keyboard.movePointer(area.center().x(), area.center().y());
        desktop.keyboard.movePointer(area.left() + area.width(), area.top() + area.height());
        desktop.keyboard.release(1);
        pass(200ms);
        if (hasSound) {
            for (const int keycode : {key::tab, key::tab, key::space}) // the cross, the microphone
                desktop.keyboard.tap(keycode);
            for (const int keycode : {key::tab, key::tab, key::tab}) // the other switch, the delays, the button
                desktop.keyboard.tap(keycode);
        }
        desktop.pressReturn();
        ASSERT_TRUE(waitUntil([this] { return desktop.isShown(bar); })) << qPrintable(program.output());
        ASSERT_TRUE(waitUntil([this] { return !desktop.isShown(overlay); }));
        ASSERT_TRUE(
            waitUntil([this] { return program.output().contains(QLatin1String("from first SCStream frame")); }));
    }
    void clickAtTheRightEnd(const char *title, QPoint fromTheLowerRightCorner) {
        const auto windows = desktop.windowsTitled(QString::fromUtf8(title));
        ASSERT_EQ(windows.size(), 1U);
        desktop.click(desktop.geometry(windows.front()).bottomRight() - fromTheLowerRightCorner);
    }
    /// What is behind all windows, from now on.
    static void fillScreen(const char *colour) {
        (void)runProgram(QStringLiteral("xsetroot"), {QStringLiteral("-solid"), QString::fromLatin1(colour)});
    }
    /// The only file of a folder; empty when there is none.
    [[nodiscard]] static QString fileIn(const QString &folder) {
        const QStringList files = QDir(folder).entryList(QDir::Files);
        return files.size() == 1 ? folder + u'/' + files.constFirst() : QString();
    }
    [[nodiscard]] QString movieThatIsWritten() const {
        return fileIn(program.home() + QStringLiteral("/.cache/Tavrine/tmp"));
    }

    Program program;
    Desktop desktop;
};

/// A sound server with a microphone that hears what is played; the programs that are started below find it.
struct WithSound {
    WithSound() { sound.addMicrophoneBefore(QStringLiteral("one"), QStringLiteral("microphone")); }
    PrivateSound sound{SoundServerKind::pulseAudio};
    TonePlayer tone{"one"};
    /// A device that nobody listens to takes two seconds until its sound comes at once.
    SoundRecording listener{QStringLiteral("one")};
};

class RecordingsWithSound : public WithSound, public RecordingsOfAProgram {};

constexpr qsizetype pictureBytes = qsizetype{3} * area.width() * area.height();

QColor colourAt(const QByteArray &pixels, qsizetype picture, QPoint place) {
    const auto *pixel = reinterpret_cast<const uchar *>(pixels.constData()) + picture * pictureBytes +
                        qsizetype{3} * (place.y() * area.width() + place.x());
    return {pixel[0], pixel[1], pixel[2]};
}

bool isRed(const QColor &colour) {
    return colour.red() > 220 && colour.green() < 30 && colour.blue() < 30;
}

bool endsInRed(const QByteArray &pixels) {
    const qsizetype pictures = pixels.size() / pictureBytes;
    return pictures > 0 && isRed(colourAt(pixels, pictures - 1, {area.width() / 2, area.height() / 2}));
}

/// What a movie shows: the numbers, each at its moment in seconds of the movie.
struct Shown {
    int number = 0;
    double time = 0;
};

/// The pictures from the first number to the last one.
std::vector<Shown> numbersIn(const QByteArray &pixels, const std::vector<PacketTime> &packets) {
    std::vector<Shown> shown;
    EXPECT_EQ(pixels.size(), qsizetype(packets.size()) * pictureBytes);
    for (std::size_t i = 0; i < packets.size(); ++i) {
        const auto *picture = reinterpret_cast<const uchar *>(pixels.constData()) + qsizetype(i) * pictureBytes;
        const auto number = CountingWindow::numberIn(picture, area.size());
        if (number)
            shown.push_back({*number, packets[i].start});
        else
            EXPECT_TRUE(shown.empty() || endsInRed(pixels.first(qsizetype(i + 1) * pictureBytes)))
                << "a picture that shows no number, at " << packets[i].start;
        for (const int x : {0, area.width() - 1}) // the red frame lies outside
            EXPECT_TRUE(!number || !isRed(colourAt(pixels, qsizetype(i), {x, 75})));
    }
    return shown;
}

/// What the program that counts says of itself.
struct Drawn {
    std::vector<CountingWindow::Draw> numbers;
    Seconds late;    ///< all in all
    Seconds longest; ///< of that
    Seconds waited;  ///< of that thread among those who record or show which had to wait most for a processor
};

/// How long each thread of those who record or show has waited for a processor since it began, by its number.
std::map<QString, Seconds> waitsForProcessors() {
    std::map<QString, Seconds> waits;
    const QByteArrayList names{"tavrine", "TavrineRecorder", "Xvfb"};
    for (const QString &process : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
        const auto read = [](const QString &path) {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
        };
        const QString folder = QStringLiteral("/proc/") + process;
        if (!names.contains(read(folder + QStringLiteral("/comm"))))
            continue;
        for (const QString &task :
             QDir(folder + QStringLiteral("/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const auto parts = read(folder + QStringLiteral("/task/") + task + QStringLiteral("/schedstat")).split(' ');
            waits[task] = std::chrono::nanoseconds(parts.size() > 1 ? parts[1].toLongLong() : 0);
        }
    }
    return waits;
}

Seconds longestWaitSince(const std::map<QString, Seconds> &before) {
    Seconds longest{0};
    for (const auto &[task, waited] : waitsForProcessors()) {
        const auto known = before.find(task);
        longest = std::max(longest, waited - (known == before.end() ? Seconds(0) : known->second));
    }
    return longest;
}

/// When the movie began, from when to when at most: every number of it was on the screen at its moment and the next one
/// was not.
std::pair<Clock::time_point, Clock::time_point> beginningOf(const std::vector<Shown> &shown, const Drawn &drawn) {
    auto earliest = Clock::time_point::min();
    auto latest = Clock::time_point::max();
    // A frame stands for the moment at which it was due, if it came less than half a frame after it; and while it is
    // read a busy machine may keep its reader waiting.
    const auto busy = frameLength / 2 + std::chrono::duration_cast<Clock::duration>(drawn.longest);
    for (const Shown &each : shown) {
        const auto time = std::chrono::duration_cast<Clock::duration>(Seconds(each.time));
        const auto number = static_cast<std::size_t>(each.number);
        earliest = std::max(earliest, drawn.numbers.at(number).before - busy - time);
        if (number + 1 < drawn.numbers.size())
            latest = std::min(latest, drawn.numbers[number + 1].after - time);
    }
    return {earliest, latest};
}

/// A number is missing where the machine was too busy, and nowhere else. The way of a frame has five more steps at
/// which a busy machine keeps it waiting as it does those who draw.
void expectAllOf(const Drawn &drawn, const std::vector<Shown> &shown) {
    std::size_t found = shown.empty() ? 0 : 1;
    for (std::size_t i = 1; i < shown.size(); ++i) {
        const auto from = static_cast<std::size_t>(shown[i - 1].number);
        const auto to = static_cast<std::size_t>(shown[i].number);
        ASSERT_TRUE(from <= to && to < drawn.numbers.size()) << from << " and " << to;
        found += from < to ? 1 : 0; // what is drawn while a frame is read gives another one of the same
        EXPECT_LT(drawn.numbers[to].before - drawn.numbers[from].before, 3 * pace + 6 * drawn.longest + drawn.waited)
            << "after " << from;
    }
    const std::size_t missing = drawn.numbers.size() - found;
    EXPECT_LE(double(missing), 0.05 * double(drawn.numbers.size()) + (1.5 * drawn.late + drawn.waited) / Seconds(pace));
    EXPECT_GE(found, 2U);
}

/// When the tone begins, in seconds of the movie, and for how long it is heard.
struct ToneHeard {
    double start = -1;
    double length = 0;
};

ToneHeard toneIn(const std::vector<float> &samples, double trackStart) {
    constexpr int rate = 44'100;
    constexpr std::size_t wave = rate / TonePlayer::hertz;
    ToneHeard tone;
    for (std::size_t i = 0; i + wave <= samples.size(); i += wave) {
        const auto loudest = std::max_element(samples.begin() + qsizetype(i), samples.begin() + qsizetype(i + wave));
        if (*loudest < TonePlayer::level / 2)
            continue;
        if (tone.start < 0)
            tone.start = trackStart + double(i) / rate;
        tone.length += double(wave) / rate;
    }
    return tone;
}

TEST_F(RecordingsWithSound, whatIsDrawnInTheAreaIsInTheMovieAtItsMomentAndWhatIsHeardTooAndNothingElse) {
    fillScreen("red");
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(waitUntil([this] { return listener.samples() > 0; }));
    ASSERT_NO_FATAL_FAILURE(startRecording(true));
    std::optional<CountingWindow> counting;
    counting.emplace(area, pace); // it would lie above the overlay
    const auto waitsBefore = waitsForProcessors();
    counting->begin();
    const auto toneHeard = tone.begin();
    ASSERT_TRUE(waitUntil([&] { return counting->draws().size() >= count; }));
    counting->end();
    const Drawn drawn{counting->draws(), counting->lateness(), counting->longestLateness(),
                      longestWaitSince(waitsBefore)};
    std::printf("waited for a processor: %.3f s\n", drawn.waited.count());
    counting.reset();
    ASSERT_TRUE(waitUntil([&] { return endsInRed(pixelsOf(movieThatIsWritten())); })) << qPrintable(program.output());
    const auto beforeStop = Clock::now();
    clickAtTheRightEnd(bar, {40, 20});
    ASSERT_TRUE(waitUntil([this] { return program.output().contains(QLatin1String("stop() invoked")); }));
    const auto afterStop = Clock::now();
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(bar); }));
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(preview); })) << qPrintable(program.output());
    pass(200ms);
    clickAtTheRightEnd(preview, {60, 30});
    QString path;
    ASSERT_TRUE(waitUntil([&] {
        path = fileIn(program.home() + QStringLiteral("/Documents/Tavrine QuickShots"));
        return !path.isEmpty();
    })) << qPrintable(program.output());
    EXPECT_TRUE(waitUntil([this] {
        return !program.rows("SELECT content FROM items WHERE content LIKE '[Screen Recording]%'").isEmpty();
    }));

    EXPECT_EQ(complaintsAbout(path), "");
    const auto streams = streamsOf(path);
    ASSERT_EQ(streams.size(), 2);
    EXPECT_EQ(streams[0][QLatin1String("profile")].toString(), QStringLiteral("High"));
    EXPECT_EQ(QSize(streams[0][QLatin1String("width")].toInt(), streams[0][QLatin1String("height")].toInt()),
              area.size());
    EXPECT_EQ(streams[1][QLatin1String("codec_name")].toString(), QStringLiteral("aac"));

    const auto packets = packetsOf(path);
    for (std::size_t i = 1; i < packets.size(); ++i)
        EXPECT_GE(packets[i].start - packets[i - 1].start, Seconds(frameLength).count() - 0.001) << i;
    const auto shown = numbersIn(pixelsOf(path), packets);
    expectAllOf(drawn, shown);
    const auto [earliest, latest] = beginningOf(shown, drawn);
    EXPECT_LE(earliest, latest) << "off by " << Seconds(earliest - latest).count();
    const double length = streams[0][QLatin1String("duration")].toString().toDouble();
    EXPECT_GE(length, Seconds(beforeStop - latest).count());
    EXPECT_LE(length, Seconds(afterStop - earliest).count());
    const ToneHeard heard = toneIn(soundOf(path), streams[1][QLatin1String("start_time")].toString().toDouble());
    ASSERT_GE(heard.start, 0);
    // Its start and what is seen at that moment.
    const auto toneSeen = std::chrono::duration_cast<Clock::duration>(Seconds(heard.start));
    EXPECT_GE(latest + toneSeen, toneHeard - 40ms);
    EXPECT_LE(earliest + toneSeen, toneHeard + 40ms);
    EXPECT_GE(heard.length, 0.9 * (length - heard.start) - 0.2);
}

TEST_F(RecordingsOfAProgram, oneThatIsKilledWhileItRecordsShowsTheMovieWhenItIsStartedAgain) {
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_NO_FATAL_FAILURE(startRecording(false));
    CountingWindow counting(area, pace);
    counting.begin();
    const auto showsNumbers = [this](int least) {
        const QString path = movieThatIsWritten();
        const auto packets = packetsOf(path);
        const auto shown = numbersIn(pixelsOf(path).first(qsizetype(packets.size()) * pictureBytes), packets);
        return !shown.empty() && shown.back().number >= least;
    };
    ASSERT_TRUE(waitUntil([&] { return counting.draws().size() >= count / 2; }));
    program.kill9();
    counting.end();
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown(preview); })) << qPrintable(program.output());
    EXPECT_EQ(complaintsAbout(movieThatIsWritten()), "");
    EXPECT_TRUE(showsNumbers(2));
    EXPECT_FALSE(desktop.isShown(bar));
    EXPECT_EQ(boxesOf(movieThatIsWritten()).value(2), "moov"); // the encoder has finished it
}

} // namespace
