#include "ManagerTest.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <future>

namespace tavrine {
namespace {

class ClipboardPoll : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
    }
    ExcludedApp app(const char *bundleID) { return {QUuid::createUuid(), str(bundleID), str("An application")}; }

    /// A media row that the next cleanup removes: the proof that one ran.
    void leaveSomethingToClean() { save(str("old"), ClipboardManager::imageRetentionInterval + 1s, str("OLD.jpg")); }
    [[nodiscard]] bool cleanupRan() { return !database.findDuplicate(str("OLD.jpg"), str("old")); }
};

const QStringList plainTypes{QLatin1String(pasteboardType::string)};

TEST_F(ClipboardPoll, aCopiedTextBecomesANewRow) {
    copy(str("hello"));
    ASSERT_EQ(historyContents(), QStringList{str("hello")});
    const ClipboardItem &item = manager->history().front();
    EXPECT_EQ(item.date, time.now());
    EXPECT_FALSE(item.isPinned);
    EXPECT_FALSE(item.isSaved);
    EXPECT_EQ(item.imageFileName, std::nullopt);
    EXPECT_FALSE(item.id.isNull());
    EXPECT_EQ(rows(), manager->history());
}

TEST_F(ClipboardPoll, theHistoryIsPublishedWithEachRecording) {
    QSignalSpy published(manager.get(), &ClipboardManager::historyChanged);
    copy(str("hello"));
    EXPECT_GE(published.count(), 1);
}

TEST_F(ClipboardPoll, aTickComesEveryHalfSecond) {
    pasteboard.copyFromOutside(str("hello"));
    time.advance(499ms);
    EXPECT_TRUE(manager->history().empty());
    time.advance(1ms);
    EXPECT_EQ(manager->history().size(), 1U);
    EXPECT_EQ(time.timerCount(), 1);
}

TEST_F(ClipboardPoll, anIdleTickReadsNeitherImageNorText) {
    copy(str("hello"));
    const int images = pasteboard.imageReadCount();
    const int strings = pasteboard.stringReadCount();
    time.advance(10s);
    EXPECT_EQ(pasteboard.imageReadCount(), images);
    EXPECT_EQ(pasteboard.stringReadCount(), strings);
}

TEST_F(ClipboardPoll, aTickAsksOnceForTheFrontmostApplication) {
    const int reads = workspace.frontmostReads();
    tick();
    EXPECT_EQ(workspace.frontmostReads(), reads + 1);
}

TEST_F(ClipboardPoll, copyingTheSameTextTwiceLeavesOneRowWithTheNewDateAndANewId) {
    copy(str("hello"));
    const ClipboardItem first = manager->history().front();
    copy(str("between"));
    copy(str("hello"));
    ASSERT_EQ(historyContents(), (QStringList{str("hello"), str("between")}));
    const ClipboardItem second = manager->history().front();
    EXPECT_NE(second.id, first.id);
    EXPECT_EQ(second.date, time.now());
    EXPECT_GT(second.date, first.date);
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardPoll, copyingATextThatIsPinnedAddsNothingAndKeepsItsDate) {
    const ClipboardItem pinned = savePinned(str("hello"), 100s);
    manager->reloadHistory();
    copy(str("hello"));
    EXPECT_EQ(rows(), std::vector{pinned});
    EXPECT_EQ(manager->history(), std::vector{pinned});
}

TEST_F(ClipboardPoll, copyingATextThatIsSavedAddsNothingAndKeepsItsDate) {
    const ClipboardItem saved = saveInMySaved(str("hello"), 100s);
    copy(str("hello"));
    EXPECT_EQ(rows(), std::vector{saved});
}

TEST_F(ClipboardPoll, copyingAProtectedRichTextStripsItAllTheSame) {
    const ClipboardItem pinned = savePinned(str("hello"), 100s);
    manager->setStripRichText(true);
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str("public.html")}, str("hello"));
    tick();
    EXPECT_EQ(pasteboard.types(), plainTypes);
    EXPECT_EQ(pasteboard.string(), str("hello"));
    EXPECT_EQ(rows(), std::vector{pinned});
}

