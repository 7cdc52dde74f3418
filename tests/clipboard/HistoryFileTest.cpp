#include "DatabaseFixture.h"
#include "FullDisk.h"
#include "base/PrivateFiles.h"
#include "support/ReadOnlyFolder.h"

#include <QDir>
#include <QElapsedTimer>

#include <chrono>
#include <limits>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

// What happens to the file while the program runs, and what it finds there at its start.

class HistoryFileTest : public DatabaseFixture {
protected:
    static constexpr qint64 everything = std::numeric_limits<qint64>::max();

    static QString str(const char *text) { return QString::fromUtf8(text); }
    /// What another program finds in the file at the path.
    QStringList stored() {
        Outside outside(path);
        QStringList found;
        for (const std::string &content : outside.values("SELECT content FROM items ORDER BY date DESC"))
            found.append(QString::fromStdString(content));
        return found;
    }
    static QStringList shown(ClipboardDatabase &db) { return contents(db.loadProtectedAndRecent({}, 100)); }
    /// A database elsewhere with one row.
    QString another() {
        const QString place = folder.filePath(str("other/copy.db"));
        ClipboardDatabase(place).save(text(str("of the copy"), 50));
        return place;
    }
    void breakHeader() {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.write(QByteArray("this was a database once").repeated(10));
    }
    [[nodiscard]] QStringList setAside() const {
        return QFileInfo(path).dir().entryList({str("clipboard.db.unreadable-*")}, QDir::Files);
    }
    /// The rest runs in less than this, or it waited in vain again.
    static constexpr qint64 oneWaitMs = 1000;
};

TEST_F(HistoryFileTest, whatIsCopiedAfterTheFileWasRemovedIsInTheNewFile) {
    ClipboardDatabase db(path);
    db.save(text(str("before"), 1));
    EXPECT_EQ(shown(db), QStringList{str("before")});
    ASSERT_TRUE(QFile::remove(path));
    db.save(text(str("after"), 2));
    EXPECT_EQ(stored(), QStringList{str("after")});
    EXPECT_EQ(shown(db), QStringList{str("after")});
}

TEST_F(HistoryFileTest, aFolderThatWasRemovedIsMadeAgain) {
    ClipboardDatabase db(path);
    db.save(text(str("before"), 1));
    ASSERT_TRUE(QFileInfo(path).dir().removeRecursively());
    db.save(text(str("after"), 2));
    EXPECT_EQ(stored(), QStringList{str("after")});
}

TEST_F(HistoryFileTest, aFileThatIsMovedOverIsTheHistoryFromThenOn) {
    ClipboardDatabase db(path);
    db.save(text(str("before"), 1));
    EXPECT_EQ(shown(db), QStringList{str("before")});
    ASSERT_EQ(std::rename(QFile::encodeName(another()).constData(), QFile::encodeName(path).constData()), 0);
    EXPECT_EQ(shown(db), QStringList{str("of the copy")});
    EXPECT_EQ(contents(db.search(str("before"), 10)), QStringList());
    EXPECT_EQ(contents(db.search(str("copy"), 10)), QStringList{str("of the copy")});
    db.save(text(str("after"), 60));
    EXPECT_EQ(stored(), (QStringList{str("after"), str("of the copy")}));
}

TEST_F(HistoryFileTest, aFileThatIsRestoredInItsPlaceIsReadAnew) {
    ClipboardDatabase db(path);
    for (int i = 0; i < 5; ++i)
        db.save(text(str("before"), i));
    (void)shown(db);
    QFile copy(another());
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)); // in place, as cp does
    ASSERT_GT(file.write(copy.readAll()), 0);
    file.close();
    EXPECT_EQ(shown(db), QStringList{str("of the copy")});
    db.save(text(str("after"), 60));
    EXPECT_EQ(stored(), (QStringList{str("after"), str("of the copy")}));
}

