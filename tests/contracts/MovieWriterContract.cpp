// Movie writers, under one contract over the fake and over the real ones.
#include "adapters/fake/FakeMovieWriter.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/RecorderProcess.h"
#include "support/Eventually.h"
#include "support/Recorders.h"
#include "support/ScreenFrames.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <atomic>
#include <csignal>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakeStudio {
    MovieWriters &writers() { return fake; }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void breakEncoder(MovieWriter & /*writer*/) { fake.die(text("dead")); }
    /// Nothing is left to be done.
    bool settles() {
        time.advance(1min);
        return true;
    }
    VirtualTime time;
    FakeMovieWriters fake{time};
};

struct RealStudio {
    MovieWriters &writers() { return real; }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void breakEncoder(MovieWriter & /*writer*/) {
        ::kill(recordersOf(QCoreApplication::applicationPid()).value(0), SIGKILL);
    }
    bool settles() {
        return test::eventually([] { return recordersOf(QCoreApplication::applicationPid()).isEmpty(); });
    }
    RecorderProcesses real{QCoreApplication::applicationDirPath()};
};

template <class Studio>
class MovieWriterContract : public testing::Test {
protected:
    void make() {
        auto made = studio.writers().makeWriter(path);
        auto *whole = std::get_if<std::unique_ptr<MovieWriter>>(&made);
        ASSERT_TRUE(whole) << std::get<QString>(made).toStdString();
        writer = std::move(*whole);
        writer->setOnEndedByItself([count = endings] { ++*count; });
        EXPECT_EQ(writer->status(), MovieWriterStatus::unknown);
        EXPECT_EQ(writer->outputPath(), path);
    }
    void begin(const QString &name = text("movie.mp4")) {
        path = folder.filePath(name);
        make();
        ASSERT_TRUE(writer->addVideoInput(video));
        ASSERT_TRUE(writer->addAudioInput({}));
        ASSERT_TRUE(writer->startWriting());
        EXPECT_EQ(writer->status(), MovieWriterStatus::writing);
        writer->startSessionAtSourceTime(start);
    }
    bool append(MediaTime time) {
        return writer->appendVideo({.status = 0, .presentationTime = start + time, .frame = frames.plain(Qt::red)});
    }
    void finish() {
        writer->finishWriting(start + 1s, [count = completions, this] {
            EXPECT_NE(writer->status(), MovieWriterStatus::writing);
            ++*count;
        });
    }
    bool isFinished() {
        return studio.eventually([this] { return *completions == 1; });
    }
    [[nodiscard]] QStringList kept() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    static constexpr MediaTime start = 5000s;
    const MovieVideoSettings video{.width = 64, .height = 48, .averageBitRate = 4'000'000};
    QTemporaryDir folder;
    QString path = folder.filePath(text("movie.mp4"));
    Studio studio;
    ScreenFrames frames{QSize(64, 48)};
    std::shared_ptr<std::atomic<int>> completions = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<int>> endings = std::make_shared<std::atomic<int>>(0); ///< that nobody asked for
    std::shared_ptr<int> alive = std::make_shared<int>();
    std::unique_ptr<MovieWriter> writer;
};

using Studios = testing::Types<FakeStudio, RealStudio>;
TYPED_TEST_SUITE(MovieWriterContract, Studios);

TYPED_TEST(MovieWriterContract, aFinishedMovieStandsAtItsPath) {
    this->begin();
    EXPECT_TRUE(this->append(0ms));
    EXPECT_TRUE(this->append(20ms));
    EXPECT_TRUE(this->writer->appendAudio({.presentationTime = this->start, .data = QByteArray(8 * 441, '\0')}));
    this->writer->markVideoAsFinished();
    this->writer->markAudioAsFinished();
    this->finish();
    EXPECT_TRUE(this->isFinished());
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::completed);
    EXPECT_EQ(this->writer->error(), std::nullopt);
    EXPECT_EQ(this->kept(), QStringList(text("movie.mp4")));
    EXPECT_GT(QFileInfo(this->path).size(), 0);
    EXPECT_EQ(*this->endings, 0);
}

TYPED_TEST(MovieWriterContract, nothingIsTakenBeforeTheStartOrAfterItsInputEnded) {
    this->make();
    ASSERT_TRUE(this->writer->addVideoInput(this->video));
    ASSERT_TRUE(this->writer->addAudioInput({}));
    EXPECT_FALSE(this->writer->isVideoReadyForMoreMediaData());
    EXPECT_FALSE(this->append(0ms));
    ASSERT_TRUE(this->writer->startWriting());
    this->writer->startSessionAtSourceTime(this->start);
    EXPECT_TRUE(this->writer->isVideoReadyForMoreMediaData());
    EXPECT_TRUE(this->writer->isAudioReadyForMoreMediaData());
    EXPECT_TRUE(this->append(0ms));
    this->writer->markVideoAsFinished();
    EXPECT_FALSE(this->writer->isVideoReadyForMoreMediaData());
    EXPECT_FALSE(this->append(20ms));
    EXPECT_TRUE(this->writer->isAudioReadyForMoreMediaData());
    this->writer->markAudioAsFinished();
    EXPECT_FALSE(this->writer->isAudioReadyForMoreMediaData());
    EXPECT_FALSE(this->writer->appendAudio({.presentationTime = this->start, .data = QByteArray(8, '\0')}));
}

