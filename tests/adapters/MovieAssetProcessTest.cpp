// What looks into movies: what comes of movies of all kinds, and of what is no movie but would like to be one.
#include "adapters/linux/MovieAssetProcess.h"

#include "adapters/linux/MovieProtocol.h"
#include "support/Eventually.h"
#include "support/Movies.h"
#include "support/Program.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtEndian>

#include <csignal>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using movieProtocol::Report;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The upper half red, the lower one blue.
QString halves(double seconds) {
    return text("color=c=red:s=160x90:r=30:d=%1,format=rgb24,drawbox=y=45:h=45:w=160:color=blue:t=fill").arg(seconds);
}

class MovieAssetProcessTest : public testing::Test {
protected:
    [[nodiscard]] QString path(const char *name) const { return folder.filePath(text(name)); }
    QString write(const char *name, const QByteArray &contents) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return path(name);
    }
    [[nodiscard]] static QByteArray contents(const QString &path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    std::optional<QImage> frame(const QString &path, int longestEdge = 480) {
        bool isAnswered = false;
        std::optional<QImage> result;
        asset.firstFrame(path, longestEdge, [&](std::optional<QImage> answer) {
            isAnswered = true;
            result = std::move(answer);
        });
        EXPECT_TRUE(eventually([&] { return isAnswered; }));
        return result;
    }
    std::optional<MovieFacts> facts(const QString &path) {
        bool isAnswered = false;
        std::optional<MovieFacts> result;
        asset.facts(path, [&](std::optional<MovieFacts> answer) {
            isAnswered = true;
            result = answer;
        });
        EXPECT_TRUE(eventually([&] { return isAnswered; }));
        return result;
    }
    bool copy(const QString &source, const QString &target) {
        std::optional<bool> result;
        asset.copyVideoTrack(source, target, [&](bool completed) { result = completed; });
        EXPECT_TRUE(eventually([&] { return result.has_value(); }, 20s));
        return result.value_or(false);
    }
    void expectNone(const QString &movie) {
        EXPECT_EQ(frame(movie), std::nullopt) << movie.toStdString();
        EXPECT_EQ(facts(movie), std::nullopt) << movie.toStdString();
        EXPECT_FALSE(copy(movie, path("none.mp4"))) << movie.toStdString();
        EXPECT_FALSE(QFile::exists(path("none.mp4"))) << movie.toStdString();
    }
    /// Of each packet of the pictures: its times, its size, and whether one can begin with it.
    static QString packets(const QString &movie) {
        return outputOf(text("ffprobe"),
                        {text("-loglevel"), text("error"), text("-select_streams"), text("v"), text("-show_entries"),
                         text("packet=pts_time,dts_time,size,flags"), text("-of"), text("csv"), movie});
    }
    /// What everybody knows of its tracks.
    static QString tracks(const QString &movie) {
        return outputOf(text("ffprobe"), {text("-loglevel"), text("error"), text("-show_entries"),
                                          text("stream=codec_type,codec_name,width,height:stream_side_data=rotation"),
                                          text("-of"), text("csv=p=0"), movie});
    }
    /// Its first frame as another program shows it.
    QImage turnedByOthers(const QString &movie) {
        ffmpeg({text("-i"), movie, text("-frames:v"), text("1"), path("shown.png")});
        return QImage(path("shown.png"));
    }
    /// The names of a file's boxes.
    static QStringList boxes(const QString &movie) {
        const QByteArray bytes = contents(movie);
        QStringList names;
        for (qsizetype place = 0; place + 8 <= bytes.size();) {
            names.append(QString::fromLatin1(bytes.mid(place + 4, 4)));
            const quint32 size = qFromBigEndian<quint32>(bytes.constData() + place);
            if (size < 8)
                break;
            place += size;
        }
        return names;
    }

    QTemporaryDir folder;
    ProcessMovieAsset asset{QCoreApplication::applicationDirPath()};
};