TEST_F(HistoryFileTest, aHeldFileIsWaitedForOnceAndItsRowsAreWrittenInOrderAfterwards) {
    ClipboardDatabase db(path);
    db.save(text(str("before"), 1));
    (void)shown(db);
    Outside other(path);
    ASSERT_TRUE(other.run("BEGIN EXCLUSIVE"));
    QElapsedTimer timer;
    timer.start();
    db.save(text(str("first"), 2));
    EXPECT_GE(timer.elapsed(), oneWaitMs - 50);
    timer.start();
    db.save(text(str("second"), 3));
    (void)db.findDuplicate({}, str("third"));
    (void)db.prune(true, Date{0}, {});
    (void)db.search(str("f"), 10);
    (void)db.counts();
    EXPECT_EQ(shown(db), (QStringList{str("second"), str("first"), str("before")})); // from memory
    EXPECT_LT(timer.elapsed(), oneWaitMs);
    ASSERT_TRUE(other.run("COMMIT"));
    (void)shown(db);
    EXPECT_EQ(stored(), (QStringList{str("second"), str("first"), str("before")}));
    ASSERT_TRUE(other.run("BEGIN EXCLUSIVE")); // and then another wait is due
    timer.start();
    (void)db.findDuplicate({}, str("third"));
    EXPECT_GE(timer.elapsed(), oneWaitMs - 50);
}

TEST_F(HistoryFileTest, aHistoryIsBegunOnceTheDiskCanBeWritten) {
    ASSERT_TRUE(makePrivateFolder(QFileInfo(path).path()));
    std::optional<ClipboardDatabase> db;
    {
        const ReadOnlyFolder readOnly(QFileInfo(path).path());
        db.emplace(path);
        db->save(text(str("meanwhile"), 1));
        EXPECT_EQ(shown(*db), QStringList{str("meanwhile")});
    }
    db->save(text(str("afterwards"), 2));
    EXPECT_EQ(stored(), (QStringList{str("afterwards"), str("meanwhile")}));
}

TEST_F(HistoryFileTest, aFileThatIsNoDatabaseIsSetAsideAndAnotherBegun) {
    ClipboardDatabase(path).save(text(str("before"), 1));
    breakHeader();
    ClipboardDatabase db(path);
    db.save(text(str("after"), 2));
    EXPECT_EQ(stored(), QStringList{str("after")});
    ASSERT_EQ(setAside().size(), 1);
    QFile kept(QFileInfo(path).dir().filePath(setAside().front()));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_TRUE(kept.readAll().startsWith("this was a database once"));
}

TEST_F(HistoryFileTest, aFileThatStopsToBeADatabaseLosesNoCopy) {
    ClipboardDatabase db(path);
    db.save(text(str("before"), 1));
    (void)shown(db);
    breakHeader();
    db.save(text(str("after"), 2));
    EXPECT_EQ(stored(), QStringList{str("after")});
    EXPECT_EQ(setAside().size(), 1);
}

// What waits to be written, in what people ask for.

class WaitingRows : public HistoryFileTest {
protected:
    /// Everybody may read the file, and nobody write it: as on a disk that is mounted for reading. To the end.
    void takeWritingAway() {
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        m_readOnly.emplace(QFileInfo(path).path());
    }
    void giveWritingBack() {
        m_readOnly.reset();
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    }
    /// A text that lists cut, with `end` behind what they hold of it.
    static QString longText(const char *end) { return QString(5000, QLatin1Char('x')) + str(end); }
    using Clearing = ClipboardDatabase::Clearing;
    ClipboardDatabase db{path};

private:
    std::optional<ReadOnlyFolder> m_readOnly;
};

TEST_F(WaitingRows, areFoundWhereTheDiskTakesNothing) {
    db.save(text(str("foo of old"), 1));
    db.save(flagged(text(str("pinned foo"), 2), true, false));
    takeWritingAway();
    db.record(text(str("Foo"), 3));
    db.record(text(str("bar"), 4));
    EXPECT_EQ(contents(db.search(str("foo"), 10)), (QStringList{str("pinned foo"), str("Foo"), str("foo of old")}));
    EXPECT_EQ(contents(db.search(str("foo"), 2)), (QStringList{str("pinned foo"), str("Foo")}));
    giveWritingBack();
    EXPECT_EQ(contents(db.search(str("foo"), 10)), (QStringList{str("pinned foo"), str("Foo"), str("foo of old")}));
}

