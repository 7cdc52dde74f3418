// The player's process with movies: what is seen of it, how soon, and what is left when something goes wrong.
#include "adapters/linux/MoviePlayerProcess.h"

#include "support/Eventually.h"
#include "support/MovieScreen.h"
#include "support/Movies.h"
#include "support/SoundRecording.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>
#include <limits>

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

/// Longer than the time between two signs of a player.
constexpr auto impatience = 2500ms;

class MoviePlayerProcessTest : public testing::Test {
protected:
    [[nodiscard]] QString path(const char *name) const { return folder.filePath(text(name)); }
    void play(const QString &movie) {
        failure.reset();
        player = processes.makePlayer(movie);
        screen.show(*player);
        player->setOnFailure([this](const QString &reason) { failure = reason; });
        player->play();
    }
    /// So that a player that says nothing is ended soon.
    void playImpatiently(const QString &movie) {
        MoviePlayerProcesses impatient(QCoreApplication::applicationDirPath(), impatience);
        failure.reset();
        player = impatient.makePlayer(movie);
        screen.show(*player);
        player->setOnFailure([this](const QString &reason) { failure = reason; });
        player->play();
    }
    [[nodiscard]] bool becomes(const QColor &color, QPoint place = QRect({}, MovieScreen::size).center()) {
        return eventually([&] { return isLike(screen.color(place), color); });
    }

    QTemporaryDir folder;
    MovieScreen screen;
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
    ASSERT_TRUE(eventually([this] { return !screen.isUntouched(); }));
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
    EXPECT_TRUE(eventually([] { return playerProcesses().isEmpty(); }));
}

TEST_F(MoviePlayerProcessTest, theMovieKeepsItsAspect) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.3, text("90x90")));
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    EXPECT_TRUE(becomes(Qt::black, {5, 45}));
    EXPECT_TRUE(becomes(Qt::black, {MovieScreen::size.width() - 5, 45}));
}

TEST_F(MoviePlayerProcessTest, theMovieFollowsTheSizeThatIsWanted) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.3));
    play(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green, {155, 85}));
    player->setPictureSize({320, 180});
    EXPECT_TRUE(becomes(Qt::green, {315, 175}));
    player->setPictureSize({320, 90});
    EXPECT_TRUE(becomes(Qt::black, {315, 45}));
    EXPECT_TRUE(becomes(Qt::green, {160, 45}));
    player->pause();
    player->setPictureSize({90, 90});
    EXPECT_TRUE(eventually([this] { return screen.picture().size() == QSize(90, 90); }));
    EXPECT_TRUE(becomes(Qt::black, {45, 5}));
    EXPECT_TRUE(becomes(Qt::green, {45, 45}));
}

TEST_F(MoviePlayerProcessTest, aSizeBeyondAllScreensIsMadeSmallerInTheSameShapeAndNoneIsOnePixel) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.3));
    play(path("a.mp4"));
    player->setPictureSize({8192, 4096});
    EXPECT_TRUE(eventually([this] { return screen.picture().size() == QSize(2048, 1024); }));
    player->setPictureSize({1, 100'000});
    EXPECT_TRUE(eventually([this] { return screen.picture().size() == QSize(1, 2048); }));
    player->setPictureSize({});
    EXPECT_TRUE(eventually([this] { return screen.picture().size() == QSize(1, 1); }));
    EXPECT_EQ(failure, std::nullopt);
}

TEST_F(MoviePlayerProcessTest, coloursAreThoseOfTheMovie) {
    for (const char *color : {"0xC81E28", "0x14B43C", "0x2850DC", "white", "gray"}) {
        makeMovie(path("a.mp4"), plain(text(color), 0.3));
        play(path("a.mp4"));
        ASSERT_TRUE(eventually([this] { return !screen.isUntouched(); }));
        const QColor wanted(QString(text(color)).replace(text("0x"), text("#")));
        EXPECT_TRUE(becomes(wanted)) << color << " is shown as " << screen.color().name().toStdString();
    }
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
    EXPECT_TRUE(isLike(screen.color(), Qt::green)) << "and it goes on";
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
        EXPECT_TRUE(eventually([this] { return failure.has_value() || !screen.isUntouched(); })) << i;
        player.reset();
        EXPECT_TRUE(eventually([] { return playerProcesses().isEmpty(); })) << i;
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
    EXPECT_TRUE(isLike(screen.color(), Qt::red));
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
        EXPECT_TRUE(eventually([] { return playerProcesses().isEmpty(); }));
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
    ASSERT_EQ(playerProcesses().size(), 1);
    ::kill(playerProcesses().first(), SIGKILL);
    EXPECT_TRUE(eventually([this] { return failure.has_value(); }, 1s));
    player->setMuted(true); // to nobody
    player->play();
}

TEST_F(MoviePlayerProcessTest, aPlayerThatHangsIsEndedAndHoldsNobodyUp) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.5));
    playImpatiently(path("a.mp4"));
    EXPECT_TRUE(becomes(Qt::green));
    ASSERT_EQ(playerProcesses().size(), 1);
    ::kill(playerProcesses().first(), SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100'000; ++i)
        player->setMuted(i % 2 == 0);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_TRUE(eventually([this] { return failure.has_value(); }, 5s));
    EXPECT_TRUE(eventually([] { return playerProcesses().isEmpty(); }));
}