TEST_F(ClipboardPoll, noCleanupFollowsACopyOfAProtectedText) {
    savePinned(str("hello"));
    leaveSomethingToClean();
    copy(str("hello"));
    EXPECT_FALSE(cleanupRan());
}

TEST_F(ClipboardPoll, trailingWhiteSpaceMakesAnotherText) {
    copy(str("hello"));
    copy(str("hello "));
    copy(str("hello\n"));
    EXPECT_EQ(historyContents(), (QStringList{str("hello\n"), str("hello "), str("hello")}));
}

TEST_F(ClipboardPoll, capitalsMakeAnotherText) {
    copy(str("hello"));
    copy(str("Hello"));
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardPoll, aTextOfWhiteSpaceIsATextLikeAnyOther) {
    copy(str("  \n\t"));
    EXPECT_EQ(historyContents(), QStringList{str("  \n\t")});
}

TEST_F(ClipboardPoll, aTextHasNoLengthLimit) {
    const QString text(5'000'000, u'x');
    copy(text);
    EXPECT_EQ(contents(rows()), QStringList{text});
}

TEST_F(ClipboardPoll, whatWasCopiedBeforeMonitoringIsNotRecorded) {
    manager->pauseMonitoring();
    pasteboard.copyFromOutside(str("while off"));
    time.advance(5s);
    manager->setPaused(false);
    manager->reloadHistory();
    manager->startMonitoring();
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
    copy(str("while on"));
    EXPECT_EQ(historyContents(), QStringList{str("while on")});
}

// Sensitive and excluded applications.

class SensitiveApplication : public ClipboardPoll, public testing::WithParamInterface<const char *> {};

