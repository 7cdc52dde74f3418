// What looks into movies, under one contract over the fake and over the real one, which is given real movies.
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/linux/MovieAssetProcess.h"
#include "support/Eventually.h"
#include "support/Movies.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakeMovies {
    FakeMovies() {
        QImage frame(160, 90, QImage::Format_RGB32);
        frame.fill(Qt::green);
        asset.setFrame(frame);
        asset.setFacts(MovieFacts{.naturalSize = {160, 90}, .hasAudioTrack = true, .duration = facts});
    }
    template <class Condition>
    bool eventually(Condition condition) {
        asset.answer();
        return condition();
    }
    /// Files of other kinds are all the same to the fake.
    void expectNone() {
        asset.setFrame(std::nullopt);
        asset.setFacts(std::nullopt);
        asset.setCopiesSucceed(false);
    }

    static constexpr std::chrono::milliseconds facts{500};
    FakeMovieAsset asset;
};

struct RealMovies {
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void expectNone() {}

    ProcessMovieAsset asset{QCoreApplication::applicationDirPath()};
};

template <class Movies>
class MovieAssetContract : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<QTemporaryDir>();
        movie = folder->filePath(text("film – 映画.mp4"));
        makeMovie(movie, plain(text("lime"), 0.5), tone(0.5), {text("-c:a"), text("aac")});
    }
    static void TearDownTestSuite() { folder.reset(); }

    std::optional<QImage> frame(const QString &path, int longestEdge = 480) {
        int answers = 0;
        std::optional<QImage> result;
        movies.asset.firstFrame(path, longestEdge, [&](std::optional<QImage> answer) {
            ++answers;
            result = std::move(answer);
        });
        EXPECT_EQ(answers, 0) << "not in the same turn";
        EXPECT_TRUE(movies.eventually([&] { return answers == 1; }));
        return result;
    }
    std::optional<MovieFacts> facts(const QString &path) {
        int answers = 0;
        std::optional<MovieFacts> result;
        movies.asset.facts(path, [&](std::optional<MovieFacts> answer) {
            ++answers;
            result = answer;
        });
        EXPECT_EQ(answers, 0) << "not in the same turn";
        EXPECT_TRUE(movies.eventually([&] { return answers == 1; }));
        return result;
    }
    bool copy(const QString &source, const QString &target) {
        int answers = 0;
        bool result = false;
        movies.asset.copyVideoTrack(source, target, [&](bool completed) {
            ++answers;
            result = completed;
        });
        EXPECT_EQ(answers, 0) << "not in the same turn";
        EXPECT_TRUE(movies.eventually([&] { return answers == 1; }));
        return result;
    }
    void expectNone(const QString &path) {
        const QString target = folder->filePath(text("none.mp4"));
        EXPECT_EQ(frame(path), std::nullopt) << path.toStdString();
        EXPECT_EQ(facts(path), std::nullopt) << path.toStdString();
        EXPECT_FALSE(copy(path, target)) << path.toStdString();
        EXPECT_FALSE(QFileInfo::exists(target)) << path.toStdString();
    }

    static inline std::unique_ptr<QTemporaryDir> folder;
    static inline QString movie;
    Movies movies;
};

using All = testing::Types<FakeMovies, RealMovies>;
TYPED_TEST_SUITE(MovieAssetContract, All);

TYPED_TEST(MovieAssetContract, aMovieHasAFrameOfItsOwnSize) {
    const auto frame = this->frame(this->movie);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->size(), QSize(160, 90));
    EXPECT_GT(frame->pixelColor(80, 45).green(), 200);
    EXPECT_LT(frame->pixelColor(80, 45).red(), 60);
}

TYPED_TEST(MovieAssetContract, theFrameIsMadeSmallerUntilItsLongestEdgeFits) {
    EXPECT_EQ(this->frame(this->movie, 160)->size(), QSize(160, 90));
    EXPECT_EQ(this->frame(this->movie, 80)->size(), QSize(80, 45));
}

TYPED_TEST(MovieAssetContract, factsTellTheSizeTheSoundAndTheLength) {
    const auto facts = this->facts(this->movie);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->naturalSize, QSize(160, 90));
    EXPECT_TRUE(facts->hasAudioTrack);
    EXPECT_NEAR(double(facts->duration.count()), 500, 50); // sound ends with a whole packet
}

TYPED_TEST(MovieAssetContract, aCopyIsAMovieUnderTheNewNameAndTheSourceStays) {
    const QString target = this->folder->filePath(text("copy.mp4"));
    EXPECT_TRUE(this->copy(this->movie, target));
    EXPECT_TRUE(this->frame(target));
    EXPECT_TRUE(this->frame(this->movie));
}

TYPED_TEST(MovieAssetContract, whatIsNoMovieHasNothing) {
    const QString page = this->folder->filePath(text("page.mp4"));
    QFile file(page);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<html>Sign in</html>");
    file.close();
    this->movies.expectNone();
    this->expectNone(page);
    this->expectNone(this->folder->path());
    this->expectNone(this->folder->filePath(text("missing.mp4")));
    this->expectNone({});
}

TYPED_TEST(MovieAssetContract, aCopyIntoNowhereFails) {
    EXPECT_FALSE(this->copy(this->movie, this->folder->filePath(text("no folder/copy.mp4"))));
    EXPECT_FALSE(this->copy(this->movie, {}));
}

} // namespace
} // namespace tavrine::test
