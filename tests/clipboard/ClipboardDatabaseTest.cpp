#include "DatabaseFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <csignal>
#include <limits>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr qint64 plenty = 1000;

class ClipboardDatabaseTest : public DatabaseFixture {};

mode_t modeOf(const QString &path) {
    struct stat status {};
    stat(QFile::encodeName(path).constData(), &status);
    return status.st_mode & 0777;
}

TEST_F(ClipboardDatabaseTest, whatIsSavedReadsBackTheSame) {
    ClipboardDatabase db(path);
    const ClipboardItem saved = flagged(image(QStringLiteral("a.png"), 1700000000.123456), true, false);
    db.save(saved);
    EXPECT_EQ(db.loadAll({}, plenty), std::vector{saved});
}

TEST_F(ClipboardDatabaseTest, theFileAndItsFolderBelongToThePersonAlone) {
    const ClipboardDatabase db(path);
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(QFileInfo(path).path()), 0700U);
}

TEST_F(ClipboardDatabaseTest, theJournalOfAWriteBelongsToThePersonAlone) {
    const ClipboardDatabase db(path);
    Outside writer(path);
    ASSERT_TRUE(writer.run("BEGIN IMMEDIATE; DELETE FROM items; INSERT INTO items (id,date) VALUES ('x',1);"));
    ASSERT_TRUE(QFile::exists(path + QStringLiteral("-journal")));
    EXPECT_EQ(modeOf(path + QStringLiteral("-journal")), 0600U);
}

TEST_F(ClipboardDatabaseTest, aFileThatStandsKeepsItsContent) {
    const ClipboardItem item = text(QStringLiteral("kept"), 1);
    ClipboardDatabase(path).save(item);
    EXPECT_EQ(ClipboardDatabase(path).loadAll({}, plenty), std::vector{item});
}

TEST_F(ClipboardDatabaseTest, savingAnItemAgainReplacesItsRowWholesale) {
    ClipboardDatabase db(path);
    ClipboardItem item = image(QStringLiteral("a.png"), 1);
    db.save(item);
    db.save(text(QStringLiteral("other"), 2));
    item = flagged(item, false, true);
    item.content = QStringLiteral("changed");
    item.date = Date{3};
    item.imageFileName.reset();
    db.save(item);
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{2, 0, 0}));
    EXPECT_EQ(db.findDuplicate({}, QStringLiteral("changed")), item);
}

TEST_F(ClipboardDatabaseTest, removingReachesThatRowAloneAndAProtectedOneToo) {
    ClipboardDatabase db(path);
    const ClipboardItem pinned = flagged(text(QStringLiteral("pinned"), 1), true, false);
    db.save(pinned);
    db.save(text(QStringLiteral("other"), 2));
    db.remove(pinned.id);
    EXPECT_EQ(contents(db.loadAll({}, plenty)), QStringList{QStringLiteral("other")});
}

TEST_F(ClipboardDatabaseTest, aSearchTakesPercentUnderscoreAndBackslashLiterally) {
    ClipboardDatabase db(path);
    for (const char *content : {"100% wool", "100 wool", "snake_case", "snakeXcase", "C:\\temp", "C:/temp"})
        db.save(text(QString::fromUtf8(content), 1));
    const auto found = [&](const char *query) { return contents(db.search(QString::fromUtf8(query), plenty)); };
    EXPECT_EQ(found("0%"), QStringList{QStringLiteral("100% wool")});
    EXPECT_EQ(found("%"), QStringList{QStringLiteral("100% wool")});
    EXPECT_EQ(found("e_c"), QStringList{QStringLiteral("snake_case")});
    EXPECT_EQ(found(":\\t"), QStringList{QStringLiteral("C:\\temp")});
    EXPECT_EQ(found("\\%"), QStringList());
}

