#include "DatabaseFixture.h"
#include "FullDisk.h"
#include "ManagerTest.h"

namespace tavrine {
namespace {

class ClipboardRetention : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
    }
    QString name(int i) { return str("%1.jpg").arg(i, 3, 10, QLatin1Char('0')); }
    /// Another program lets everybody read the file and nobody write it, until it commits.
    static void hold(Outside &other) { ASSERT_TRUE(other.run("BEGIN IMMEDIATE")); }

    QString databaseFile = folders.applicationSupport + str("/Tavrine/clipboard.db");
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
    ASSERT_TRUE(
        Outside(databaseFile)
            .run("INSERT INTO items(id,content,date) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                 "WHERE i<10000) SELECT printf('00000000-0000-4000-8000-%012d',i), 'text '||i, i FROM n;"));
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

TEST_F(ClipboardRetention, clearingTakesThePicturesOfCopiesThatWaitToBeWritten) {
    Outside other(databaseFile);
    hold(other);
    copy(picture(30, 20));
    ASSERT_EQ(storedImages().size(), 1);
    manager->clearHistory();
    EXPECT_TRUE(manager->history().empty());
    EXPECT_TRUE(storedImages().isEmpty());
    ASSERT_TRUE(other.run("COMMIT"));
    tick();
    EXPECT_TRUE(manager->history().empty());
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardRetention, whatIsClearedWhileAnotherProgramHoldsTheFileGoesWithItsPicturesWhenThatIsOver) {
    copy(picture(30, 20));
    savePinned(str("pinned"), 1s);
    Outside other(databaseFile);
    hold(other);
    bool isDone = false;
    manager->clearHistory([&] { isDone = true; });
    manager->pauseMonitoring(); // no tick sees to it
    manager->setPaused(false);
    manager->reloadHistory();
    EXPECT_EQ(historyContents(), QStringList{str("pinned")});
    time.advance(5s);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(storedImages().size(), 1) << "the row is in the file, and may come back with the next start";
    ASSERT_TRUE(other.run("COMMIT"));
    time.advance(ClipboardManager::longestClearRetry);
    EXPECT_TRUE(isDone);
    EXPECT_EQ(contents(rows()), QStringList{str("pinned")});
    EXPECT_TRUE(storedImages().isEmpty());
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(ClipboardRetention, aClearWithoutRoomOnTheDiskMakesItByItsPictures) {
    copy(picture(30, 20));
    savePinned(str("pinned"), 1s);
    bool isDone = false;
    {
        const FullDisk disk;
        manager->clearHistory([&] { isDone = true; });
        EXPECT_EQ(historyContents(), QStringList{str("pinned")});
        EXPECT_TRUE(storedImages().isEmpty());
        EXPECT_FALSE(isDone);
        EXPECT_EQ(rows().size(), 2U);
    }
    time.advance(ClipboardManager::longestClearRetry);
    EXPECT_TRUE(isDone);
    EXPECT_EQ(contents(rows()), QStringList{str("pinned")});
}

/// A clear over a file that another program holds, with no tick to see to it.
class WaitingClear : public ClipboardRetention {
protected:
    void SetUp() override {
        ClipboardRetention::SetUp();
        save(str("plain"));
        manager->pauseMonitoring();
        hold(other);
    }
    void clear() {
        manager->clearHistory([this] { ++told; });
    }
    void letGo() { ASSERT_TRUE(other.run("COMMIT")); }
    /// Whether the clear is seen to within `length`.
    bool isSeenToWithin(Seconds length) {
        const int before = told;
        time.advance(length);
        return told > before;
    }
    Outside other{databaseFile};
    int told = 0;
};

TEST_F(WaitingClear, isLookedAtAfterAPollsIntervalAndThenAfterTwiceAsLongEachTime) {
    clear();
    time.advance(0.5s + 1s + 2s);
    letGo();
    EXPECT_FALSE(isSeenToWithin(3.875s));
    EXPECT_TRUE(isSeenToWithin(0.125s));
}

TEST_F(WaitingClear, isLookedAtEveryThirtySecondsAtLeast) {
    clear();
    time.advance(31.5s + 30s * 100); // from the sixth look on
    letGo();
    EXPECT_FALSE(isSeenToWithin(29.875s));
    EXPECT_TRUE(isSeenToWithin(0.125s));
}

TEST_F(WaitingClear, isLookedAtNoMoreOftenForFurtherClearsAndAllOfThemAreTold) {
    clear();
    time.advance(0.5s + 1s + 2s);
    clear();
    clear();
    letGo();
    EXPECT_FALSE(isSeenToWithin(3.875s));
    EXPECT_TRUE(isSeenToWithin(0.125s));
    EXPECT_EQ(told, 3);
    EXPECT_FALSE(isSeenToWithin(1min)) << "each once";
}

TEST_F(WaitingClear, isSeenToByTheNextTickWhereThereIsOne) {
    manager->setPaused(false);
    clear();
    time.advance(1min);
    manager->startMonitoring();
    letGo();
    EXPECT_TRUE(isSeenToWithin(ClipboardManager::pollInterval));
}

/// A history whose rows nobody can delete, however long they wait.
class RefusedClear : public ClipboardRetention {
protected:
    void SetUp() override {
        ClipboardRetention::SetUp();
        save(str("plain"));
        ASSERT_TRUE(other.run("CREATE TRIGGER refusal BEFORE DELETE ON items BEGIN SELECT RAISE(ABORT, 'no'); END"));
    }
    Outside other{databaseFile};
    bool isDone = false;
};

TEST_F(RefusedClear, isNotSaidToBeDone) {
    manager->clearHistory([&] { isDone = true; });
    time.advance(1min);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(historyContents(), QStringList{str("plain")});
}

TEST_F(RefusedClear, showsTheHistoryAgainThatWasEmptyWhileItWaited) {
    manager->pauseMonitoring(); // no tick sees to it
    manager->setPaused(false);
    hold(other);
    manager->clearHistory([&] { isDone = true; });
    EXPECT_EQ(historyContents(), QStringList());
    ASSERT_TRUE(other.run("COMMIT"));
    time.advance(1min);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(historyContents(), QStringList{str("plain")});
}

TEST_F(ClipboardRetention, clearingTellsAtOnceThatItIsDone) {
    save(str("plain"));
    bool isDone = false;
    manager->clearHistory([&] { isDone = true; });
    EXPECT_TRUE(isDone);
}

TEST_F(ClipboardRetention, anOldImageKeepsItsFileAsLongAsAnotherProgramKeepsItsRow) {
    write(imagesFolder + u'/' + name(0));
    save(str("Copied Image"), sevenDays + 1s, name(0));
    Outside other(databaseFile);
    hold(other);
    EXPECT_FALSE(manager->runCleanup());
    EXPECT_EQ(storedImages(), QStringList{name(0)});
    ASSERT_TRUE(other.run("COMMIT"));
    EXPECT_TRUE(manager->runCleanup());
    EXPECT_TRUE(storedImages().isEmpty());
    EXPECT_TRUE(rows().empty());
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

TEST_F(ClipboardExportFile, aLongTextIsInItWhole) {
    const QString whole = QString(100'000, QLatin1Char('x')) + str(" end");
    copy(whole);
    ASSERT_NE(historyContents(), QStringList{whole}) << "lists hold its beginning alone";
    EXPECT_TRUE(exported().endsWith("\n\n  " + whole.toUtf8()));
}

TEST_F(ClipboardExportFile, whatWaitsToBeWrittenIsInItAtItsPlace) {
    const QString whole = QString(100'000, QLatin1Char('x')) + str(" end");
    ClipboardItem unpinned = savePinned(str("unpinned"), 2s);
    savePinned(str("pinned"), 20s);
    save(str("older"), 3s);
    const ClipboardItem gone = save(str("gone"), 1s);
    Outside other(databaseFile);
    hold(other);
    copy(whole);
    unpinned.isPinned = false;
    database.save(unpinned);
    database.remove(gone.id);
    EXPECT_EQ(exported(), "Tavrine Clipboard Export\n2026-01-31 12:00:00 +0000\n\n"
                          "  [PINNED] pinned\n"
                          "  " +
                              whole.toUtf8() +
                              "\n"
                              "  unpinned\n"
                              "  older");
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