TEST_F(WaitingRows, areNotFoundByWhatTheyWereBefore) {
    ClipboardItem changed = text(str("before"), 1);
    const ClipboardItem removed = text(str("removed before"), 2);
    db.save(changed);
    db.save(removed);
    takeWritingAway();
    changed.content = str("after");
    db.save(changed);
    db.remove(removed.id);
    EXPECT_EQ(contents(db.search(str("before"), 10)), QStringList());
    EXPECT_EQ(contents(db.search(str("after"), 10)), QStringList{str("after")});
}

TEST_F(WaitingRows, ofLongTextsAreFoundBehindTheirBeginning) {
    takeWritingAway();
    db.record(text(longText("needle"), 1));
    const auto shown = db.loadProtectedAndRecent({}, 10);
    ASSERT_EQ(shown.size(), 1U);
    ASSERT_TRUE(shown.front().cut);
    EXPECT_EQ(db.search(str("NEEDLE"), 10), shown);
    EXPECT_TRUE(db.search(str("thread"), 10).empty());
    const auto filtered = db.beginFilter(shown, str("NEEDLE"), [] {});
    EXPECT_EQ(filtered->take(std::chrono::seconds(10)), shown);
    const auto none = db.beginFilter(shown, str("thread"), [] {});
    EXPECT_EQ(none->take(std::chrono::seconds(10)), std::vector<ClipboardItem>());
}

TEST_F(WaitingRows, areCounted) {
    ClipboardItem pinned = flagged(text(str("pinned"), 1), true, false);
    const ClipboardItem removed = image(str("removed.jpg"), 2);
    db.save(pinned);
    db.save(removed);
    db.save(text(str("plain"), 3));
    takeWritingAway();
    db.record(image(str("new.jpg"), 4));
    db.record(text(str("new"), 5));
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{5, 1, 2}));
    db.remove(removed.id);
    pinned.isPinned = false;
    db.save(pinned);
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{4, 0, 1}));
    (void)db.clearUnprotected();
    EXPECT_EQ(db.counts(), ClipboardDatabase::Counts());
    giveWritingBack();
    EXPECT_EQ(db.counts(), ClipboardDatabase::Counts());
    EXPECT_EQ(stored(), QStringList());
}

TEST_F(WaitingRows, thatAreProtectedOutliveAClear) {
    db.save(flagged(image(str("kept.jpg"), 1), true, false));
    db.save(image(str("gone.jpg"), 2));
    takeWritingAway();
    db.record(flagged(image(str("new and kept.jpg"), 3), false, true));
    db.record(image(str("new.jpg"), 4));
    EXPECT_EQ(db.clearUnprotected(), QStringList{str("new.jpg")});
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{2, 1, 2}));
    EXPECT_EQ(db.loadProtectedAndRecent({}, 10).size(), 2U);
    EXPECT_TRUE(db.search(str("gone"), 10).empty());
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::waits, {}}));
    giveWritingBack();
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {str("gone.jpg")}}));
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {}})) << "they are told once";
    EXPECT_EQ(db.counts(), (ClipboardDatabase::Counts{2, 1, 2}));
    EXPECT_EQ(stored().size(), 2);
}

TEST_F(WaitingRows, keepAFileThatIsNamedLikeAClearedOne) {
    db.save(image(str("Demo.mp4"), 1));
    db.save(image(str("gone.jpg"), 2));
    Outside other(path);
    ASSERT_TRUE(other.run("BEGIN IMMEDIATE"));
    EXPECT_EQ(db.clearUnprotected(), QStringList());
    db.record(image(str("Demo.mp4"), 3));
    ASSERT_TRUE(other.run("COMMIT"));
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {str("gone.jpg")}}));
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(WaitingRows, keepTheFileOfAClearedCopyWhoseNameAnotherOfThemHas) {
    takeWritingAway();
    db.record(image(str("Demo.mp4"), 1));
    db.save(flagged(image(str("Demo.mp4"), 2), true, false));
    db.record(image(str("gone.jpg"), 3));
    EXPECT_EQ(db.clearUnprotected(), QStringList{str("gone.jpg")});
    giveWritingBack();
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {}}));
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(WaitingRows, leaveTheFilesOfAClearToALaterLookWhileTheFileCannotBeRead) {
    (void)shown(db);
    Outside other(path);
    ASSERT_TRUE(other.run("BEGIN EXCLUSIVE"));
    db.record(image(str("new.jpg"), 1));
    EXPECT_EQ(db.clearUnprotected(), QStringList()) << "a row of the file may name it as well";
    ASSERT_TRUE(other.run("COMMIT"));
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {str("new.jpg")}}));
}