TEST_F(ClipboardDatabaseTest, aSearchIgnoresTheCaseOfAsciiLettersOnly) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("Größe ÄPFEL"), 1));
    EXPECT_EQ(db.search(QStringLiteral("gRÖSSE"), plenty).size(), 0U);
    EXPECT_EQ(db.search(QStringLiteral("GRöße"), plenty).size(), 1U);
    EXPECT_EQ(db.search(QStringLiteral("Äpfel"), plenty).size(), 1U);
    EXPECT_EQ(db.search(QStringLiteral("äpfel"), plenty).size(), 0U);
}

TEST_F(ClipboardDatabaseTest, aSearchPutsSavedBeforePinnedBeforeNewAndIsBoundedAsAWhole) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("x new"), 9));
    db.save(text(QStringLiteral("x old"), 1));
    db.save(flagged(text(QStringLiteral("x pinned"), 2), true, false));
    db.save(flagged(text(QStringLiteral("x saved"), 3), false, true));
    EXPECT_EQ(contents(db.search(QStringLiteral("X"), 3)),
              (QStringList{QStringLiteral("x saved"), QStringLiteral("x pinned"), QStringLiteral("x new")}));
}

TEST_F(ClipboardDatabaseTest, loadAllPutsPinnedFirstAndTakesOnlyWhatIsNewerThanSince) {
    ClipboardDatabase db(path);
    db.save(flagged(text(QStringLiteral("pinned"), 2.5), true, false));
    db.save(flagged(text(QStringLiteral("saved"), 1), false, true));
    db.save(text(QStringLiteral("new"), 3));
    EXPECT_EQ(contents(db.loadAll({}, std::numeric_limits<qint64>::max())),
              (QStringList{QStringLiteral("pinned"), QStringLiteral("new"), QStringLiteral("saved")}));
    EXPECT_EQ(contents(db.loadAll(Date{2.5}, plenty)), QStringList{QStringLiteral("new")});
    EXPECT_EQ(db.loadAll(Date{2.4999999999999996}, plenty).size(), 2U);
    EXPECT_EQ(db.loadAll({}, 1).size(), 1U);
}

TEST_F(ClipboardDatabaseTest, protectedRowsNeverUseUpTheLimit) {
    ClipboardDatabase db(path);
    for (int i = 0; i < 5; ++i) {
        db.save(flagged(text(QStringLiteral("protected %1").arg(i), i), i % 2 == 0, i % 2 == 1));
        db.save(text(QStringLiteral("plain %1").arg(i), 10 + i));
    }
    const auto items = db.loadProtectedAndRecent({}, 2);
    ASSERT_EQ(items.size(), 7U);
    EXPECT_EQ(items[5].content, QStringLiteral("plain 4"));
    EXPECT_EQ(items[6].content, QStringLiteral("plain 3"));
}

TEST_F(ClipboardDatabaseTest, limitZeroAndAFarFutureGiveTheProtectedRowsInTheirOrder) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("plain"), 99));
    db.save(flagged(text(QStringLiteral("pinned old"), 5), true, false));
    db.save(flagged(text(QStringLiteral("pinned new"), 6), true, false));
    db.save(flagged(text(QStringLiteral("saved old"), 1), false, true));
    db.save(flagged(text(QStringLiteral("saved new"), 2), false, true));
    EXPECT_EQ(contents(db.loadProtectedAndRecent(Date::distantFuture(), 0)),
              (QStringList{QStringLiteral("saved new"), QStringLiteral("saved old"), QStringLiteral("pinned new"),
                           QStringLiteral("pinned old")}));
}

TEST_F(ClipboardDatabaseTest, anItemBothPinnedAndSavedAppearsOnceAmongTheSaved) {
    ClipboardDatabase db(path);
    db.save(flagged(text(QStringLiteral("saved"), 9), false, true));
    db.save(flagged(text(QStringLiteral("both"), 1), true, true));
    db.save(flagged(text(QStringLiteral("pinned"), 5), true, false));
    EXPECT_EQ(contents(db.loadProtectedAndRecent({}, plenty)),
              (QStringList{QStringLiteral("both"), QStringLiteral("saved"), QStringLiteral("pinned")}));
}

