#include "ManagerTest.h"

#include <sqlite3.h>

namespace tavrine {
namespace {

class ClipboardRetention : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
    }
    QString name(int i) { return str("%1.jpg").arg(i, 3, 10, QLatin1Char('0')); }
    static constexpr Seconds sevenDays = ClipboardManager::imageRetentionInterval;
};

TEST_F(ClipboardRetention, fiftyYoungImagesStay) {
    for (int i = 0; i < 50; ++i)
        save(str("Copied Image"), Seconds{100.0 - i}, name(i));
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(rows().size(), 50U);
}

TEST_F(ClipboardRetention, ofFiftyOneYoungImagesTheOldestGoesWithItsFileAndThumbnail) {
    for (int i = 0; i < 51; ++i) {
        save(str("Copied Image"), Seconds{100.0 - i}, name(i));
        write(imagesFolder + u'/' + name(i));
    }
    manager->cacheThumbnail(picture(2, 2), name(0));
    manager->cacheThumbnail(picture(2, 2), name(1));
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_EQ(rows().size(), 50U);
    EXPECT_FALSE(database.findDuplicate(name(0), str("Copied Image")));
    EXPECT_EQ(storedImages().size(), 50);
    EXPECT_FALSE(storedImages().contains(name(0)));
    EXPECT_FALSE(manager->thumbnailCache().object(name(0)));
    EXPECT_TRUE(manager->thumbnailCache().object(name(1)));
    EXPECT_FALSE(manager->runCleanup());
}

TEST_F(ClipboardRetention, anImageOfSevenDaysAndASecondGoes) {
    save(str("Copied Image"), sevenDays + 1s, name(0));
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardRetention, anImageOfExactlySevenDaysStays) {
    save(str("Copied Image"), sevenDays, name(0));
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClipboardRetention, aPinnedOldImageStaysAndDoesNotCountTowardsTheFifty) {
    write(imagesFolder + str("/pinned.jpg"));
    savePinned(str("Copied Image"), sevenDays * 2, str("pinned.jpg"));
    for (int i = 0; i < 50; ++i)
        save(str("Copied Image"), Seconds{100.0 - i}, name(i));
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(rows().size(), 51U);
    EXPECT_EQ(storedImages(), QStringList{str("pinned.jpg")});
}

TEST_F(ClipboardRetention, recordingsCountWithTheImagesAndLoseTheirFiles) {
    write(quickShotsFolder + str("/Demo.mp4"));
    save(str("[Screen Recording] Demo"), sevenDays + 1s, str("Demo.mp4"));
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_FALSE(QFile::exists(quickShotsFolder + str("/Demo.mp4")));
}