TEST_F(MovieAssetProcessTest, aMovieOfABrowserIsAMovieToo) {
    makeMovie(path("a.webm"), plain(text("lime"), 0.3), {}, {text("-c:v"), text("libvpx-vp9")});
    EXPECT_GT(frame(path("a.webm"))->pixelColor(80, 45).green(), 200);
    const auto known = facts(path("a.webm"));
    EXPECT_EQ(known->naturalSize, QSize(160, 90));
    EXPECT_FALSE(known->hasAudioTrack);
    EXPECT_TRUE(copy(path("a.webm"), path("b.mp4")));
    EXPECT_EQ(packets(path("b.mp4")), packets(path("a.webm")));
}

TEST_F(MovieAssetProcessTest, aTurnedMovieIsShownUprightAndStaysTurnedInItsCopy) {
    makeMovie(path("straight.mp4"), halves(0.2), tone(0.2), {text("-c:a"), text("aac")});
    // Displayed after a quarter turn to the right.
    ffmpeg({text("-i"), path("straight.mp4"), text("-c"), text("copy"), text("-metadata:s:v"), text("rotate=270"),
            path("turned.mp4")});
    const auto straight = frame(path("straight.mp4"));
    EXPECT_GT(straight->pixelColor(80, 10).red(), 200);
    EXPECT_GT(straight->pixelColor(80, 80).blue(), 200);
    ASSERT_TRUE(tracks(path("turned.mp4")).contains(text("-90"))) << tracks(path("turned.mp4")).toStdString();
    const auto turned = frame(path("turned.mp4"));
    ASSERT_EQ(turned->size(), QSize(90, 160));
    const QImage shown = turnedByOthers(path("turned.mp4"));
    ASSERT_EQ(shown.size(), QSize(90, 160));
    for (const int x : {10, 80})
        EXPECT_EQ(turned->pixelColor(x, 80).red() > 128, shown.pixelColor(x, 80).red() > 128) << x;
    EXPECT_EQ(facts(path("turned.mp4"))->naturalSize, QSize(90, 160));
    EXPECT_TRUE(copy(path("turned.mp4"), path("copy.mp4")));
    EXPECT_EQ(facts(path("copy.mp4"))->naturalSize, QSize(90, 160));
    EXPECT_EQ(tracks(path("copy.mp4")), tracks(path("turned.mp4")).section(u'\n', 0, 0));
}

TEST_F(MovieAssetProcessTest, theFrameIsTheOneAtTimeZeroAlsoWhereThatIsBlack) {
    makeMovie(path("a.mp4"), text("color=c=black:s=160x90:r=30:d=1[a];color=c=red:s=160x90:r=30:d=0.2[b];"
                                  "[a][b]concat=n=2"));
    EXPECT_LT(frame(path("a.mp4"))->pixelColor(80, 45).red(), 20);
    makeMovie(path("b.mp4"), plain(text("black"), 0.2));
    EXPECT_LT(frame(path("b.mp4"))->pixelColor(80, 45).red(), 20);
}

TEST_F(MovieAssetProcessTest, pixelsThatAreNotSquareAreMadeSo) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.2) + text(",setsar=2/1"));
    EXPECT_EQ(facts(path("a.mp4"))->naturalSize, QSize(320, 90));
    EXPECT_EQ(frame(path("a.mp4"))->size(), QSize(320, 90));
}

TEST_F(MovieAssetProcessTest, aCopyHasThePicturesAloneAtTheirTimesWithTheIndexInFront) {
    // Pictures that begin later than the sound, out of order, with odd times.
    makeMovie(path("a.mp4"), text("testsrc=s=160x90:r=30000/1001:d=1,setpts=PTS+0.4/TB"), tone(1),
              {text("-c:a"), text("aac"), text("-c:v"), text("libx264"), text("-bf"), text("2")});
    EXPECT_TRUE(copy(path("a.mp4"), path("b.mp4")));
    EXPECT_EQ(packets(path("b.mp4")), packets(path("a.mp4")));
    EXPECT_EQ(tracks(path("b.mp4")), text("h264,video,160,90"));
    EXPECT_LT(boxes(path("b.mp4")).indexOf(text("moov")), boxes(path("b.mp4")).indexOf(text("mdat")));
    EXPECT_TRUE(facts(path("a.mp4"))->hasAudioTrack);
    EXPECT_FALSE(facts(path("b.mp4"))->hasAudioTrack);
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(path("b.mp4")).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(MovieAssetProcessTest, aCopyTakesThePlaceOfAFileWhenItIsWholeAndNotBefore) {
    makeMovie(path("a.mp4"), plain(text("lime"), 0.2));
    const QString target = write("b.mp4", "what stood there");
    EXPECT_FALSE(copy(write("page.mp4", "no movie"), target));
    EXPECT_EQ(contents(target), "what stood there");
    EXPECT_TRUE(copy(path("a.mp4"), target));
    EXPECT_TRUE(facts(target));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 3) << "and nothing is left over";
}