TEST_F(ClipboardDatabaseTest, aDuplicateHasTheSameContentToTheLetterAndTheSameFile) {
    ClipboardDatabase db(path);
    const ClipboardItem plain = text(QStringLiteral("Copied Image"), 1);
    const ClipboardItem picture = image(QStringLiteral("a.png"), 2);
    db.save(plain);
    db.save(picture);
    EXPECT_EQ(db.findDuplicate({}, QStringLiteral("Copied Image")), plain);
    EXPECT_EQ(db.findDuplicate(QStringLiteral("a.png"), QStringLiteral("Copied Image")), picture);
    EXPECT_EQ(db.findDuplicate(QStringLiteral("b.png"), QStringLiteral("Copied Image")), std::nullopt);
    EXPECT_EQ(db.findDuplicate({}, QStringLiteral("copied image")), std::nullopt);
    EXPECT_EQ(db.findDuplicate({}, QStringLiteral("Copied Image ")), std::nullopt);
}

TEST_F(ClipboardDatabaseTest, pruningKeepsTheNewestAndEveryProtectedRow) {
    ClipboardDatabase db(path);
    for (int i = 0; i < 51; ++i)
        db.save(image(QStringLiteral("%1.png").arg(i), i));
    db.save(flagged(image(QStringLiteral("pinned.png"), -1), true, false));
    db.save(flagged(image(QStringLiteral("saved.png"), -2), false, true));
    db.save(text(QStringLiteral("old text"), -3));
    EXPECT_EQ(db.prune(true, {}, 51), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.prune(true, {}, 50), (ClipboardDatabase::Pruned{{QStringLiteral("0.png")}, 1}));
    EXPECT_EQ(db.prune(true, {}, 50), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.counts().total, 53);
}

TEST_F(ClipboardDatabaseTest, pruningToTheNewestFiftyOfFiftyRowsDeletesNothing) {
    ClipboardDatabase db(path);
    for (int i = 0; i < 50; ++i)
        db.save(text(QString::number(i), i));
    EXPECT_EQ(db.prune(false, {}, 50), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.counts().total, 50);
    EXPECT_EQ(db.prune(false, {}, 49).deletedCount, 1);
}

TEST_F(ClipboardDatabaseTest, pruningByAgeTakesWhatIsOlderAndNotWhatIsAsOld) {
    ClipboardDatabase db(path);
    db.save(image(QStringLiteral("older.png"), 9.5));
    db.save(image(QStringLiteral("same.png"), 10));
    db.save(text(QStringLiteral("older text"), 9));
    EXPECT_EQ(db.prune(true, Date{10}, {}), (ClipboardDatabase::Pruned{{QStringLiteral("older.png")}, 1}));
    EXPECT_EQ(db.prune(false, Date{10}, {}), (ClipboardDatabase::Pruned{{}, 1}));
    EXPECT_EQ(contents(db.loadAll({}, plenty)), QStringList{QStringLiteral("Copied Image")});
}

TEST_F(ClipboardDatabaseTest, pruningByAgeAndCountKeepsTheNewestOfTheOldOnes) {
    ClipboardDatabase db(path);
    for (int i = 0; i < 10; ++i)
        db.save(text(QString::number(i), i));
    EXPECT_EQ(db.prune(false, Date{6}, 4).deletedCount, 2); // of 0 to 5, the newest four stay
    EXPECT_EQ(db.loadAll({}, plenty).back().content, QStringLiteral("2"));
}

TEST_F(ClipboardDatabaseTest, clearingLeavesTheProtectedRowsAndNamesTheFilesOfTheOthers) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("plain"), 1));
    db.save(image(QStringLiteral("gone.png"), 2));
    db.save(flagged(image(QStringLiteral("pinned.png"), 3), true, false));
    db.save(flagged(image(QStringLiteral("saved.png"), 4), false, true));
    EXPECT_EQ(db.clearUnprotected(), QStringList{QStringLiteral("gone.png")});
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{2, 1, 2}));
}

