#include "utilities/emoji/PreparedEmojiTable.h"

#include "utilities/emoji/EmojiTable.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

TEST(BuiltPreparedTable, isReadAndHoldsWhatTheJsonHolds) {
    const QString path = QStringLiteral(TAVRINE_EMOJI_TABLE);
    const EmojiRows rows = loadEmojiRows(path);
    ASSERT_TRUE(rows.file) << "from its prepared form";
    const std::vector<EmojiItem> parsed = loadEmojiTable(path);
    EXPECT_EQ(rows.items, parsed);
    EXPECT_EQ(rows.searchTexts, emojiSearchTexts(parsed));
}

// The program that runs has the table mapped, and would end where its file became short.
TEST(BuiltPreparedTable, isMadeAnewBesideTheOneThatIsInUse) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("emoji_data.table"));
    QFile inUse(path);
    ASSERT_TRUE(inUse.open(QIODevice::ReadWrite));
    inUse.write("the old one");
    ASSERT_TRUE(inUse.flush());
    ASSERT_EQ(QProcess::execute(QStringLiteral(TAVRINE_PREPARE_TABLE), {QStringLiteral(TAVRINE_EMOJI_TABLE), path}), 0);
    EXPECT_EQ(inUse.size(), 11);
    EXPECT_GT(QFileInfo(path).size(), 11);
}

class PreparedTableTest : public testing::Test {
protected:
    void SetUp() override {
        write(jsonPath, json);
        prepared = prepareEmojiTable(json);
        ASSERT_FALSE(prepared.isEmpty());
        write(preparedTablePath(jsonPath), prepared);
    }
    static void write(const QString &path, const QByteArray &bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static void setAge(const QString &path, int seconds) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds), QFileDevice::FileModificationTime);
    }

    const QByteArray json = R"([{"emoji":"b","name":"Bé","category":"Food & Drink","keywords":"x,Yes y"},
                               {"emoji":"a","name":"A","category":"Flags"},
                               {"emoji":"c","name":"A","category":"Flags","keywords":"z"}])";
    QTemporaryDir folder;
    QString jsonPath = folder.filePath(QStringLiteral("emoji_data.json"));
    QByteArray prepared;
};

TEST_F(PreparedTableTest, standsBesideTheJson) {
    EXPECT_EQ(preparedTablePath(QStringLiteral("/a.b/emoji_data.json")), QStringLiteral("/a.b/emoji_data.table"));
}

TEST_F(PreparedTableTest, givesTheRowsBack) {
    const EmojiRows rows = loadEmojiRows(jsonPath);
    EXPECT_TRUE(rows.file);
    EXPECT_EQ(rows.items, emojiTableFromJson(json));
    EXPECT_EQ(rows.searchTexts, emojiSearchTexts(rows.items));
}

TEST_F(PreparedTableTest, isNotReadWithoutTheJson) {
    QFile::remove(jsonPath);
    EXPECT_THAT(loadEmojiRows(jsonPath).items, IsEmpty());
}

TEST_F(PreparedTableTest, isNotReadWhenTheJsonIsNewer) {
    setAge(jsonPath, 10);
    setAge(preparedTablePath(jsonPath), 10);
    EXPECT_TRUE(loadEmojiRows(jsonPath).file);
    setAge(preparedTablePath(jsonPath), 20);
    const EmojiRows rows = loadEmojiRows(jsonPath);
    EXPECT_FALSE(rows.file);
    EXPECT_THAT(rows.items, SizeIs(3));
}

TEST_F(PreparedTableTest, isNotReadWhenTheJsonHasAnotherSize) {
    write(jsonPath, R"([{"emoji":"k","name":"K","category":"Flags"}])");
    setAge(jsonPath, 10);
    const EmojiRows rows = loadEmojiRows(jsonPath);
    EXPECT_FALSE(rows.file);
    EXPECT_THAT(rows.items, SizeIs(1));
}

TEST_F(PreparedTableTest, isNotReadWhenItIsCutOrLonger) {
    for (qsizetype size = 0; size < prepared.size(); ++size) {
        write(preparedTablePath(jsonPath), prepared.left(size));
        EXPECT_FALSE(loadEmojiRows(jsonPath).file) << size;
    }
    write(preparedTablePath(jsonPath), prepared + "xx");
    EXPECT_FALSE(loadEmojiRows(jsonPath).file);
    EXPECT_THAT(loadEmojiRows(jsonPath).items, SizeIs(3));
}

// Whatever a byte of it becomes, nothing outside the file is read; the sanitizers see to that.
TEST_F(PreparedTableTest, readsNothingBeyondItselfWhateverByteIsWrong) {
    for (qsizetype i = 0; i < prepared.size(); ++i) {
        QByteArray damaged = prepared;
        damaged[i] = static_cast<char>(~damaged[i]);
        write(preparedTablePath(jsonPath), damaged);
        const EmojiRows rows = loadEmojiRows(jsonPath);
        EXPECT_THAT(rows.items, SizeIs(3)) << i;
        qsizetype length = 0;
        for (const EmojiSearchText &text : rows.searchTexts)
            length += text.text.toUpper().size();
        EXPECT_LT(length, 1000) << i;
    }
}

TEST_F(PreparedTableTest, aTextTooLongForItMakesNone) {
    const QByteArray name(70'000, 'n');
    EXPECT_TRUE(prepareEmojiTable(R"([{"emoji":"a","name":")" + name + R"(","category":"Flags"}])").isEmpty());
}

} // namespace
} // namespace tavrine
