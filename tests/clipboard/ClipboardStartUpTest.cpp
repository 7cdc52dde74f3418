#include "DatabaseFixture.h"
#include "ManagerTest.h"

namespace tavrine {
namespace {

/// The first start over a fresh preferences store: nothing is seeded yet.
class ClipboardStartUp : public ManagerTest {
protected:
    ClipboardStartUp() { defaults.remove(str("ClipboardMySaveSeeded")); }

    void storeOldHistory(const QByteArray &json) { defaults.set(str("ClipboardHistory"), json); }
    const QString seedText = QLatin1String(ClipboardManager::defaultMySaveText);
};

const QByteArray oldText = R"([{"id":"8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10","content":"from before","date":1000.5}])";

TEST_F(ClipboardStartUp, startsToPollWithTheFallbacksOfTheSettings) {
    start();
    EXPECT_FALSE(manager->isPaused());
    EXPECT_TRUE(manager->isMonitoring());
    EXPECT_EQ(manager->hotkeyCharacter(), str("v"));
    EXPECT_EQ(manager->retentionPeriod(), RetentionPeriod::thirtyDays);
    EXPECT_FALSE(manager->autoClearOnRestart());
    EXPECT_FALSE(manager->stripRichText());
    EXPECT_TRUE(manager->excludedApps().empty());
    EXPECT_FALSE(manager->launchAtLogin());
    EXPECT_EQ(manager->thumbnailCache().count(), 0);
}

TEST_F(ClipboardStartUp, readsTheSettings) {
    const ExcludedApp app{QUuid::createUuid(), str("org.example.bank"), str("Bank")};
    defaults.set(str("HotkeyCharacter"), str("b"));
    defaults.set(str("RetentionPeriod"), str("10 Minutes"));
    defaults.set(str("AutoClearOnRestart"), true);
    defaults.set(str("StripRichTextFormatting"), true);
    defaults.set(str("ExcludedAppsV2"), encodeExcludedApps({app}));
    loginItem.setEnabledOutside(true);
    start();
    EXPECT_EQ(manager->hotkeyCharacter(), str("b"));
    EXPECT_EQ(manager->retentionPeriod(), RetentionPeriod::tenMinutes);
    EXPECT_TRUE(manager->autoClearOnRestart());
    EXPECT_TRUE(manager->stripRichText());
    EXPECT_EQ(manager->excludedApps(), std::vector{app});
    EXPECT_TRUE(manager->launchAtLogin());
}

TEST_F(ClipboardStartUp, settingsOfAnotherTypeCountAsAbsent) {
    defaults.set(str("HotkeyCharacter"), 5);
    defaults.set(str("RetentionPeriod"), true);
    defaults.set(str("AutoClearOnRestart"), str("true"));
    defaults.set(str("StripRichTextFormatting"), 1);
    defaults.set(str("ExcludedAppsV2"), str("[]"));
    start();
    EXPECT_EQ(manager->hotkeyCharacter(), str("v"));
    EXPECT_EQ(manager->retentionPeriod(), RetentionPeriod::thirtyDays);
    EXPECT_FALSE(manager->autoClearOnRestart());
    EXPECT_FALSE(manager->stripRichText());
    EXPECT_TRUE(manager->excludedApps().empty());
}

TEST_F(ClipboardStartUp, anUnknownRetentionPeriodIsIgnoredAndLeftAlone) {
    defaults.set(str("RetentionPeriod"), str("30 days"));
    start();
    EXPECT_EQ(manager->retentionPeriod(), RetentionPeriod::thirtyDays);
    EXPECT_EQ(defaults.get<QString>(str("RetentionPeriod")), str("30 days"));
}

TEST_F(ClipboardStartUp, aListOfExclusionsThatCannotBeReadStaysAsItIsStored) {
    const QByteArray broken = R"([{"id":"not an id","bundleID":"a","displayName":"b"}])";
    defaults.set(str("ExcludedAppsV2"), broken);
    start();
    EXPECT_TRUE(manager->excludedApps().empty());
    EXPECT_EQ(defaults.get<QByteArray>(str("ExcludedAppsV2")), broken);
}

// Paused or not.

TEST_F(ClipboardStartUp, isPausedWhenTheFeatureIsOff) {
    save(str("plain"));
    const ClipboardItem pinned = savePinned(str("pinned"));
    defaults.set(str("featureClipboardHistory"), false);
    defaults.set(str("ClipboardMySaveSeeded"), true);
    start();
    EXPECT_TRUE(manager->isPaused());
    EXPECT_FALSE(manager->isMonitoring());
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(manager->history(), std::vector{pinned});
}

TEST_F(ClipboardStartUp, isNotPausedWhenTheFeatureIsOn) {
    defaults.set(str("featureClipboardHistory"), true);
    start();
    EXPECT_FALSE(manager->isPaused());
}

TEST_F(ClipboardStartUp, isNotPausedWhenTheFeatureKeyIsNoBool) {
    defaults.set(str("featureClipboardHistory"), 0);
    start();
    EXPECT_FALSE(manager->isPaused());
}

TEST_F(ClipboardStartUp, whatStandsOnThePasteboardIsNotRecorded) {
    pasteboard.copyFromOutside(str("from before the start"));
    start();
    time.advance(5s);
    EXPECT_EQ(historyContents(), QStringList{seedText});
}

// Seeding.

TEST_F(ClipboardStartUp, seedsOneItemInMySaved) {
    start();
    ASSERT_EQ(manager->history().size(), 1U);
    const ClipboardItem &seed = manager->history().front();
    EXPECT_EQ(seed.content, str("You can save your custom things here..."));
    EXPECT_TRUE(seed.isSaved);
    EXPECT_FALSE(seed.isPinned);
    EXPECT_EQ(seed.date, time.now());
    EXPECT_EQ(seed.imageFileName, std::nullopt);
    EXPECT_EQ(defaults.get<bool>(str("ClipboardMySaveSeeded")), true);
}

TEST_F(ClipboardStartUp, theSeedThatWasRemovedDoesNotComeBack) {
    start();
    database.remove(manager->history().front().id);
    quit();
    start();
    EXPECT_TRUE(manager->history().empty());
}

TEST_F(ClipboardStartUp, aTextRowThatReadsLikeTheSeedIsLeftAsItIs) {
    const ClipboardItem own = save(seedText, 50s);
    start();
    EXPECT_EQ(rows(), std::vector{own});
    EXPECT_EQ(defaults.get<bool>(str("ClipboardMySaveSeeded")), true);
}

TEST_F(ClipboardStartUp, anImageRowThatReadsLikeTheSeedDoesNotStandForIt) {
    save(seedText, 50s, str("A.jpg"));
    start();
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardStartUp, seedsWhilePausedToo) {
    defaults.set(str("featureClipboardHistory"), false);
    start();
    EXPECT_EQ(historyContents(), QStringList{seedText});
}

// The old history.

TEST_F(ClipboardStartUp, bringsTheOldHistoryIntoTheDatabaseOnce) {
    storeOldHistory(oldText);
    start();
    ASSERT_EQ(historyContents(), (QStringList{seedText, str("from before")}));
    const ClipboardItem &item = manager->history()[1];
    EXPECT_EQ(item.id, QUuid(str("8F14E45F-CEEA-467F-AB1C-2D5A6C3E9B10")));
    EXPECT_EQ(item.date.secondsSince1970, 978308200.5);
    EXPECT_EQ(defaults.get<bool>(str("ClipboardDBMigrated")), true);
    EXPECT_FALSE(defaults.contains(str("ClipboardHistory")));
}

TEST_F(ClipboardStartUp, anOldHistoryThatAppearsAfterTheMigrationIsNotRead) {
    start();
    quit();
    storeOldHistory(oldText);
    start();
    EXPECT_EQ(historyContents(), QStringList{seedText});
    EXPECT_TRUE(defaults.contains(str("ClipboardHistory")));
}

TEST_F(ClipboardStartUp, anOldHistoryThatCannotBeReadIsGoneAfterTheFirstStart) {
    storeOldHistory("no JSON");
    start();
    EXPECT_EQ(contents(rows()), QStringList{seedText});
    EXPECT_FALSE(defaults.contains(str("ClipboardHistory")));
    EXPECT_EQ(defaults.get<bool>(str("ClipboardDBMigrated")), true);
}

TEST_F(ClipboardStartUp, anOldHistoryOfAnotherTypeIsGoneAfterTheFirstStart) {
    defaults.set(str("ClipboardHistory"), QString::fromUtf8(oldText));
    start();
    EXPECT_EQ(contents(rows()), QStringList{seedText});
    EXPECT_FALSE(defaults.contains(str("ClipboardHistory")));
}

/// The same, where a folder stands in the database's place.
class StartWithoutADatabase : public ManagerTest {
protected:
    StartWithoutADatabase() { defaults.set(str("ClipboardHistory"), oldText); }