TEST_F(ClipboardDatabaseTest, aSavedRowThatIsNotPinnedCountsInTheTotalOnly) {
    ClipboardDatabase db(path);
    db.save(flagged(text(QStringLiteral("saved"), 1), false, true));
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{1, 0, 0}));
}

TEST_F(ClipboardDatabaseTest, anEmptyCaptionOfAFileReadsAsImageAndStaysEmptyInTheFile) {
    ClipboardDatabase db(path);
    Outside outside(path);
    const QString id = freshUuidString();
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + id.toStdString() + "','',1,0,0,'a.png')"));
    const auto items = db.loadProtectedAndRecent({}, plenty);
    ASSERT_EQ(contents(items), QStringList{QStringLiteral("Image")});
    EXPECT_THAT(outside.values("SELECT content FROM items"), ElementsAre(""));
    db.save(items.front());
    EXPECT_THAT(outside.values("SELECT content FROM items"), ElementsAre("Image"));
}

TEST_F(ClipboardDatabaseTest, aRowWhoseIdIsNoUuidGetsAFreshOneThatReachesNothing) {
    ClipboardDatabase db(path);
    Outside outside(path);
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('not a uuid','text',1,0,0,NULL)"));
    const auto first = db.loadProtectedAndRecent({}, plenty);
    const auto second = db.loadProtectedAndRecent({}, plenty);
    ASSERT_EQ(first.size(), 1U);
    EXPECT_FALSE(first.front().id.isNull());
    EXPECT_NE(first.front().id, second.front().id);
    db.remove(first.front().id);
    EXPECT_THAT(outside.values("SELECT id FROM items"), ElementsAre("not a uuid"));
}

TEST_F(ClipboardDatabaseTest, aFlagIsTrueForTheIntegerOneOnly) {
    ClipboardDatabase db(path);
    Outside outside(path);
    for (const char *flags : {"2,0", "0,-1", "1,0", "0,1"}) {
        ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() + "','" + flags +
                                "',1," + flags + ",NULL)"));
    }
    for (const ClipboardItem &item : db.loadAll({}, plenty)) {
        EXPECT_EQ(item.isPinned, item.content == QStringLiteral("1,0")) << item.content.toStdString();
        EXPECT_EQ(item.isSaved, item.content == QStringLiteral("0,1")) << item.content.toStdString();
    }
}

TEST_F(ClipboardDatabaseTest, aTextIsStoredUpToItsFirstNul) {
    ClipboardDatabase db(path);
    const QString content = QStringLiteral("before") + QChar(QChar::Null) + QStringLiteral("after");
    db.save(text(content, 1));
    EXPECT_EQ(contents(db.loadProtectedAndRecent({}, plenty)), QStringList{QStringLiteral("before")});
    EXPECT_TRUE(db.findDuplicate({}, content).has_value()); // bound the same way
    EXPECT_TRUE(db.findDuplicate({}, QStringLiteral("before")).has_value());
}

TEST_F(ClipboardDatabaseTest, threeMegabytesOfTextComeBackAndAreFound) {
    ClipboardDatabase db(path);
    const ClipboardItem item = text(QString(3'000'000, QLatin1Char('a')) + QStringLiteral("needle"), 1);
    db.save(item);
    EXPECT_EQ(db.loadAll({}, plenty), std::vector{item});
    EXPECT_EQ(db.search(QStringLiteral("aNEEDLE"), plenty).size(), 1U);
    EXPECT_EQ(db.findDuplicate({}, item.content), item);
}

// Files of other origin and trouble with the disk.