TYPED_TEST(MovieWriterContract, soundWithoutAnInputIsNotTaken) {
    this->make();
    ASSERT_TRUE(this->writer->addVideoInput(this->video));
    ASSERT_TRUE(this->writer->startWriting());
    this->writer->startSessionAtSourceTime(this->start);
    EXPECT_FALSE(this->writer->isAudioReadyForMoreMediaData());
    EXPECT_FALSE(this->writer->appendAudio({.presentationTime = this->start, .data = QByteArray(8, '\0')}));
}

TYPED_TEST(MovieWriterContract, picturesOfOddOrNoSizeAreRefused) {
    this->make();
    for (const auto &[width, height] : {std::pair(0, 0), std::pair(63, 48), std::pair(64, 1), std::pair(-2, 48)})
        EXPECT_FALSE(this->writer->addVideoInput({.width = width, .height = height, .averageBitRate = 4'000'000}));
    EXPECT_TRUE(this->writer->addVideoInput({.width = 2, .height = 2, .averageBitRate = 4'000'000}));
}

TYPED_TEST(MovieWriterContract, aCancelledMovieLeavesNothing) {
    this->begin();
    EXPECT_TRUE(this->append(0ms));
    this->writer->cancelWriting();
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::cancelled);
    EXPECT_FALSE(this->append(20ms));
    EXPECT_EQ(this->kept(), QStringList());
    EXPECT_EQ(*this->endings, 0);
}

TYPED_TEST(MovieWriterContract, aWriterThatNeverStartedLeavesNothing) {
    this->make();
    this->writer.reset();
    EXPECT_EQ(this->kept(), QStringList());
    this->make();
    this->writer->cancelWriting();
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::cancelled);
    EXPECT_EQ(this->kept(), QStringList());
}

TYPED_TEST(MovieWriterContract, aMovieWithoutAPictureFails) {
    this->begin();
    this->finish();
    EXPECT_TRUE(this->isFinished());
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::failed);
    EXPECT_TRUE(this->writer->error());
}

TYPED_TEST(MovieWriterContract, aCancelledMovieThatIsFinishedTellsItAllTheSame) {
    this->begin();
    EXPECT_TRUE(this->append(0ms));
    this->writer->cancelWriting();
    this->finish();
    EXPECT_TRUE(this->isFinished());
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::cancelled);
}

TYPED_TEST(MovieWriterContract, anEndThatNobodyAskedForIsToldOnceAndWhatWasWrittenStays) {
    this->begin();
    EXPECT_TRUE(this->append(0ms));
    EXPECT_TRUE(this->studio.eventually([this] { return QFileInfo(this->path).size() > 0; }));
    this->studio.breakEncoder(*this->writer);
    EXPECT_TRUE(this->studio.eventually([this] { return *this->endings == 1; }));
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::failed);
    EXPECT_EQ(this->writer->failure(), MovieWriterFailure::other);
    EXPECT_FALSE(this->append(20ms));
    this->finish();
    EXPECT_TRUE(this->isFinished());
    EXPECT_EQ(this->writer->status(), MovieWriterStatus::failed);
    EXPECT_EQ(*this->endings, 1);
    EXPECT_EQ(this->kept(), QStringList(text("movie.mp4")));
}

TYPED_TEST(MovieWriterContract, aWriterThatHasGoneTellsNobody) {
    this->begin();
    EXPECT_TRUE(this->append(0ms));
    this->writer->finishWriting(this->start + 1s, [count = this->completions, gone = std::weak_ptr(this->alive)] {
        EXPECT_FALSE(gone.expired());
        ++*count;
    });
    this->writer.reset();
    this->alive.reset(); // as the clock and all else that a completion may name
    EXPECT_TRUE(this->studio.settles());
    this->begin(text("other.mp4"));
    EXPECT_TRUE(this->append(0ms));
    this->writer.reset();
    EXPECT_TRUE(this->studio.settles());
    EXPECT_EQ(*this->endings, 0);
}

TYPED_TEST(MovieWriterContract, aFileThatStandsThereIsLeftAlone) {
    QFile file(this->path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("old") == 3);
    file.close();
    EXPECT_TRUE(std::holds_alternative<QString>(this->studio.writers().makeWriter(this->path)));
    EXPECT_EQ(QFileInfo(this->path).size(), 3);
}

TYPED_TEST(MovieWriterContract, aFolderThatIsNotThereIsToldAtOnce) {
    const auto made = this->studio.writers().makeWriter(this->folder.filePath(text("none/movie.mp4")));
    ASSERT_TRUE(std::holds_alternative<QString>(made));
    EXPECT_EQ(std::get<QString>(made), text("No such file or directory"));
}

} // namespace
} // namespace tavrine::test