TEST_F(ClipboardRetention, tenThousandOldTextsStay) {
    // Written beside the manager and in one go: ten thousand single writes would take their time.
    sqlite3 *db = nullptr;
    const QByteArray path = (folders.applicationSupport + str("/Tavrine/clipboard.db")).toUtf8();
    ASSERT_EQ(sqlite3_open(path.constData(), &db), SQLITE_OK);
    const char *insert =
        "INSERT INTO items(id,content,date) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
        "WHERE i<10000) SELECT printf('00000000-0000-4000-8000-%012d',i), 'text '||i, i FROM n;";
    ASSERT_EQ(sqlite3_exec(db, insert, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(database.counts().total, 10'000);
}

TEST_F(ClipboardRetention, theRetentionPeriodIsReadByNoCleanup) {
    save(str("text"), 400 * 24h);
    save(str("Copied Image"), 4 * 24h, name(0));
    manager->setRetentionPeriod(RetentionPeriod::tenMinutes);
    manager->saveSettings();
    EXPECT_EQ(defaults.get<QString>(str("RetentionPeriod")), str("10 Minutes"));
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardRetention, aFileThatCannotBeRemovedIsNoObstacle) {
    QDir().mkpath(imagesFolder + u'/' + name(0) + str("/a folder"));
    save(str("Copied Image"), sevenDays + 1s, name(0));
    save(str("Copied Image"), sevenDays + 1s, name(1)); // without a file
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardRetention, aRowFromElsewhereCannotReachOutsideTheFolder) {
    const QString outside = folders.applicationSupport + str("/Tavrine/clipboard.db");
    save(str("Copied Image"), sevenDays + 1s, str("../clipboard.db"));
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_TRUE(QFile::exists(outside));
}

TEST_F(ClipboardRetention, clearingLeavesWhatIsProtectedWithItsFiles) {
    write(imagesFolder + str("/A.jpg"));
    write(imagesFolder + str("/B.jpg"));
    save(str("plain"));
    save(str("Copied Image"), 1s, str("A.jpg"));
    const ClipboardItem pinned = savePinned(str("Copied Image"), 2s, str("B.jpg"));
    const ClipboardItem saved = saveInMySaved(str("saved"), 3s);
    manager->cacheThumbnail(picture(2, 2), str("A.jpg"));
    manager->clearHistory();
    EXPECT_EQ(manager->history(), (std::vector{saved, pinned}));
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_EQ(storedImages(), QStringList{str("B.jpg")});
    EXPECT_FALSE(manager->thumbnailCache().object(str("A.jpg")));
}

// Export.

class ClipboardExportFile : public ClipboardRetention {
protected:
    QByteArray exported() {
        QFile file(manager->exportHistory().value());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
};

TEST_F(ClipboardExportFile, anEmptyHistoryGivesTheHeaderAndTwoLineFeeds) {
    EXPECT_EQ(exported(), "Tavrine Clipboard Export\n2026-01-31 12:00:00 +0000\n\n");
}

TEST_F(ClipboardExportFile, eachItemIsALineThatBeginsWithTwoBlanks) {
    save(str("plain"), 4s);
    save(str("Copied Image"), 3s, str("A.jpg"));
    saveInMySaved(str("saved"), 1s);
    savePinned(str("pinned"), 9s);
    EXPECT_EQ(exported(), "Tavrine Clipboard Export\n2026-01-31 12:00:00 +0000\n\n"
                          "  [PINNED] pinned\n"
                          "  [MY SAVED] saved\n"
                          "  [IMAGE]\n"
                          "  plain");
}

TEST_F(ClipboardExportFile, aMultiLineTextExportsAsOneLine) {
    save(str("first\nsecond\r\n"));
    EXPECT_EQ(exported(), "Tavrine Clipboard Export\n2026-01-31 12:00:00 +0000\n\n  first second\r ");
}

TEST_F(ClipboardExportFile, anItemThatIsSavedAndPinnedCarriesBothMarksInThatOrder) {
    ClipboardItem both = savePinned(str("both"));
    both.isSaved = true;
    database.save(both);
    EXPECT_EQ(exported(), "Tavrine Clipboard Export\n2026-01-31 12:00:00 +0000\n\n  [MY SAVED] [PINNED] both");
}

TEST_F(ClipboardExportFile, everyRowIsInItAlsoWhatIsNotInMemory) {
    for (int i = 0; i < 201; ++i)
        save(str("text"), Seconds{1000.0 - i});
    EXPECT_EQ(exported().count('\n'), 3 + 200);
}

TEST_F(ClipboardExportFile, itIsNamedByTheSecondAndReadableByThePersonAlone) {
    time.advance(900ms);
    const QString path = manager->exportHistory().value();
    EXPECT_EQ(path, folders.temporary + str("/clipboard_export_1769860800.txt"));
    const auto othersBits = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_EQ(QFile::permissions(path) & othersBits, QFile::Permissions());
    EXPECT_EQ(QFile::permissions(folders.temporary) & othersBits, QFile::Permissions());
}

TEST_F(ClipboardExportFile, aFileThatCannotBeWrittenStillHasItsPath) {
    write(folders.temporary, "a file where the folder should be");
    const std::optional<QString> path = manager->exportHistory();
    ASSERT_TRUE(path);
    EXPECT_FALSE(QFile::exists(*path));
}

TEST_F(ClipboardExportFile, thereIsNoneWithoutATemporaryFolder) {
    quit();
    folders.temporary.clear();
    start();
    EXPECT_EQ(manager->exportHistory(), std::nullopt);
}

} // namespace
} // namespace tavrine