TEST_F(ClipboardDatabaseTest, aFileFromBeforeMySavedGainsTheColumnAtOnceAndItsIndexesInTwoStarts) {
    QDir().mkpath(QFileInfo(path).path());
    Outside outside(path);
    const std::string id = freshUuidString().toStdString();
    ASSERT_TRUE(outside.run("CREATE TABLE items (id TEXT PRIMARY KEY NOT NULL, content TEXT NOT NULL DEFAULT '', date "
                            "REAL NOT NULL, is_pinned INTEGER NOT NULL DEFAULT 0, image_file_name TEXT);"
                            "INSERT INTO items VALUES ('" +
                            id + "','old',1,1,NULL);"));
    const std::string indexes = "SELECT name FROM sqlite_master WHERE type='index' AND sql NOT NULL ORDER BY name";
    {
        ClipboardDatabase db(path);
        EXPECT_THAT(outside.values(indexes), ElementsAre("idx_date", "idx_pinned", "idx_saved"));
        EXPECT_THAT(outside.values("SELECT is_saved FROM items"), ElementsAre("0"));
        EXPECT_EQ(contents(db.loadProtectedAndRecent({}, plenty)), QStringList{QStringLiteral("old")});
    }
    const ClipboardDatabase again(path);
    EXPECT_THAT(outside.values(indexes),
                ElementsAre("idx_content", "idx_date", "idx_images", "idx_pinned", "idx_saved"));
}

void expectNoHistory(ClipboardDatabase &db) {
    ClipboardItem item;
    item.id = QUuid::createUuid();
    item.content = QStringLiteral("lost");
    db.warmUp();
    db.save(item);
    db.remove(item.id);
    EXPECT_TRUE(db.loadAll({}, plenty).empty());
    EXPECT_TRUE(db.loadProtectedAndRecent({}, plenty).empty());
    EXPECT_TRUE(db.loadProtectedAndRecent(Date{1}, 0).empty());
    EXPECT_TRUE(db.search(QStringLiteral("lost"), plenty).empty());
    EXPECT_EQ(db.findDuplicate({}, item.content), std::nullopt);
    EXPECT_EQ(db.findDuplicate(QStringLiteral("a"), item.content), std::nullopt);
    EXPECT_EQ(db.prune(true, Date{1}, 1), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.clearUnprotected(), QStringList());
    EXPECT_EQ(db.counts(), ClipboardDatabase::Counts());
}

TEST_F(ClipboardDatabaseTest, aFileThatIsNoDatabaseIsSetAsideAsItIs) {
    QDir().mkpath(QFileInfo(path).path());
    const QByteArray foreign = QByteArray("These are not the bytes of a database. ").repeated(200);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(foreign);
    file.close();
    {
        ClipboardDatabase db(path);
        EXPECT_EQ(db.counts(), ClipboardDatabase::Counts());
    }
    const QDir itsFolder = QFileInfo(path).dir();
    const QStringList aside = itsFolder.entryList({QStringLiteral("clipboard.db.unreadable-*")}, QDir::Files);
    ASSERT_EQ(aside.size(), 1);
    QFile kept(itsFolder.filePath(aside.front()));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), foreign);
}

TEST_F(ClipboardDatabaseTest, aDatabaseOfAnotherProgramKeepsItsTableBesideOurs) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(Outside(path).run("CREATE TABLE songs (title TEXT); INSERT INTO songs VALUES ('theirs');"));
    const ClipboardItem ours = text(QStringLiteral("ours"), 1);
    {
        ClipboardDatabase db(path);
        db.save(ours);
        EXPECT_EQ(db.search(QStringLiteral("our"), plenty), std::vector{ours});
        db.prune(false, {}, 0);
        (void)db.clearUnprotected();
    }
    EXPECT_THAT(Outside(path).values("SELECT title FROM songs"), ElementsAre("theirs"));
}

TEST_F(ClipboardDatabaseTest, anItemsTableWithOtherColumnsGivesNoHistoryAndKeepsItsRows) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(
        Outside(path).run("CREATE TABLE items (name TEXT, price REAL); INSERT INTO items VALUES ('pen', 2.5);"));
    {
        ClipboardDatabase db(path);
        db.save(text(QStringLiteral("pen"), 1));
        EXPECT_TRUE(db.search(QStringLiteral("pen"), plenty).empty());
        EXPECT_TRUE(db.loadAll({}, plenty).empty());
        EXPECT_TRUE(db.loadProtectedAndRecent({}, plenty).empty());
    }
    EXPECT_THAT(Outside(path).values("SELECT name, price FROM items"), ElementsAre("pen", "2.5"));
}