/// A program in the player's place, with the player's memory as its descriptor 4.
class MoviePlayerAttack : public MoviePlayerProcessTest {
protected:
    void play(const char *script) {
        QFile program(path("TavrinePlayer"));
        ASSERT_TRUE(program.open(QIODevice::WriteOnly));
        program.write(QByteArray("#!/bin/sh\n") + script);
        program.close();
        ASSERT_TRUE(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        makeMovie(path("a.mp4"), plain(text("lime"), 0.1));
        MoviePlayerProcesses attackers(folder.path(), impatience);
        player = attackers.makePlayer(path("a.mp4"));
        screen.show(*player);
        player->setOnFailure([this](const QString &reason) { failure = reason; });
    }
};

TEST_F(MoviePlayerAttack, itsMemoryCannotBeMadeSmallerOrLarger) {
    ASSERT_NO_FATAL_FAILURE(play("truncate -s 4096 /proc/self/fd/4 && exit\n"
                                 "truncate -s 1G /proc/self/fd/4 && exit\n"
                                 "echo picture 160 90\n"
                                 "exec sleep 60\n"));
    EXPECT_TRUE(becomes(Qt::black)) << "what there is, which is nothing";
    EXPECT_EQ(failure, std::nullopt);
}

TEST_F(MoviePlayerAttack, whatItWritesIsOpaque) {
    ASSERT_NO_FATAL_FAILURE(play("head -c 57600 /dev/zero | tr '\\000' '\\100' >&4\n"
                                 "echo picture 160 90\n"
                                 "exec sleep 60\n"));
    EXPECT_TRUE(becomes(QColor(64, 64, 64)));
    EXPECT_EQ(*reinterpret_cast<const QRgb *>(screen.picture().constScanLine(0)), 0xff404040U);
}

TEST_F(MoviePlayerAttack, sizesThatAreNoneAreItsEnd) {
    for (const char *line :
         {"picture 0 90", "picture 160 -1", "picture 2049 1", "picture 1 2049", "picture 99999999999 2", "picture 160",
          "picture", "picture 160 90 1", "picture 160x90", "picture  160 90"}) {
        failure.reset();
        ASSERT_NO_FATAL_FAILURE(play(("echo '" + QByteArray(line) + "'\nexec sleep 60\n").constData()));
        EXPECT_TRUE(eventually([this] { return failure.has_value(); })) << line;
        EXPECT_EQ(failure, text("the player makes no sense")) << line;
        EXPECT_TRUE(screen.isUntouched()) << line;
        EXPECT_TRUE(eventually([] { return playerProcesses().isEmpty(); }));
    }
}

TEST_F(MoviePlayerAttack, aPictureThatNobodyAskedForIsItsEnd) {
    ASSERT_NO_FATAL_FAILURE(play("exec yes 'picture 160 90'\n"));
    EXPECT_TRUE(eventually([this] { return failure.has_value(); }));
    EXPECT_EQ(failure, text("the player makes no sense"));
    EXPECT_LE(screen.count(), 1);
}

TEST_F(MoviePlayerAttack, picturesComeNoFasterThanScreensShowThem) {
    ASSERT_NO_FATAL_FAILURE(play("while read line; do case $line in size*|next) echo picture 160 90;; esac; done\n"));
    QElapsedTimer sinceLast;
    qint64 shortest = std::numeric_limits<qint64>::max();
    int count = 0;
    player->setOnPicture([&](const QImage &) {
        if (++count > 1)
            shortest = std::min(shortest, sinceLast.nsecsElapsed());
        sinceLast.start();
    });
    EXPECT_TRUE(eventually([&] { return count > 30; }));
    EXPECT_GT(shortest / 1'000'000, MoviePlayerProcesses::betweenPictures.count() - 2);
    EXPECT_EQ(failure, std::nullopt);
}

} // namespace
} // namespace tavrine::test
