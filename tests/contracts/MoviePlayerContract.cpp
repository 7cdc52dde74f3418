// Players of movies, under one contract over the fake and over the real ones, which play real movies and are heard by
// nobody else.
#include "adapters/fake/FakeMoviePlayers.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/MoviePlayerProcess.h"
#include "support/Eventually.h"
#include "support/MovieScreen.h"
#include "support/Movies.h"
#include "support/SoundRecording.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakeScreenings {
    MoviePlayers &players() { return fake; }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }
    bool isHeard() { return !fake.movies().empty() && fake.movies().back()->isHeard(); }
    bool isGone() { return fake.movies().back()->isDropped; }
    void expectFailure() { fake.failNext(text("why")); }

    VirtualTime time;
    FakeMoviePlayers fake{time};
};

struct RealScreenings {
    MoviePlayers &players() { return real; }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(300ms); }
    bool isHeard() { return recording.isHeard(); }
    bool isGone() { return playerProcesses().isEmpty(); }
    void expectFailure() {}

    PrivateSound sound{SoundServerKind::pipeWire};
    SoundRecording recording{text("one")};
    MoviePlayerProcesses real{QCoreApplication::applicationDirPath()};
};

template <class Screenings>
class MoviePlayerContract : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<QTemporaryDir>();
        movie = folder->filePath(text("film – 映画.mp4"));
        page = folder->filePath(text("page.mp4"));
        makeMovie(movie, plain(text("lime"), 0.5), tone(0.5), {text("-c:a"), text("aac")});
        QFile file(page);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<html>Sign in</html>");
    }
    static void TearDownTestSuite() { folder.reset(); }

    void expectFailure(const QString &path) {
        int failures = 0;
        QString reason;
        screenings.expectFailure();
        player = screenings.players().makePlayer(path);
        player->setOnFailure([&](const QString &words) {
            ++failures;
            reason = words;
            player.reset();
        });
        player->play();
        EXPECT_EQ(failures, 0) << "not in the same turn";
        EXPECT_TRUE(screenings.eventually([&] { return failures == 1; })) << path.toStdString();
        EXPECT_FALSE(reason.isEmpty());
        screenings.settle();
        EXPECT_EQ(failures, 1);
    }

    static inline std::unique_ptr<QTemporaryDir> folder;
    static inline QString movie;
    static inline QString page;
    Screenings screenings;
    MovieScreen screen;
    std::unique_ptr<MoviePlayer> player;
};

using All = testing::Types<FakeScreenings, RealScreenings>;
TYPED_TEST_SUITE(MoviePlayerContract, All);

TYPED_TEST(MoviePlayerContract, playsOverAndOverUntilThePauseAndGoesOnAfterwards) {
    int failures = 0;
    this->player = this->screenings.players().makePlayer(this->movie);
    this->player->setOnFailure([&](const QString &) { ++failures; });
    this->player->play();
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    for (int i = 0; i < 4; ++i) // longer than the movie
        this->screenings.settle();
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    this->player->pause();
    EXPECT_TRUE(this->screenings.eventually([this] { return !this->screenings.isHeard(); }));
    EXPECT_FALSE(this->screenings.isGone());
    this->player->play();
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    EXPECT_EQ(failures, 0);
}

TYPED_TEST(MoviePlayerContract, itsPicturesAreAsLargeAsTheyAreWantedAlsoBeforeItPlays) {
    this->player = this->screenings.players().makePlayer(this->movie);
    this->screen.show(*this->player);
    EXPECT_TRUE(this->screen.isUntouched()) << "not in the same turn";
    for (const QSize size : {MovieScreen::size, QSize(317, 179), MovieScreen::size}) {
        this->player->setPictureSize(size);
        EXPECT_TRUE(this->screenings.eventually([&] { return this->screen.picture().size() == size; }));
        EXPECT_TRUE(isLike(this->screen.color(), Qt::green));
        EXPECT_EQ(this->screen.color().alpha(), 255);
    }
}

TYPED_TEST(MoviePlayerContract, thereAreNoPicturesBeforeTheirSizeIsKnownAndNoneWithoutThePlayer) {
    int count = 0;
    this->player = this->screenings.players().makePlayer(this->movie);
    this->player->setOnPicture([&count](const QImage &) { ++count; });
    this->player->play();
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    this->screenings.settle();
    EXPECT_EQ(count, 0);
    this->player->setPictureSize(MovieScreen::size);
    EXPECT_TRUE(this->screenings.eventually([&] { return count > 0; }));
    this->player->setPictureSize(2 * MovieScreen::size);
    this->player.reset();
    const int before = count;
    this->screenings.settle();
    EXPECT_EQ(count, before);
}

TYPED_TEST(MoviePlayerContract, aPictureMayHaveThePlayerDropped) {
    this->player = this->screenings.players().makePlayer(this->movie);
    this->player->setOnPicture([this](const QImage &) { this->player.reset(); });
    this->player->setPictureSize(MovieScreen::size);
    this->player->play();
    EXPECT_TRUE(this->screenings.eventually([this] { return !this->player && this->screenings.isGone(); }));
}

TYPED_TEST(MoviePlayerContract, isSilentWhileItIsMuted) {
    this->player = this->screenings.players().makePlayer(this->movie);
    this->player->setMuted(true);
    this->player->play();
    this->screenings.settle();
    EXPECT_FALSE(this->screenings.isHeard());
    this->player->setMuted(false);
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    this->player->setMuted(true);
    EXPECT_TRUE(this->screenings.eventually([this] { return !this->screenings.isHeard(); }));
}

TYPED_TEST(MoviePlayerContract, droppingItEndsIt) {
    this->player = this->screenings.players().makePlayer(this->movie);
    this->player->play();
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isHeard(); }));
    this->player.reset();
    EXPECT_TRUE(this->screenings.eventually([this] { return !this->screenings.isHeard(); }));
    EXPECT_TRUE(this->screenings.eventually([this] { return this->screenings.isGone(); }));
}

TYPED_TEST(MoviePlayerContract, whatIsNoMovieIsAFailureInALaterTurn) {
    this->expectFailure(this->page);
    this->expectFailure(this->folder->path());
    this->expectFailure(this->folder->filePath(text("missing.mp4")));
    this->expectFailure({});
}

} // namespace
} // namespace tavrine::test