TEST_P(SensitiveApplication, isNeverRecorded) {
    workspace.setFrontmost(str(GetParam()));
    copy(str("secret"));
    workspace.setFrontmost(str("org.example.editor"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty()) << "it counts as dealt with, also after switching away";
    copy(str("harmless"));
    EXPECT_EQ(historyContents(), QStringList{str("harmless")});
}

INSTANTIATE_TEST_SUITE_P(ClipboardPoll, SensitiveApplication,
                         testing::Values("com.agilebits.onepassword", "com.agilebits.onepassword7",
                                         "com.bitwarden.desktop", "com.apple.keychainaccess", "org.keepassxc.keepassxc",
                                         "co.dashlane.dashlane", "com.lastpass.LastPass"));

TEST_F(ClipboardPoll, theSensitiveApplicationsStandInTheirOrder) {
    QStringList all;
    for (const char *entry : ClipboardManager::sensitiveBundleIDs)
        all.append(str(entry));
    EXPECT_EQ(all,
              (QStringList{str("com.agilebits.onepassword"), str("com.agilebits.onepassword7"),
                           str("com.bitwarden.desktop"), str("com.apple.keychainaccess"),
                           str("org.keepassxc.keepassxc"), str("co.dashlane.dashlane"), str("com.lastpass.LastPass")}));
}

TEST_F(ClipboardPoll, anEntryCoversEveryIdentifierThatContinuesIt) {
    workspace.setFrontmost(str("com.bitwarden.desktop.helper"));
    copy(str("secret"));
    workspace.setFrontmost(str("com.agilebits.onepassword8"));
    copy(str("secret too"));
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardPoll, anIdentifierThatOnlyContainsAnEntryIsRecorded) {
    workspace.setFrontmost(str("x.com.bitwarden.desktop"));
    copy(str("one"));
    workspace.setFrontmost(str("com.bitwarden.deskto"));
    copy(str("two"));
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardPoll, capitalsCountInIdentifiers) {
    workspace.setFrontmost(str("com.lastpass.lastpass"));
    copy(str("one"));
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClipboardPoll, theUsersOwnExclusionsArePrefixesToo) {
    manager->addExcludedApp(app("org.example.bank"));
    workspace.setFrontmost(str("org.example.banking"));
    copy(str("secret"));
    EXPECT_TRUE(rows().empty());
    workspace.setFrontmost(str("org.example.Bank"));
    copy(str("harmless"));
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClipboardPoll, anExclusionThatWasRemovedRecordsAgain) {
    manager->addExcludedApp(app("org.example.bank"));
    manager->setExcludedApps({});
    workspace.setFrontmost(str("org.example.bank"));
    copy(str("text"));
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClipboardPoll, withoutAFrontmostApplicationTheTextIsRecorded) {
    manager->addExcludedApp(app("org.example.bank"));
    workspace.setFrontmost(std::nullopt);
    copy(str("one"));
    workspace.setFrontmost(str("")); // a window that names no program
    copy(str("two"));
    EXPECT_EQ(rows().size(), 2U);
}

TEST_F(ClipboardPoll, noCleanupRunsWhileASensitiveApplicationIsFrontmost) {
    leaveSomethingToClean();
    workspace.setFrontmost(str("com.bitwarden.desktop"));
    time.advance(ClipboardManager::cleanupInterval * 2);
    EXPECT_FALSE(cleanupRan());
    workspace.setFrontmost(str("org.example.editor"));
    tick();
    EXPECT_TRUE(cleanupRan());
}

// Concealed and automatic contents.

class HiddenType : public ClipboardPoll, public testing::WithParamInterface<const char *> {};

TEST_P(HiddenType, isDealtWithButNotRecordedAndNoCleanupFollows) {
    leaveSomethingToClean();
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str(GetParam())}, str("secret"), picture(4, 4));
    tick();
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_EQ(pasteboard.imageReadCount(), 0);
    EXPECT_EQ(pasteboard.stringReadCount(), 0);
    EXPECT_FALSE(cleanupRan());
    tick(); // an idle tick now, for the change has been dealt with
    EXPECT_TRUE(cleanupRan());
    EXPECT_TRUE(rows().empty());
}

INSTANTIATE_TEST_SUITE_P(ClipboardPoll, HiddenType,
                         testing::Values("org.nspasteboard.ConcealedType", "org.nspasteboard.AutoGeneratedType"));

// Images.

TEST_F(ClipboardPoll, aCopiedImageBecomesARowWithAFileOfItsOwn) {
    copy(picture(30, 20));
    ASSERT_EQ(historyContents(), QStringList{str("Copied Image")});
    const QString fileName = manager->history().front().imageFileName.value();
    EXPECT_EQ(storedImages(), QStringList{fileName});
    EXPECT_TRUE(manager->thumbnailCache().object(fileName));
}

TEST_F(ClipboardPoll, anImageComesBeforeTheTextBesideIt) {
    pasteboard.copyFromOutside(picture(30, 20), str("the text beside it"));
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("Copied Image")});
    EXPECT_EQ(pasteboard.stringReadCount(), 0);
}

TEST_F(ClipboardPoll, theSameImageTwiceGivesTwoRowsAndTwoFiles) {
    copy(picture(30, 20));
    copy(picture(30, 20));
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_EQ(storedImages().size(), 2);
}

TEST_F(ClipboardPoll, anImageThatCannotBeEncodedGivesWayToItsText) {
    coder.setSize([](double) { return std::nullopt; });
    pasteboard.copyFromOutside(picture(30, 20), str("the text beside it"));
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("the text beside it")});
}

TEST_F(ClipboardPoll, anImageThatCannotBeWrittenGivesWayToItsText) {
    write(imagesFolder, "a file where the folder should be");
    pasteboard.copyFromOutside(picture(30, 20), str("the text beside it"));
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("the text beside it")});
}

