#include "clipboard/RecordingThumbnails.h"

#include "ManagerTest.h"
#include "clipboard/ClipboardRowActions.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::ElementsAre;

class RecordingThumbnailsTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
        movies.setFrame(picture(1920, 1080));
        QObject::connect(manager.get(), &ClipboardManager::thumbnailMade,
                         [this](const QString &name) { made.append(name); });
    }
    QString record(const char *name) {
        write(pathOf(name));
        return str(name);
    }
    [[nodiscard]] QString pathOf(const char *name) const { return quickShotsFolder + u'/' + str(name); }
    [[nodiscard]] bool isCached(const char *name) { return manager->thumbnailCache().object(str(name)).has_value(); }
    /// A row that shows it is painted.
    std::optional<QImage> paint(const char *name) {
        ClipboardItem item;
        item.imageFileName = str(name);
        return clipboardRow::thumbnail(*manager, item);
    }

    QStringList made;
};

TEST_F(RecordingThumbnailsTest, aRowAsksAndIsToldLaterAndThenItIsCached) {
    record("A.mp4");
    EXPECT_EQ(paint("A.mp4"), std::nullopt);
    EXPECT_TRUE(made.isEmpty());
    movies.answer();
    EXPECT_EQ(made, QStringList{str("A.mp4")});
    ASSERT_TRUE(paint("A.mp4"));
    EXPECT_EQ(movies.asked(), QStringList{pathOf("A.mp4")});
}

TEST_F(RecordingThumbnailsTest, itHasFourHundredAndEightyPixelsAtMostAsThoseOfImages) {
    record("A.mp4");
    static_cast<void>(paint("A.mp4"));
    movies.answer();
    EXPECT_EQ(paint("A.mp4")->size(), QSize(480, 270));
}

TEST_F(RecordingThumbnailsTest, aStripKeepsAsMuchOfItsShortEdgeAsARowShows) {
    for (const auto &[size, kept] :
         {std::pair(QSize(1920, 60), QSize(1920, 60)), // all of it
          std::pair(QSize(3840, 400), QSize(1613, 168)), std::pair(QSize(60, 1920), QSize(60, 1920)),
          std::pair(QSize(8000, 20), QSize(4096, 10)), std::pair(QSize(300, 10), QSize(300, 10)),
          std::pair(QSize(1371, 480), QSize(480, 168))}) {
        quit();
        start();
        movies.setFrame(picture(size.width(), size.height()));
        record("A.mp4");
        static_cast<void>(paint("A.mp4"));
        movies.answerAll();
        ASSERT_TRUE(paint("A.mp4"));
        EXPECT_EQ(paint("A.mp4")->size(), kept) << size.width();
    }
}

TEST_F(RecordingThumbnailsTest, moviesAreLookedIntoOneAtATimeTheLastAskedForFirst) {
    for (const char *name : {"A.mp4", "B.mov", "C.mp4"}) {
        record(name);
        static_cast<void>(paint(name));
        static_cast<void>(paint(name)); // another repaint, before there is an answer
    }
    EXPECT_EQ(movies.asked(), QStringList{pathOf("A.mp4")});
    movies.answer();
    EXPECT_EQ(movies.asked(), QStringList({pathOf("A.mp4"), pathOf("C.mp4")}));
    movies.answerAll();
    EXPECT_EQ(made, QStringList({str("A.mp4"), str("C.mp4"), str("B.mov")}));
    EXPECT_EQ(movies.asked().size(), 3);
}

TEST_F(RecordingThumbnailsTest, ofManyThatAreWantedTheOldestAreForgotten) {
    const auto name = [](size_t i) { return QStringLiteral("%1.mp4").arg(i); };
    for (size_t i = 0; i <= RecordingThumbnails::mostWanted + 1; ++i) { // the first is looked into at once
        write(quickShotsFolder + u'/' + name(i));
        manager->wantRecordingThumbnail(name(i));
    }
    movies.answerAll();
    EXPECT_EQ(made.size(), static_cast<qsizetype>(RecordingThumbnails::mostWanted) + 1);
    EXPECT_TRUE(made.contains(name(0)));
    EXPECT_FALSE(made.contains(name(1)));
    EXPECT_TRUE(made.contains(name(2)));
}

TEST_F(RecordingThumbnailsTest, aMovieThatGivesNoneIsNotLookedIntoAgainUntilItIsAnotherOne) {
    movies.setFrame(std::nullopt);
    record("A.mp4");
    static_cast<void>(paint("A.mp4"));
    movies.answer();
    EXPECT_TRUE(made.isEmpty());
    static_cast<void>(paint("A.mp4"));
    EXPECT_EQ(movies.asked().size(), 1);

    movies.setFrame(picture(8, 6));
    write(pathOf("A.mp4"), "a longer content than before");
    static_cast<void>(paint("A.mp4"));
    movies.answer();
    EXPECT_EQ(made, QStringList{str("A.mp4")});
}

TEST_F(RecordingThumbnailsTest, aMovieThatComesBackIsLookedInto) {
    static_cast<void>(paint("A.mp4"));
    movies.answer();
    record("A.mp4");
    static_cast<void>(paint("A.mp4"));
    movies.answer();
    EXPECT_EQ(made, QStringList{str("A.mp4")});
}

TEST_F(RecordingThumbnailsTest, whatWasRemovedMeanwhileIsNotCached) {
    record("A.mp4");
    static_cast<void>(paint("A.mp4"));
    manager->removeImageFiles({str("A.mp4")});
    movies.answer();
    EXPECT_FALSE(isCached("A.mp4"));
    EXPECT_TRUE(made.isEmpty());
}

TEST_F(RecordingThumbnailsTest, aPauseForgetsWhatWasWanted) {
    for (const char *name : {"A.mp4", "B.mp4"}) {
        record(name);
        static_cast<void>(paint(name));
    }
    manager->pauseMonitoring();
    movies.answerAll();
    EXPECT_EQ(manager->thumbnailCache().count(), 0);
    EXPECT_EQ(movies.asked().size(), 1);
    static_cast<void>(paint("A.mp4"));
    movies.answerAll();
    EXPECT_TRUE(isCached("A.mp4"));
}

TEST_F(RecordingThumbnailsTest, anAnswerThatComesAfterTheManagerIsNobodys) {
    record("A.mp4");
    static_cast<void>(paint("A.mp4"));
    quit();
    movies.answer();
    EXPECT_TRUE(made.isEmpty());
}

TEST_F(RecordingThumbnailsTest, aNameThatReachesElsewhereIsNotLookedInto) {
    write(home.path() + str("/Documents/B.mp4"));
    static_cast<void>(paint("../B.mp4"));
    EXPECT_TRUE(movies.asked().isEmpty());
}

} // namespace
} // namespace tavrine
