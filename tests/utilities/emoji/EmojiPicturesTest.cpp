#include "utilities/emoji/EmojiPictures.h"

#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/VirtualTime.h"
#include "look/EmojiGlyphs.h"
#include "look/EmojiText.h"
#include "utilities/emoji/EmojiTable.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr int side = 38;

class EmojiPicturesTest : public ::testing::Test {
protected:
    [[nodiscard]] QString path(int edge = side) const {
        return folder.filePath(QStringLiteral("caches/Emoji-%1.pictures").arg(edge));
    }
    /// What the task's program would do.
    int draw(const QStringList &arguments) const {
        return QProcess::execute(QStringLiteral(TAVRINE_GLYPHS), arguments);
    }
    /// Every tenth row of the real one: enough to compare, and drawn in a tenth of the time.
    void makeTable() const {
        QFile whole(QStringLiteral(TAVRINE_EMOJI_TABLE));
        ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
        const QJsonArray rows = QJsonDocument::fromJson(whole.readAll()).array();
        QJsonArray some;
        for (qsizetype i = 0; i < rows.size(); i += 10)
            some.append(rows.at(i));
        QFile file(table);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(some).toJson());
    }

    QTemporaryDir folder;
    QString table = folder.filePath(QStringLiteral("emoji_data.json"));
    FakeTaskLauncher launcher;
    VirtualTime time;
    EmojiPictures pictures{{launcher, time, folder.filePath(QStringLiteral("caches")), table}};
};

TEST_F(EmojiPicturesTest, aMissingSizeIsDrawnOnceAndLater) {
    EXPECT_EQ(pictures.ofSide(side), nullptr);
    EXPECT_EQ(pictures.ofSide(side), nullptr);
    time.advance(EmojiPictures::delay - 10ms);
    EXPECT_TRUE(launcher.tasks().isEmpty());
    time.advance(10ms);
    ASSERT_EQ(launcher.tasks().size(), 1);
    EXPECT_EQ(launcher.tasks().first()->launchPath(), QStringLiteral("TavrineGlyphs"));
    EXPECT_EQ(launcher.tasks().first()->arguments(), QStringList({table, QStringLiteral("38"), path()}));
    EXPECT_TRUE(launcher.tasks().first()->wasLaunched());
    time.advance(1h);
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(EmojiPicturesTest, theProgramDrawsEveryColouredEmojiAsThePickerWould) {
    makeTable();
    EXPECT_EQ(pictures.ofSide(side), nullptr);
    time.advance(EmojiPictures::delay);
    const auto task = launcher.tasks().first();
    ASSERT_EQ(draw(task->arguments()), 0);
    EXPECT_EQ(pictures.ofSide(side), nullptr) << "nobody has said yet that they are there";
    task->finish(0);
    time.advance(0ms);
    const look::DrawnGlyphs *drawn = pictures.ofSide(side);
    ASSERT_NE(drawn, nullptr);
    EXPECT_GT(drawn->count(), 150);
    look::EmojiGlyphs asThePicker(side);
    int compared = 0;
    const auto items = loadEmojiTable(table);
    for (size_t i = 0; i < items.size(); i += 7) {
        const QString &emoji = items[i].emoji;
        const QImage before = drawn->picture(emoji);
        EXPECT_EQ(before.isNull(), !look::isEmojiPresentation(emoji)) << emoji.toStdString();
        if (before.isNull())
            continue;
        ++compared;
        EXPECT_EQ(before, asThePicker.picture(emoji, Qt::white, 1).toImage().convertToFormat(before.format()))
            << emoji.toStdString();
    }
    EXPECT_GT(compared, 10);
}

TEST_F(EmojiPicturesTest, whatAnEarlierRunDrewIsThereAtOnce) {
    makeTable();
    ASSERT_EQ(draw({table, QString::number(side), path()}), 0);
    EXPECT_NE(pictures.ofSide(side), nullptr);
    time.advance(1h);
    EXPECT_TRUE(launcher.tasks().isEmpty());
}

TEST_F(EmojiPicturesTest, eachSizeHasItsOwn) {
    makeTable();
    ASSERT_EQ(draw({table, QString::number(side), path()}), 0);
    EXPECT_EQ(pictures.ofSide(2 * side), nullptr);
    time.advance(EmojiPictures::delay);
    ASSERT_EQ(launcher.tasks().size(), 1);
    EXPECT_EQ(launcher.tasks().first()->arguments().at(1), QStringLiteral("76"));
}

TEST_F(EmojiPicturesTest, aDrawingThatFailsIsNotTriedAgainInThisRun) {
    EXPECT_EQ(pictures.ofSide(side), nullptr);
    time.advance(EmojiPictures::delay);
    launcher.tasks().first()->finish(1);
    time.advance(1h);
    EXPECT_EQ(pictures.ofSide(side), nullptr);
    time.advance(1h);
    EXPECT_EQ(launcher.tasks().size(), 1);
    launcher.failNextLaunch(QStringLiteral("no such program"));
    EXPECT_EQ(pictures.ofSide(2 * side), nullptr);
    time.advance(1h);
    EXPECT_EQ(pictures.ofSide(2 * side), nullptr);
}

TEST_F(EmojiPicturesTest, thatGoWhileTheDrawingRunsAreNotWaitedFor) {
    auto others = std::make_unique<EmojiPictures>(
        EmojiPictures::Ports{launcher, time, folder.filePath(QStringLiteral("caches")), table});
    EXPECT_EQ(others->ofSide(side), nullptr);
    time.advance(EmojiPictures::delay);
    others.reset();
    launcher.tasks().first()->finish(0);
    time.advance(1s);
}

TEST_F(EmojiPicturesTest, withoutAFolderNothingIsDrawn) {
    EmojiPictures nowhere{{launcher, time, {}, table}};
    EXPECT_EQ(nowhere.ofSide(side), nullptr);
    time.advance(1h);
    EXPECT_TRUE(launcher.tasks().isEmpty());
}

TEST_F(EmojiPicturesTest, theProgramLeavesNothingWhereItCannotWrite) {
    makeTable();
    EXPECT_NE(draw({table, QString::number(side), QStringLiteral("/proc/Emoji-38.pictures")}), 0);
    EXPECT_NE(draw({table, QStringLiteral("0"), path()}), 0);
    EXPECT_NE(draw({table, QStringLiteral("100000"), path()}), 0);
    EXPECT_FALSE(QFile::exists(path()));
}

} // namespace
} // namespace tavrine