TEST_F(ClipboardPoll, anImageOfNoSizeGivesWayToItsText) {
    pasteboard.setContentsFromOutside({str("public.png"), str("public.utf8-plain-text")}, str("text"), QImage());
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("text")});
}

TEST_F(ClipboardPoll, anImageAloneThatCannotBeStoredRecordsNothingAndTheCleanupRuns) {
    leaveSomethingToClean();
    coder.setSize([](double) { return std::nullopt; });
    copy(picture(30, 20));
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(cleanupRan());
}

TEST_F(ClipboardPoll, contentsWithoutImageAndTextRecordNothingAndTheCleanupRuns) {
    leaveSomethingToClean();
    pasteboard.setContentsFromOutside({str("application/x-something")});
    tick();
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(cleanupRan());
}

TEST_F(ClipboardPoll, anEmptiedPasteboardRecordsNothing) {
    pasteboard.clearFromOutside();
    tick();
    EXPECT_TRUE(rows().empty());
}

TEST_F(ClipboardPoll, anImageRecordedDoesNotStartTheFourHoursAnew) {
    copy(picture(3, 3)); // the cleanup within adding leaves the rhythm alone
    leaveSomethingToClean();
    tick(); // so that the first idle tick cleans still
    EXPECT_TRUE(cleanupRan());
}

// Where the desktop tells of a copy.

class ToldCopy : public ClipboardPoll {
protected:
    void SetUp() override {
        ClipboardPoll::SetUp();
        pasteboard.setTellsChanges(true);
    }
    void settle() { time.advance(ClipboardManager::settlingTime); }
};

TEST_F(ToldCopy, isRecordedOnceItHasSettledAndNotWithTheNextTick) {
    pasteboard.copyFromOutside(str("hello"));
    time.advance(29ms);
    EXPECT_TRUE(manager->history().empty());
    time.advance(1ms);
    EXPECT_EQ(historyContents(), QStringList{str("hello")});
    const std::vector<ClipboardItem> recorded = rows();
    time.advance(5s);
    EXPECT_EQ(rows(), recorded) << "no tick records it again";
}

TEST_F(ToldCopy, isRecordedBesideAnotherOfTheSameHalfSecond) {
    pasteboard.copyFromOutside(str("one"));
    settle();
    pasteboard.copyFromOutside(str("two"));
    settle();
    EXPECT_EQ(historyContents(), (QStringList{str("two"), str("one")}));
}

TEST_F(ToldCopy, inTwoStepsIsOneCopy) {
    pasteboard.copyFromOutside(picture(3, 3));
    time.advance(29ms);
    pasteboard.copyFromOutside(picture(3, 3));
    time.advance(29ms);
    EXPECT_TRUE(rows().empty());
    time.advance(1ms);
    EXPECT_EQ(rows().size(), 1U);
    time.advance(5s);
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ToldCopy, withoutEndIsLeftToTheTicks) {
    for (int i = 0; i < 200; ++i) { // of which each takes 10 ms
        pasteboard.copyFromOutside(QString::number(i));
        time.advance(10ms);
    }
    EXPECT_EQ(rows().size(), 4U) << "two seconds";
}

TEST_F(ToldCopy, fourTimesBetweenTwoTicksIsHeededAndWhatFollowsIsLeftToTheNext) {
    time.advance(500ms);           // a tick
    for (int i = 0; i < 10; ++i) { // 40 ms each
        pasteboard.copyFromOutside(QString::number(i));
        time.advance(40ms);
    }
    EXPECT_EQ(rows().size(), 4U);
    time.advance(100ms);
    EXPECT_EQ(rows().size(), 5U) << "the last one, by the tick";
    pasteboard.copyFromOutside(str("after it"));
    time.advance(40ms);
    EXPECT_EQ(rows().size(), 6U);
}