    QString folder = folders.applicationSupport + str("/Blocked/clipboard.db");
    bool isMade = QDir().mkpath(folder);
    ClipboardDatabase unusable{folder};
};

TEST_F(StartWithoutADatabase, theOldHistoryIsLostAndTheProgramRuns) {
    ASSERT_TRUE(isMade);
    manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{time, defaults, pasteboard, workspace, catalog,
                                                                         coder, movies, loginItem, folders, unusable});
    EXPECT_FALSE(defaults.contains(str("ClipboardHistory")));
    EXPECT_EQ(defaults.get<bool>(str("ClipboardDBMigrated")), true);
    EXPECT_TRUE(manager->isMonitoring());
    copy(str("a copy"));
    EXPECT_TRUE(QFileInfo(folder).isDir());
}

TEST_F(ClipboardStartUp, withoutAnOldHistoryTheMigrationCountsAsDone) {
    start();
    EXPECT_EQ(defaults.get<bool>(str("ClipboardDBMigrated")), true);
}

TEST_F(ClipboardStartUp, theSeedIsNotMadeWhenTheOldHistoryHoldsIt) {
    QByteArray json = oldText;
    storeOldHistory(json.replace("from before", seedText.toUtf8()));
    start();
    ASSERT_EQ(contents(rows()), QStringList{seedText});
    EXPECT_FALSE(rows().front().isSaved);
}

TEST_F(ClipboardStartUp, mediaFilesAreNotTouchedByTheMigration) {
    write(imagesFolder + str("/A.jpg"));
    QByteArray json = oldText;
    json.replace("1000.5", QByteArray::number(time.now().secondsSince1970 - Date::referenceDate, 'f', 1) +
                               R"(,"imageFileName":"A.jpg")");
    storeOldHistory(json);
    start();
    EXPECT_EQ(storedImages(), QStringList{str("A.jpg")});
    EXPECT_EQ(rows().size(), 2U);
}

// Clear on restart: the machine was booted at `boot`, the program is started now.

class ClearOnRestart : public ManagerTest {
protected:
    void bootedAgo(Seconds ago) { time.setSystemUptime(ago); }
    void lastLaunchedAgo(Seconds ago) { defaults.set(str("LastLaunchDate"), time.now() - ago); }
    void switchOn() { defaults.set(str("AutoClearOnRestart"), true); }
    /// The first launch after a reboot, with a text in the history.
    void prepareToClear() {
        switchOn();
        lastLaunchedAgo(2h);
        bootedAgo(1h);
        save(str("plain"), 3h);
    }
    /// Another program lets everybody read the file and nobody write it, until it commits.
    static void hold(Outside &other) { ASSERT_TRUE(other.run("BEGIN IMMEDIATE")); }