TEST_F(ClipboardDatabaseTest, aFolderInPlaceOfTheFileGivesNoHistory) {
    QDir().mkpath(path);
    ClipboardDatabase db(path);
    expectNoHistory(db);
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(ClipboardDatabaseTest, aFileInPlaceOfTheFolderGivesNoHistory) {
    QFile file(QFileInfo(path).path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ClipboardDatabase db(path);
    expectNoHistory(db);
}

TEST_F(ClipboardDatabaseTest, aTornFileCostsItsReadersNothingButTheRows) {
    {
        ClipboardDatabase db(path);
        for (int i = 0; i < 200; ++i)
            db.save(text(QString(200, QLatin1Char('x')) + QString::number(i), i));
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const qint64 page = 4096;
    ASSERT_GT(file.size(), 6 * page);
    file.seek(3 * page);
    file.write(QByteArray(static_cast<int>(file.size() - 3 * page), '\xEE'));
    file.close();
    ClipboardDatabase db(path);
    EXPECT_LT(db.loadProtectedAndRecent({}, plenty).size(), 200U);
    db.save(text(QStringLiteral("new"), 1e6));
    EXPECT_LT(db.search(QStringLiteral("x"), plenty).size(), 200U);
    (void)db.prune(false, {}, 0);
    (void)db.counts();
}

TEST_F(ClipboardDatabaseTest, aWriteWaitsWhenAnotherProgramHoldsTheFileForLongerThanASecond) {
    ClipboardDatabase db(path);
    const ClipboardItem kept = text(QStringLiteral("kept"), 1);
    db.save(kept);
    ASSERT_EQ(db.loadProtectedAndRecent({}, plenty).size(), 1U);
    Outside outside(path);
    ASSERT_TRUE(outside.run("BEGIN EXCLUSIVE"));
    QElapsedTimer clock;
    clock.start();
    const ClipboardItem late = text(QStringLiteral("late"), 2);
    db.save(late);
    EXPECT_GE(clock.elapsed(), 900);
    EXPECT_EQ(outside.values("SELECT COUNT(*) FROM items"), std::vector<std::string>{"1"});
    ASSERT_TRUE(outside.run("COMMIT"));
    EXPECT_EQ(db.loadProtectedAndRecent({}, plenty), (std::vector{late, kept}));
    db.save(text(QStringLiteral("after"), 3));
    EXPECT_EQ(db.counts().total, 3);
}

TEST_F(ClipboardDatabaseTest, aFileThatWasOpenToOthersIsClosedToThem) {
    { ClipboardDatabase db(path); }
    const QString itsFolder = QFileInfo(path).path();
    const auto all = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;
    ASSERT_TRUE(QFile::setPermissions(path, all));
    ASSERT_TRUE(QFile::setPermissions(itsFolder, all | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther));
    const ClipboardDatabase db(path);
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(QFile::permissions(path) & others, QFile::Permissions());
    EXPECT_EQ(QFile::permissions(itsFolder) & others, QFile::Permissions());
}

TEST_F(ClipboardDatabaseTest, aFullDiskKeepsTheWriteWaiting) {
    ClipboardDatabase db(path);
    const ClipboardItem kept = text(QStringLiteral("kept"), 1);
    db.save(kept);
    ASSERT_EQ(db.loadProtectedAndRecent({}, plenty), std::vector{kept});
    // No file of the process may grow beyond what this one has: to SQLite a disk that is full.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{static_cast<rlim_t>(QFileInfo(path).size()), before.rlim_max};
    auto *const handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    db.save(text(QString(1'000'000, QLatin1Char('x')), 2));
    const auto whileFull = db.loadProtectedAndRecent({}, plenty);
    const int rowsWhileFull = db.counts().total;
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(rowsWhileFull, 2);
    ASSERT_EQ(whileFull.size(), 2U);
    EXPECT_EQ(whileFull.back(), kept);
    db.save(text(QStringLiteral("after"), 3));
    EXPECT_EQ(db.counts().total, 3);
    EXPECT_EQ(Outside(path).values("SELECT LENGTH(content) FROM items WHERE date=2"),
              std::vector<std::string>{"1000000"});
    EXPECT_THAT(Outside(path).values("PRAGMA integrity_check"), ElementsAre("ok"));
}

// What ends the process.

class ClipboardDatabaseDeathTest : public ClipboardDatabaseTest {
protected:
    /// Who dies leaves its folder: in this one, which goes with the test.
    ClipboardDatabaseDeathTest() : m_usual(qgetenv("TMPDIR")) {
        testing::FLAGS_gtest_death_test_style = "threadsafe";
        qputenv("TMPDIR", QFile::encodeName(folder.path()));
    }
    ~ClipboardDatabaseDeathTest() override {
        if (m_usual.isNull())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", m_usual);
    }
    static constexpr qint64 tooMuch = qint64{std::numeric_limits<int>::max()} + 1;

private:
    const QByteArray m_usual;
};

TEST_F(ClipboardDatabaseDeathTest, aLimitBeyond32BitsEndsTheProcess) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("a"), 1));
    db.save(flagged(text(QStringLiteral("b"), 2), true, false));
    EXPECT_EQ(db.search(QStringLiteral("a"), tooMuch - 1).size(), 1U);
    EXPECT_DEATH((void)db.search(QStringLiteral("a"), tooMuch), "32-bit");
}