TEST_F(ToldCopy, ofAnExcludedApplicationThatLeavesRightAfterItIsDropped) {
    manager->addExcludedApp(app("com.example.vault"));
    workspace.setFrontmost(str("com.example.vault"));
    pasteboard.copyFromOutside(str("secret"));
    workspace.setFrontmost(std::nullopt);
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isDroppedWhereAnExcludedApplicationIsFoundInFrontALittleLater) {
    pasteboard.copyFromOutside(str("secret"));
    workspace.setFrontmost(str("org.keepassxc.keepassxc"));
    settle();
    workspace.setFrontmost(std::nullopt);
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, thatIsConcealedIsNotRecorded) {
    pasteboard.setContentsFromOutside(plainTypes + QStringList{QLatin1String(pasteboardType::concealed)},
                                      str("secret"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isNotRecordedWhileMonitoringIsOff) {
    manager->pauseMonitoring();
    pasteboard.copyFromOutside(str("while off"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isNotRecordedByAPauseThatBeganBeforeItSettled) {
    pasteboard.copyFromOutside(str("just before"));
    manager->pauseMonitoring();
    time.advance(1s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, ofOursWaitsForTheTick) {
    pasteboard.clearContents();
    pasteboard.setString(str("mine"));
    time.advance(499ms);
    EXPECT_TRUE(rows().empty());
    time.advance(1ms);
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ToldCopy, isToldToNobodyAfterTheManagersEnd) {
    quit();
    pasteboard.copyFromOutside(str("late"));
    time.advance(1s);
    EXPECT_TRUE(rows().empty());
}

// Large copies, which are prepared on another thread.

class LargeCopy : public ClipboardPoll {
protected:
    /// One more pixel than a person's key can wait for.
    static QImage large() { return picture(500, 501); }
    /// Encoding waits from here on until `m_gate` is opened, and then gives so many bytes.
    void holdEncoding(std::optional<qsizetype> bytes = 1000) {
        coder.setSize([opened = m_gate.get_future().share(), bytes](double) {
            opened.wait();
            return bytes;
        });
    }
    std::promise<void> m_gate;
    /// The tick alone, without what it hands to the other thread.
    void pollOnce() { time.advance(ClipboardManager::pollInterval); }
};

TEST_F(LargeCopy, isRecordedWhenItIsReadyWithoutAFurtherTick) {
    const int timers = time.timerCount();
    pasteboard.copyFromOutside(large());
    pollOnce();
    EXPECT_TRUE(rows().empty()) << "the main thread went on";
    QElapsedTimer clock;
    clock.start();
    while (rows().empty() && clock.elapsed() < 5000)
        time.advance(0s);
    EXPECT_EQ(historyContents(), QStringList{str("Copied Image")});
    EXPECT_TRUE(manager->thumbnailCache().object(manager->history().front().imageFileName.value()));
    EXPECT_EQ(time.timerCount(), timers);
}

TEST_F(LargeCopy, ofAsManyPixelsAsAKeyCanWaitForIsRecordedAtOnce) {
    pasteboard.copyFromOutside(picture(500, 500));
    pollOnce();
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(LargeCopy, ofTextIsPreparedElsewhereToo) {
    pasteboard.copyFromOutside(QString(1'000'000, u'x'));
    pollOnce();
    EXPECT_EQ(rows().size(), 1U);
    pasteboard.copyFromOutside(QString(1'000'001, u'y'));
    pollOnce();
    EXPECT_EQ(manager->history().size(), 1U);
    manager->finishRecording();
    EXPECT_EQ(manager->history().size(), 2U);
}

TEST_F(LargeCopy, isRecordedBeforeACopyThatFollowsIt) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    pasteboard.copyFromOutside(str("the next"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty()) << "no copy is recorded before the one before it";
    m_gate.set_value();
    manager->finishRecording();
    tick();
    EXPECT_EQ(historyContents(), (QStringList{str("the next"), str("Copied Image")}));
}

TEST_F(LargeCopy, ofATextThatIsThereBringsItsRowToTheTop) {
    const QString large(1'000'001, u'x');
    copy(large);
    const QUuid id = rows().front().id;
    copy(str("between"));
    copy(large);
    ASSERT_EQ(contents(rows()), (QStringList{large, str("between")}));
    EXPECT_NE(rows().front().id, id);
}

TEST_F(LargeCopy, ofAProtectedTextAddsNothing) {
    const QString large(1'000'001, u'x');
    const ClipboardItem pinned = savePinned(large, 5s);
    copy(large);
    EXPECT_EQ(rows(), std::vector{pinned});
}

TEST_F(LargeCopy, whatIsCopiedMeanwhileIsRecordedBehindItInItsOrder) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    for (const char *each : {"one", "two", "three"}) {
        pasteboard.copyFromOutside(str(each));
        pollOnce();
    }
    m_gate.set_value();
    manager->finishRecording();
    EXPECT_EQ(historyContents(), (QStringList{str("three"), str("two"), str("one"), str("Copied Image")}));
}

TEST_F(LargeCopy, theLineBehindItIsBounded) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    for (int i = 0; i < 3; ++i) {
        pasteboard.copyFromOutside(QString(2'000'000, QChar(u'a' + i)));
        pollOnce();
    }
    for (int i = 0; i < 40; ++i) {
        pasteboard.copyFromOutside(QString::number(i));
        pollOnce();
    }
    m_gate.set_value();
    manager->finishRecording();
    ASSERT_EQ(rows().size(), 33U);
    EXPECT_EQ(rows().front().content, str("39")) << "the newest always has its place";
    EXPECT_EQ(rows()[30].content.front(), QChar(u'c'));
    EXPECT_EQ(rows()[31].content.front(), QChar(u'a')) << "of large ones two stand in line";
}

TEST_F(LargeCopy, isReadAsItStoodWhenItWasSeen) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    pasteboard.clearFromOutside();
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("Copied Image")});
}

TEST_F(LargeCopy, thatIsUnderWayGoesWithTheHistoryThatIsCleared) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    manager->clearHistory();
    tick();
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(storedImages().empty());
}

