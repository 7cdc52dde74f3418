// The player's process with movies: what is seen of it, how soon, and what is left when something goes wrong.
#include "adapters/linux/MoviePlayerProcess.h"

#include "support/Eventually.h"
#include "support/MovieWindow.h"
#include "support/Movies.h"
#include "support/SoundRecording.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// On a machine that does many other things beside; a quiet one takes a tenth.
constexpr auto firstPixelsBound = 1500ms;
constexpr auto silenceBound = 500ms;

QList<pid_t> players() {
    const QString parent = QString::number(QCoreApplication::applicationPid());
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(parent));
    QList<pid_t> found;
    if (!file.open(QIODevice::ReadOnly))
        return found;
    for (const QString &child : QString::fromUtf8(file.readAll()).split(u' ', Qt::SkipEmptyParts)) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(child.trimmed()));
        if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("TavrinePlayer"))
            found.append(child.toInt());
    }
    return found;
}

/// Longer than the time between two signs of a player.
constexpr auto impatience = 2500ms;

class MoviePlayerProcessTest : public testing::Test {
protected:
    [[nodiscard]] QString path(const char *name) const { return folder.filePath(text(name)); }
    void play(const QString &movie) {
        failure.reset();
        player = processes.makePlayer(movie, window.id());
        player->setOnFailure([this](const QString &reason) { failure = reason; });
        player->play();
    }
    /// So that a player that says nothing is ended soon.
    void playImpatiently(const QString &movie) {
        MoviePlayerProcesses impatient(QCoreApplication::applicationDirPath(), impatience);
        failure.reset();
        player = impatient.makePlayer(movie, window.id());
        player->setOnFailure([this](const QString &reason) { failure = reason; });
        player->play();
    }
    [[nodiscard]] bool becomes(const QColor &color, std::int16_t x = MovieWindow::width / 2,
                               std::int16_t y = MovieWindow::height / 2) {
        return eventually([&] { return isLike(window.color(x, y), color); });
    }

    QTemporaryDir folder;
    MovieWindow window;
    MoviePlayerProcesses processes{QCoreApplication::applicationDirPath()};
    std::unique_ptr<MoviePlayer> player;
    std::optional<QString> failure;
};

TEST_F(MoviePlayerProcessTest, theFirstPixelsComeSoonAndTheMovieRunsOverAndOver) {
    makeMovie(path("a.mp4"), text("color=c=red:s=160x90:r=30:d=0.3[a];color=c=lime:s=160x90:r=30:d=0.3[b];"
                                  "[a][b]concat=n=2"));
    QElapsedTimer timer;
    timer.start();
    play(path("a.mp4"));
    EXPECT_LT(timer.elapsed(), 50) << "a process is not waited for";
    ASSERT_TRUE(eventually([this] { return !window.isUntouched(); }));
    std::printf("first pixels after %lld ms\n", static_cast<long long>(timer.elapsed()));
    EXPECT_LT(timer.elapsed(), firstPixelsBound.count());
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(becomes(Qt::red));
        EXPECT_TRUE(becomes(Qt::green));
    }
    EXPECT_EQ(failure, std::nullopt);
    timer.start();
    player.reset();
    EXPECT_LT(timer.elapsed(), 50);
    EXPECT_TRUE(eventually([this] { return window.isUntouched() && players().isEmpty(); }));
}

TEST_F(MoviePlayerProcessTest, theMovieKeepsItsAspect) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.3, text("90x90")));
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    EXPECT_TRUE(becomes(Qt::black, 5));
    EXPECT_TRUE(becomes(Qt::black, MovieWindow::width - 5));
}

TEST_F(MoviePlayerProcessTest, theMovieFollowsTheSizeOfItsWindow) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.3));
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green, 155, 85));
    window.resize(320, 180);
    EXPECT_TRUE(becomes(Qt::green, 315, 175));
    window.resize(320, 90);
    EXPECT_TRUE(becomes(Qt::black, 315, 45));
    EXPECT_TRUE(becomes(Qt::green, 160, 45));
}

TEST_F(MoviePlayerProcessTest, aMovieThatIsMutedIsSilentSoon) {
    PrivateSound sound(SoundServerKind::pipeWire);
    SoundRecording recording(text("one"));
    makeMovie(path("a.mp4"), plain(text("lime"), 2), tone(2), {text("-c:a"), text("aac")});
    play(path("a.mp4"));
    ASSERT_TRUE(eventually([&] { return recording.isHeard(); }));
    letPass(500ms);
    const auto begin = SoundRecording::Clock::now();
    player->setMuted(true);
    ASSERT_TRUE(eventually([&] { return !recording.isHeard(); }));
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(recording.changed() - begin);
    std::printf("silent after %lld ms\n", static_cast<long long>(took.count()));
    EXPECT_LT(took, silenceBound);
    EXPECT_TRUE(isLike(window.color(), Qt::green)) << "and it goes on";
}