TEST_F(MovieAssetProcessTest, soundAloneIsAMovieWithoutPictures) {
    ffmpeg({text("-f"), text("lavfi"), text("-i"), tone(0.2), text("-c:a"), text("aac"), path("a.mp4")});
    EXPECT_EQ(frame(path("a.mp4")), std::nullopt);
    EXPECT_FALSE(copy(path("a.mp4"), path("b.mp4")));
    const auto known = facts(path("a.mp4"));
    ASSERT_TRUE(known);
    EXPECT_TRUE(known->naturalSize.isEmpty());
    EXPECT_TRUE(known->hasAudioTrack);
}

TEST_F(MovieAssetProcessTest, whatIsCutOffEndsWhereItEndsOrIsNone) {
    makeMovie(path("a.mp4"), text("testsrc=s=160x90:r=30:d=1"));
    const QByteArray whole = contents(path("a.mp4"));
    expectNone(write("half.mp4", whole.left(whole.size() / 2))); // its index is at its end
    makeMovie(path("b.mp4"), text("testsrc=s=160x90:r=30:d=1"), {},
              {text("-g"), text("5"), text("-movflags"), text("frag_keyframe+empty_moov")});
    const QByteArray pieces = contents(path("b.mp4"));
    const QString cut = write("cut.mp4", pieces.left(pieces.size() * 2 / 3));
    EXPECT_TRUE(frame(cut));
    EXPECT_TRUE(copy(cut, path("c.mp4")));
    EXPECT_GT(packets(path("c.mp4")).count(u'\n'), 10);
}