TEST_F(LargeCopy, thatIsUnderWayIsRecordedThoughMonitoringPauses) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    manager->pauseMonitoring();
    manager->finishRecording();
    ASSERT_EQ(contents(rows()), QStringList{str("Copied Image")});
    EXPECT_TRUE(manager->history().empty());
    EXPECT_FALSE(manager->thumbnailCache().object(rows().front().imageFileName.value()));
}

TEST_F(LargeCopy, thatIsUnderWayAtTheEndLeavesNoFile) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    quit();
    EXPECT_TRUE(storedImages().empty());
    time.advance(1s); // nobody is there to be told
}

TEST_F(LargeCopy, ofRichTextIsNotStrippedWhereATickHasSeenAnotherCopyAlready) {
    manager->setStripRichText(true);
    holdEncoding(std::nullopt);
    const QStringList types = plainTypes + QStringList{str("public.html"), str("public.png")};
    pasteboard.setContentsFromOutside(types, str("older"), large());
    pollOnce();
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str("public.html")}, str("newer"));
    pollOnce();
    m_gate.set_value();
    manager->finishRecording();
    EXPECT_EQ(pasteboard.string(), str("newer"));
    EXPECT_EQ(pasteboard.clearCount(), 1) << "it is stripped itself";
    EXPECT_EQ(historyContents(), (QStringList{str("newer"), str("older")}));
}

TEST_F(LargeCopy, ofRichTextIsNotStrippedWhereAnotherCopyHasFollowed) {
    manager->setStripRichText(true);
    const QStringList types = plainTypes + QStringList{str("public.html")};
    pasteboard.setContentsFromOutside(types, QString(2'000'000, u'x'));
    pollOnce();
    pasteboard.setContentsFromOutside(types, str("newer"));
    manager->finishRecording();
    EXPECT_EQ(pasteboard.string(), str("newer"));
    EXPECT_EQ(pasteboard.clearCount(), 0);
    tick();
    EXPECT_EQ(pasteboard.types(), plainTypes);
}