    QString databaseFile = folders.applicationSupport + str("/Tavrine/clipboard.db");
};

TEST_F(ClearOnRestart, theFirstLaunchAfterARebootClears) {
    switchOn();
    lastLaunchedAgo(2h);
    bootedAgo(1h);
    save(str("plain"), 3h);
    save(str("Copied Image"), 3h, str("A.jpg"));
    write(imagesFolder + str("/A.jpg"));
    const ClipboardItem pinned = savePinned(str("pinned"), 3h, str("B.jpg"));
    write(imagesFolder + str("/B.jpg"));
    start();
    EXPECT_EQ(rows(), std::vector{pinned});
    EXPECT_EQ(manager->history(), std::vector{pinned});
    EXPECT_EQ(storedImages(), QStringList{str("B.jpg")});
    EXPECT_EQ(defaults.get<Date>(str("LastLaunchDate")), time.now());
}

TEST_F(ClearOnRestart, theNextLaunchClearsWhatTheFileDidNotLetGoBeforeTheEnd) {
    prepareToClear();
    Outside other(databaseFile);
    hold(other);
    {
        ClipboardDatabase ofThisLaunch(databaseFile);
        start(ofThisLaunch);
        EXPECT_TRUE(manager->history().empty());
        time.advance(1min);
        quit();
    }
    ASSERT_TRUE(other.run("COMMIT"));
    ASSERT_EQ(rows().size(), 1U);
    start();
    EXPECT_TRUE(rows().empty());
    EXPECT_EQ(defaults.get<Date>(str("LastLaunchDate")), time.now());
}

TEST_F(ClearOnRestart, aClearThatHadToWaitIsMadeOnce) {
    prepareToClear();
    const Date launch = time.now();
    Outside other(databaseFile);
    hold(other);
    start();
    EXPECT_LT(defaults.get<Date>(str("LastLaunchDate")), launch);
    ASSERT_TRUE(other.run("COMMIT"));
    time.advance(1min);
    EXPECT_TRUE(rows().empty());
    EXPECT_EQ(defaults.get<Date>(str("LastLaunchDate")), launch);
    copy(str("new"));
    quit();
    start();
    EXPECT_EQ(contents(rows()), QStringList{str("new")});
}

TEST_F(ClearOnRestart, aSecondLaunchSinceTheBootClearsNothing) {
    switchOn();
    lastLaunchedAgo(30min);
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClearOnRestart, aLaunchAtTheVeryMomentOfTheBootIsNotBeforeIt) {
    switchOn();
    lastLaunchedAgo(1h);
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClearOnRestart, aLaunchASecondBeforeTheBootClears) {
    switchOn();
    lastLaunchedAgo(1h + 1s);
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClearOnRestart, withoutAStoredDateTheFirstLaunchClears) {
    switchOn();
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClearOnRestart, aStoredDateOfAnotherTypeCountsAsAbsent) {
    switchOn();
    bootedAgo(1h);
    defaults.set(str("LastLaunchDate"), time.now().secondsSince1970);
    save(str("plain"));
    start();
    EXPECT_TRUE(rows().empty());
    EXPECT_EQ(defaults.get<Date>(str("LastLaunchDate")), time.now());
}

TEST_F(ClearOnRestart, switchedOffItOnlyNotesTheLaunch) {
    lastLaunchedAgo(2h);
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_EQ(defaults.get<Date>(str("LastLaunchDate")), time.now());
}

TEST_F(ClearOnRestart, switchedOnLaterItClearsOnlyAfterTheNextReboot) {
    lastLaunchedAgo(2h);
    bootedAgo(1h);
    save(str("plain"));
    start(); // after a reboot, with the setting off
    manager->setAutoClearOnRestart(true);
    manager->saveSettings();
    EXPECT_EQ(rows().size(), 1U) << "switching it on does not clear at once";
    quit();
    start(); // quit and started again
    EXPECT_EQ(rows().size(), 1U);
    quit();
    time.advance(1h);
    bootedAgo(1min);
    start();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClearOnRestart, anOldHistoryIsInTheDatabaseBeforeTheClear) {
    switchOn();
    bootedAgo(1h);
    defaults.set(str("ClipboardHistory"), oldText);
    start();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClearOnRestart, clearsWhilePausedToo) {
    defaults.set(str("featureClipboardHistory"), false);
    switchOn();
    bootedAgo(1h);
    save(str("plain"));
    start();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardStartUp, cleansBeforeTheHistoryIsFirstShown) {
    defaults.set(str("ClipboardMySaveSeeded"), true);
    save(str("old"), ClipboardManager::imageRetentionInterval + 1s, str("OLD.jpg"));
    start();
    EXPECT_TRUE(manager->history().empty());
    EXPECT_TRUE(rows().empty());
}

} // namespace
} // namespace tavrine
