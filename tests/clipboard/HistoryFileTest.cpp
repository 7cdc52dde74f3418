#include "DatabaseFixture.h"
#include "base/PrivateFiles.h"
#include "support/ReadOnlyFolder.h"

#include <QDir>
#include <QElapsedTimer>

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

} // namespace
} // namespace tavrine