// Rich text.

class RichType : public ClipboardPoll, public testing::WithParamInterface<const char *> {};

TEST_P(RichType, isReplacedByPlainTextAndNotRecordedTwice) {
    manager->setStripRichText(true);
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str(GetParam())}, str("hello"));
    tick();
    EXPECT_EQ(pasteboard.types(), plainTypes);
    EXPECT_EQ(pasteboard.string(), str("hello"));
    EXPECT_EQ(pasteboard.clearCount(), 1);
    ASSERT_EQ(rows().size(), 1U);
    const ClipboardItem recorded = rows().front();
    time.advance(5s);
    EXPECT_EQ(rows(), std::vector{recorded});
}

INSTANTIATE_TEST_SUITE_P(ClipboardPoll, RichType,
                         testing::Values("public.rtf", "public.html", "com.apple.flat-rtfd", "com.apple.webarchive"));

TEST_F(ClipboardPoll, aPlainStringIsLeftUntouchedByTheStrip) {
    manager->setStripRichText(true);
    copy(str("hello"));
    EXPECT_EQ(pasteboard.clearCount(), 0);
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ClipboardPoll, aCopyMadeWhileAnOlderOneIsRecordedIsNotStrippedAwayWithIt) {
    manager->setStripRichText(true);
    // Publishing the older copy takes a moment, and meanwhile somebody copies again.
    const auto once = QObject::connect(manager.get(), &ClipboardManager::historyChanged, manager.get(), [this] {
        if (manager->history().size() == 1)
            pasteboard.setContentsFromOutside(plainTypes + QStringList{str("public.html")}, str("newer"));
    });
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str("public.html")}, str("older"));
    tick();
    QObject::disconnect(once);
    EXPECT_EQ(pasteboard.string(), str("newer"));
    tick();
    EXPECT_EQ(historyContents(), (QStringList{str("newer"), str("older")}));
}

TEST_F(ClipboardPoll, richTextIsLeftUntouchedWhenTheStripIsOff) {
    const QStringList types = plainTypes + QStringList{str("public.html")};
    pasteboard.setContentsFromOutside(types, str("hello"));
    tick();
    EXPECT_EQ(pasteboard.types(), types);
    EXPECT_EQ(pasteboard.clearCount(), 0);
}

// The rhythm of the cleanup.

TEST_F(ClipboardPoll, theFirstIdleTickAfterStartUpCleans) {
    leaveSomethingToClean();
    tick();
    EXPECT_TRUE(cleanupRan());
    EXPECT_TRUE(manager->history().empty());
}

TEST_F(ClipboardPoll, anIdleTickCleansAgainFourHoursAfterTheLastCleanup) {
    tick();
    leaveSomethingToClean();
    time.advance(ClipboardManager::cleanupInterval - 500ms);
    EXPECT_FALSE(cleanupRan());
    tick();
    EXPECT_TRUE(cleanupRan());
}

TEST_F(ClipboardPoll, aCopiedTextStartsTheFourHoursAnew) {
    tick();
    time.advance(2h);
    copy(str("hello"));
    leaveSomethingToClean();
    time.advance(ClipboardManager::cleanupInterval - 500ms);
    EXPECT_FALSE(cleanupRan());
    tick();
    EXPECT_TRUE(cleanupRan());
}

TEST_F(ClipboardPoll, aCleanupThatRemovedSomethingIsSeenInTheHistory) {
    leaveSomethingToClean();
    manager->reloadHistory();
    ASSERT_EQ(manager->history().size(), 1U);
    tick();
    EXPECT_TRUE(manager->history().empty());
}

TEST_F(ClipboardPoll, aCleanupThatRemovedNothingPublishesNothing) {
    QSignalSpy published(manager.get(), &ClipboardManager::historyChanged);
    tick();
    EXPECT_EQ(published.count(), 0);
}

} // namespace
} // namespace tavrine
