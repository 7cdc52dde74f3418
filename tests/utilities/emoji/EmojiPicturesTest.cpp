#include "utilities/emoji/EmojiPictures.h"

#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/VirtualTime.h"
#include "look/EmojiGlyphs.h"
#include "look/Text.h"
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
    [[nodiscard]] static QString font() { return look::fontFor(look::TextRole::body).toString(); }
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
    EXPECT_EQ(launcher.tasks().first()->arguments(), QStringList({table, QStringLiteral("38"), font(), path()}));
    EXPECT_TRUE(launcher.tasks().first()->wasLaunched());
    time.advance(1h);
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(EmojiPicturesTest, theProgramDrawsEveryEmojiAsThePickerWould) {
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
    // A colour that is neither of those in which the program draws.
    const QColor colour(200, 60, 20);
    look::EmojiGlyphs asDrawn(side);
    look::EmojiGlyphs asKept(side);
    asKept.setDrawnBefore([drawn](int) { return drawn; });
    int signs = 0;
    for (const EmojiItem &item : loadEmojiTable(table)) {
        const QImage expected = asDrawn.picture(item.emoji, colour, 1).toImage();
        const QImage kept = asKept.picture(item.emoji, colour, 1).toImage().convertToFormat(expected.format());
        ASSERT_EQ(kept.size(), expected.size()) << item.emoji.toStdString();
        const auto glyph = drawn->glyph(item.emoji);
        EXPECT_EQ(glyph.has_value(), !expected.isNull()) << item.emoji.toStdString();
        if (glyph && glyph->isSign)
            ++signs;
        else
            EXPECT_EQ(kept, expected) << item.emoji.toStdString();
        for (int i = 0; i < kept.width(); ++i) // a sign's shades may be rounded otherwise
            EXPECT_NEAR(qAlpha(kept.pixel(i, i)), qAlpha(expected.pixel(i, i)), 2) << item.emoji.toStdString();
    }
    EXPECT_GT(signs, 5);
}

TEST_F(EmojiPicturesTest, whatAnEarlierRunDrewIsThereAtOnce) {
    makeTable();
    ASSERT_EQ(draw({table, QString::number(side), font(), path()}), 0);
    EXPECT_NE(pictures.ofSide(side), nullptr);
    time.advance(1h);
    EXPECT_TRUE(launcher.tasks().isEmpty());
}

TEST_F(EmojiPicturesTest, eachSizeHasItsOwn) {
    makeTable();
    ASSERT_EQ(draw({table, QString::number(side), font(), path()}), 0);
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
    EXPECT_NE(draw({table, QString::number(side), font(), QStringLiteral("/proc/Emoji-38.pictures")}), 0);
    EXPECT_NE(draw({table, QStringLiteral("0"), font(), path()}), 0);
    EXPECT_NE(draw({table, QStringLiteral("100000"), font(), path()}), 0);
    EXPECT_FALSE(QFile::exists(path()));
}

} // namespace
} // namespace tavrine