TEST_F(MovieAssetProcessTest, whatIsNoPlainFileIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.mp4")).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    expectNone(path("pipe.mp4"));
    expectNone(text("/dev/zero"));
    expectNone(folder.path());
    expectNone(write("empty.mp4", {}));
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(MovieAssetProcessTest, ofTwoGigabytesOfNothingOnlyTheBeginningIsRead) {
    QFile file(path("large.mp4"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(qint64{2} << 30));
    file.close();
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(frame(path("large.mp4")), std::nullopt);
    EXPECT_LT(timer.elapsed(), 3000);
}

TEST_F(MovieAssetProcessTest, damagedMoviesAreAnsweredWhateverIsInThem) {
    makeMovie(path("a.mp4"), text("testsrc=s=160x90:r=30:d=0.5"), tone(0.5), {text("-c:a"), text("aac")});
    const QByteArray whole = contents(path("a.mp4"));
    quint32 number = 7; // the same damage in each run
    for (int i = 0; i < 12; ++i) {
        QByteArray damaged = whole;
        for (int j = 0; j < 40; ++j) {
            number = number * 1664525 + 1013904223;
            damaged[qsizetype(number % quint32(damaged.size()))] = char(number >> 24);
        }
        write("damaged.mp4", damaged);
        const auto shown = frame(path("damaged.mp4"));
        EXPECT_TRUE(!shown || std::max(shown->width(), shown->height()) <= 480);
        static_cast<void>(facts(path("damaged.mp4")));
        static_cast<void>(copy(path("damaged.mp4"), path("copy.mp4")));
    }
}

TEST_F(MovieAssetProcessTest, aMovieThatPointsElsewhereOpensNothing) {
    makeMovie(path("secret.mp4"), plain(text("lime"), 0.2));
    expectNone(write("list.mp4", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nsecret.mp4\n"));
    expectNone(write("concat.mp4", "ffconcat version 1.0\nfile 'secret.mp4'\n"));
}

// A program in the place of TavrineMovies.

class HangingMovies : public MovieAssetProcessTest {
protected:
    HangingMovies() { makeMovie(path("a.mp4"), plain(text("lime"), 0.2)); }
    void writeProgram(const char *script) {
        write("TavrineMovies", QByteArray("#!/bin/sh\n") + script);
        ASSERT_EQ(::chmod(QFile::encodeName(path("TavrineMovies")).constData(), 0700), 0);
    }
    std::optional<QImage> frameOfProgram() {
        ProcessMovieAsset other(folder.path(), 300ms);
        bool isAnswered = false;
        std::optional<QImage> result;
        other.firstFrame(path("a.mp4"), 480, [&](std::optional<QImage> answer) {
            isAnswered = true;
            result = std::move(answer);
        });
        EXPECT_TRUE(eventually([&] { return isAnswered; }, 3s));
        return result;
    }
};

TEST_F(HangingMovies, oneThatHangsIsEndedAndIsNone) {
    writeProgram("kill -STOP $$");
    EXPECT_EQ(frameOfProgram(), std::nullopt);
}

TEST_F(HangingMovies, nonsenseIsNone) {
    for (const char *script : {"exit 0", "kill -SEGV $$", "echo nonsense", "echo copied", "echo facts 1 1 0 0",
                               "echo frame 480 270 1 0 0 1", "echo frame 16385 1 1 0 0 1", "echo frame -1 1 1 0 0 1",
                               "exec cat /dev/zero", "yes alive | head -c 999; exit"}) {
        writeProgram(script);
        EXPECT_EQ(frameOfProgram(), std::nullopt) << script;
    }
}

TEST_F(HangingMovies, aCopyThatItsProgramClaimsIsNoneWithoutAFile) {
    writeProgram("echo failed");
    ProcessMovieAsset other(folder.path(), 300ms);
    std::optional<bool> answer;
    other.copyVideoTrack(path("a.mp4"), path("b.mp4"), [&](bool completed) { answer = completed; });
    EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
    EXPECT_FALSE(*answer);
    EXPECT_FALSE(QFile::exists(path("b.mp4")));
}

TEST_F(HangingMovies, anAssetThatGoesTakesItsQuestionsWithIt) {
    writeProgram("exec sleep 600");
    bool isAnswered = false;
    {
        ProcessMovieAsset other(folder.path());
        other.facts(path("a.mp4"), [&](const auto &) { isAnswered = true; });
        letPass(50ms);
    }
    letPass(100ms);
    EXPECT_FALSE(isAnswered);
}

TEST(MovieProtocol, everyReportComesBackAsItWent) {
    for (const Report &report :
         {Report{.kind = Report::Kind::alive}, Report{.kind = Report::Kind::copied},
          Report{.kind = Report::Kind::facts, .width = 16384, .height = 1, .hasAudio = true, .milliseconds = 7},
          Report{.kind = Report::Kind::facts, .hasAudio = true},
          Report{.kind = Report::Kind::frame, .width = 3, .height = 4, .turn = {0, -1, 1, 0}},
          Report{.kind = Report::Kind::failed, .words = "no – 映画"}}) {
        const std::string line = movieProtocol::lineOf(report);
        EXPECT_EQ(line.back(), '\n');
        EXPECT_EQ(movieProtocol::reportIn({line.data(), line.size() - 1}), report) << line;
    }
}

TEST(MovieProtocol, whatNobodyCouldMeanIsNothing) {
    for (const char *line : {"", "facts", "facts 1 1 0", "facts 1 1 0 0 0", "facts 0 1 0 0", "facts 16385 1 0 0",
                             "facts 1 1 2 0", "facts 1 1 0 -1", "facts 1 1 0 1099511627777", "facts  1 1 0 0",
                             "facts 1 1 0 0 ", "facts 1 1 0 x", "frame 1 1 1 1 1 1", "frame 1 1 0 0 0 0",
                             "frame 1 1 2 0 0 1", "frame 0 1 1 0 0 1", "frame 1 1 1 0 0", "Alive", "copied "})
        EXPECT_EQ(movieProtocol::reportIn(line), std::nullopt) << line;
}

} // namespace
} // namespace tavrine::test