TEST_F(ClipboardDatabaseDeathTest, aLimitThatFitsOnlyWithoutTheProtectedRowsEndsTheProcess) {
    ClipboardDatabase db(path);
    db.save(flagged(text(QStringLiteral("b"), 2), true, false));
    EXPECT_DEATH((void)db.loadProtectedAndRecent({}, tooMuch - 1), "32-bit");
    EXPECT_EQ(db.loadProtectedAndRecent({}, tooMuch - 2).size(), 1U);
    EXPECT_DEATH((void)db.loadProtectedAndRecent({}, tooMuch - 1), "32-bit"); // also from memory
}

TEST_F(ClipboardDatabaseDeathTest, keepingMoreThan32BitsCountEndsTheProcess) {
    ClipboardDatabase db(path);
    db.save(text(QStringLiteral("a"), 1));
    EXPECT_EQ(db.prune(true, {}, tooMuch - 1), ClipboardDatabase::Pruned());
    EXPECT_DEATH((void)db.prune(true, {}, tooMuch), "32-bit");
    (void)db.loadProtectedAndRecent({}, 1);
    EXPECT_DEATH((void)db.prune(true, {}, tooMuch), "32-bit"); // also where memory would do
}

TEST_F(ClipboardDatabaseDeathTest, aNullInIdOrContentEndsTheProcess) {
    QDir().mkpath(QFileInfo(path).path());
    Outside outside(path);
    ASSERT_TRUE(outside.run("CREATE TABLE items (id TEXT, content TEXT, date REAL, is_pinned INTEGER, is_saved INTEGER,"
                            "image_file_name TEXT); INSERT INTO items VALUES (NULL,'a',1,0,0,NULL)"));
    ClipboardDatabase db(path);
    EXPECT_DEATH((void)db.loadAll({}, plenty), "id");
    EXPECT_DEATH((void)db.prune(false, {}, {}), "id");
    ASSERT_TRUE(outside.run("UPDATE items SET id='x', content=NULL"));
    EXPECT_DEATH((void)db.loadProtectedAndRecent({}, plenty), "content");
}

} // namespace
} // namespace tavrine