TEST_F(WaitingRows, areNotCalledClearedWhereTheFileRefusesTheClearForGood) {
    db.save(image(str("kept.jpg"), 1));
    Outside other(path);
    ASSERT_TRUE(other.run("CREATE TRIGGER refusal BEFORE DELETE ON items BEGIN SELECT RAISE(ABORT, 'no'); END"));
    EXPECT_EQ(db.clearUnprotected(), QStringList());
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::failed, {}}));
    EXPECT_EQ(stored().size(), 1);
    ASSERT_TRUE(other.run("DROP TRIGGER refusal"));
    EXPECT_EQ(db.clearUnprotected(), QStringList{str("kept.jpg")});
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {}}));
}

TEST_F(WaitingRows, leaveTheirFilesFirstWhereTheDiskHasNoRoomForTheClear) {
    db.save(flagged(image(str("shared.jpg"), 1), true, false));
    db.save(image(str("shared.jpg"), 2));
    db.save(image(str("Demo.mp4"), 3));
    db.save(image(str("gone.jpg"), 4));
    {
        const FullDisk disk;
        EXPECT_EQ(db.clearUnprotected(), QStringList());
        db.record(image(str("Demo.mp4"), 5));
        EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::waits, {str("gone.jpg")}}));
        EXPECT_EQ(stored().size(), 4);
    }
    EXPECT_EQ(db.finishClear().state, Clearing::State::done);
    EXPECT_EQ(stored().size(), 2);
}

TEST_F(WaitingRows, keepTheirFilesWhereTheClearWaitsForAnythingButRoom) {
    db.save(image(str("gone.jpg"), 1));
    takeWritingAway();
    EXPECT_EQ(db.clearUnprotected(), QStringList());
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::waits, {}}));
    giveWritingBack();
    EXPECT_EQ(db.finishClear(), (Clearing{Clearing::State::done, {str("gone.jpg")}}));
}

TEST_F(WaitingRows, thatLostTheirProtectionBeforeAClearGoWithIt) {
    ClipboardItem item = flagged(text(str("was pinned"), 1), true, false);
    db.save(item);
    takeWritingAway();
    item.isPinned = false;
    db.save(item);
    (void)db.clearUnprotected();
    EXPECT_EQ(shown(db), QStringList());
    giveWritingBack();
    EXPECT_EQ(shown(db), QStringList());
    EXPECT_EQ(stored(), QStringList());
}

TEST_F(WaitingRows, thatComeAfterAClearOutliveIt) {
    db.save(text(str("cleared"), 1));
    ClipboardItem unpinned = flagged(text(str("unpinned afterwards"), 2), true, false);
    takeWritingAway();
    db.record(unpinned);
    (void)db.clearUnprotected();
    db.record(text(str("new"), 3));
    unpinned.isPinned = false;
    db.save(unpinned);
    const QStringList left{str("new"), str("unpinned afterwards")};
    EXPECT_EQ(shown(db), left);
    giveWritingBack();
    EXPECT_EQ(shown(db), left);
    EXPECT_EQ(stored(), left);
}

TEST_F(WaitingRows, thatAreClearedAreNobodysDuplicates) {
    ClipboardItem item = flagged(text(str("text"), 1), true, false);
    db.save(item);
    takeWritingAway();
    item.isPinned = false;
    item.content = str("changed text");
    db.save(item);
    EXPECT_TRUE(db.findDuplicate({}, item.content));
    (void)db.clearUnprotected();
    EXPECT_EQ(db.findDuplicate({}, item.content), std::nullopt);
}

} // namespace
} // namespace tavrine
