#include "ManagerTest.h"

#include <QSignalSpy>

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

TEST_F(ClipboardPoll, nothingIsRecordedWhileTheDesktopDoesNotTellWhoIsInFront) {
    workspace.setFrontmost(str("org.example.editor"));
    workspace.setAnswers(false);
    workspace.setFrontmost(str("org.keepassxc.keepassxc"));
    copy(str("secret"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
    workspace.setAnswers(true);
    time.advance(5s);
    workspace.setFrontmost(str("org.example.editor"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty()) << "it counts as dealt with";
}

TEST_F(ClipboardPoll, anOrdinaryCopyIsRecordedOnceTheDesktopTellsWhoIsInFront) {
    workspace.setFrontmost(str("org.example.editor"));
    workspace.setAnswers(false);
    copy(str("text"));
    EXPECT_TRUE(rows().empty());
    workspace.setAnswers(true);
    time.advance(500ms);
    EXPECT_EQ(historyContents(), QStringList{str("text")});
}

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

/// A program as a session tells it: by the first of its names.
class ExcludedProgram : public ClipboardPoll {
protected:
    [[nodiscard]] bool isRecordedInFrontOf(const QStringList &names) {
        workspace.setFrontmost(RunningApplication{
            .bundleIdentifier = names.constFirst(), .localizedName = names.constFirst(), .names = names});
        const auto before = rows().size();
        copy(str("copy %1").arg(++m_copies));
        return rows().size() > before;
    }

private:
    int m_copies = 0;
};

TEST_F(ExcludedProgram, isOneHoweverItsToolkitSpellsItsName) {
    manager->addExcludedApp(app("thunar"));
    EXPECT_FALSE(isRecordedInFrontOf({str("Thunar"), str("thunar")}));
    EXPECT_FALSE(isRecordedInFrontOf({str("org.xfce.Thunar"), str("THUNAR")})) << "any of its names is enough";
    EXPECT_TRUE(isRecordedInFrontOf({str("Thunar-volman"), str("org.xfce.thunar")})) << "but the whole of it";
    EXPECT_TRUE(isRecordedInFrontOf({str("thuna"), QString()}));
}

TEST_F(ExcludedProgram, isOneByTheNamesThatItsFileGivesTheStoredOne) {
    catalog.call(str("debian-xterm"), {str("XTerm")});
    manager->addExcludedApp(app("debian-xterm"));
    EXPECT_FALSE(isRecordedInFrontOf({str("XTerm"), str("xterm")}));
    EXPECT_TRUE(isRecordedInFrontOf({str("UXTerm"), str("uxterm")}));
}

TEST_F(ExcludedProgram, isOneByTheNamesThatItsFileGivesItsWindows) {
    catalog.call(str("org.flameshot.Flameshot"), {str("flameshot")});
    manager->addExcludedApp(app("flameshot"));
    EXPECT_FALSE(isRecordedInFrontOf({str("org.flameshot.Flameshot")}));
    EXPECT_TRUE(isRecordedInFrontOf({str("org.example.Flameshot")}));
}

TEST_F(ExcludedProgram, isOneFromTheMomentOfItsExclusionToItsEnd) {
    EXPECT_TRUE(isRecordedInFrontOf({str("Thunar")}));
    manager->addExcludedApp(app("thunar"));
    EXPECT_FALSE(isRecordedInFrontOf({str("Thunar")}));
    manager->setExcludedApps({});
    EXPECT_TRUE(isRecordedInFrontOf({str("Thunar")}));
}

TEST_F(ExcludedProgram, isLookedForInFilesWhenAnotherComesToTheFrontAndNotAtEachTick) {
    manager->addExcludedApp(app("thunar"));
    ASSERT_TRUE(isRecordedInFrontOf({str("Editor")}));
    const int before = catalog.otherNamesReads();
    EXPECT_GT(before, 0);
    time.advance(10s);
    EXPECT_EQ(catalog.otherNamesReads(), before);
    ASSERT_TRUE(isRecordedInFrontOf({str("Terminal")}));
    EXPECT_GT(catalog.otherNamesReads(), before);
}

TEST_F(ExcludedProgram, isLookedForInItsOwnFilesOnceHoweverManyAreExcluded) {
    for (const char *each : {"thunar", "gimp", "firefox"})
        manager->addExcludedApp(app(each));
    const int before = catalog.otherNamesReads();
    EXPECT_FALSE(manager->isExcluded(
        {.bundleIdentifier = str("Editor"), .localizedName = str("Editor"), .names = {str("Editor"), str("editor")}}));
    EXPECT_EQ(catalog.otherNamesReads() - before, 2 + 3) << "its two names, and the three that are excluded";
}

TEST_F(ExcludedProgram, isLookedForInNoFilesWhereItsIdentifierIsExcluded) {
    for (const char *each : {"thunar", "org.example"})
        manager->addExcludedApp(app(each));
    const int before = catalog.otherNamesReads();
    EXPECT_TRUE(manager->isExcluded({.bundleIdentifier = str("org.example.bank"),
                                     .localizedName = str("Bank"),
                                     .names = {str("org.example.bank")}}));
    EXPECT_EQ(catalog.otherNamesReads(), before);
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