TEST_F(MoviePlayerProcessTest, damagedMoviesAreShownOrAreFailures) {
    makeMovie(path("a.mp4"), text("testsrc=s=160x90:r=30:d=0.5"), tone(0.5), {text("-c:a"), text("aac")});
    QFile file(path("a.mp4"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    quint32 number = 11; // the same damage in each run
    for (int i = 0; i < 6; ++i) {
        QByteArray damaged = whole;
        for (int j = 0; j < 40; ++j) {
            number = number * 1664525 + 1013904223;
            damaged[qsizetype(number % quint32(damaged.size()))] = char(number >> 24);
        }
        QFile other(path("damaged.mp4"));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly));
        other.write(damaged);
        other.close();
        play(path("damaged.mp4"));
        EXPECT_TRUE(eventually([this] { return failure.has_value() || !window.isUntouched(); })) << i;
        player.reset();
        EXPECT_TRUE(eventually([this] { return window.isUntouched(); })) << i;
    }
}

TEST_F(MoviePlayerProcessTest, moviesOfBrowsersAndSingleFramesAreShownToo) {
    makeMovie(path("a.webm"), plain(text("lime"), 0.3), {}, {text("-c:v"), text("libvpx-vp9")});
    play(path("a.webm"));
    EXPECT_TRUE(becomes(Qt::green));
    makeMovie(path("b.mp4"), plain(text("red"), 0.02));
    playImpatiently(path("b.mp4"));
    EXPECT_TRUE(becomes(Qt::red));
    player->pause();
    letPass(impatience + 100ms);
    EXPECT_TRUE(isLike(window.color(), Qt::red));
    EXPECT_EQ(failure, std::nullopt) << "it says that it is alive";
}

TEST_F(MoviePlayerProcessTest, soundAloneAndWhatIsCutOffAreFailures) {
    ffmpeg({text("-f"), text("lavfi"), text("-i"), tone(0.2), text("-c:a"), text("aac"), path("sound.mp4")});
    makeMovie(path("a.mp4"), text("testsrc=s=160x90:r=30:d=1"));
    QFile whole(path("a.mp4"));
    ASSERT_TRUE(whole.open(QIODevice::ReadWrite) && whole.resize(whole.size() / 2));
    for (const char *name : {"sound.mp4", "a.mp4"}) {
        play(path(name));
        EXPECT_TRUE(eventually([this] { return failure.has_value(); })) << name;
        EXPECT_TRUE(eventually([] { return players().isEmpty(); }));
    }
}

TEST_F(MoviePlayerProcessTest, aSoundServerThatHangsCostsTheSoundAlone) {
    PrivateSound sound(SoundServerKind::pulseAudio);
    sound.hang();
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5), tone(0.5), {text("-c:a"), text("aac")});
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    sound.goOn();
}

TEST_F(MoviePlayerProcessTest, aPlayerThatIsKilledIsAFailureAtOnce) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5));
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    ASSERT_EQ(players().size(), 1);
    ::kill(players().first(), SIGKILL);
    EXPECT_TRUE(eventually([this] { return failure.has_value(); }, 1s));
    EXPECT_TRUE(eventually([this] { return window.isUntouched(); }));
    player->setMuted(true); // to nobody
    player->play();
}

TEST_F(MoviePlayerProcessTest, aPlayerThatHangsIsEndedAndHoldsNobodyUp) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5));
    playImpatiently(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    ASSERT_EQ(players().size(), 1);
    ::kill(players().first(), SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100'000; ++i)
        player->setMuted(i % 2 == 0);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_TRUE(eventually([this] { return failure.has_value(); }, 5s));
    EXPECT_TRUE(eventually([] { return players().isEmpty(); }));
}

TEST_F(MoviePlayerProcessTest, withoutAScreenThereIsAFailure) {
    const QByteArray display = qgetenv("DISPLAY");
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5));
    for (const char *other : {"", ":4711", "elsewhere:0", "nonsense", "/tmp/none"}) {
        qputenv("DISPLAY", other);
        play(path("a.mp4"));
        EXPECT_TRUE(eventually([this] { return failure.has_value(); })) << other;
    }
    qputenv("DISPLAY", display);
}

TEST_F(MoviePlayerProcessTest, aWindowThatIsNoneOrGoesIsAFailureOrNoPicture) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5));
    player = processes.makePlayer(path("a.mp4"), 12345);
    player->setOnFailure([this](const QString &reason) { failure = reason; });
    player->play();
    letPass(500ms);
    EXPECT_TRUE(window.isUntouched());
    player.reset();
    EXPECT_TRUE(eventually([] { return players().isEmpty(); }));
}

} // namespace
} // namespace tavrine::test
