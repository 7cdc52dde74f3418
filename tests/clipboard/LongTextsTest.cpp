#include "DatabaseFixture.h"
#include "clipboard/CutText.h"

#include <numeric>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

// Texts of which lists hold the beginning alone.

QString str(const char *text) {
    return QString::fromUtf8(text);
}

QString longText(const QString &end = {}) {
    return QStringLiteral("first line\n") + QString(200'000, QLatin1Char('x')) + end;
}

class LongTexts : public DatabaseFixture {
protected:
    ClipboardDatabase db{path};

    ClipboardItem saved(const QString &content, double date) {
        ClipboardItem item = text(content, date);
        db.save(item);
        return item;
    }
    /// On a connection that has nothing in memory.
    std::vector<ClipboardItem> loadedAnew() { return ClipboardDatabase(path).loadProtectedAndRecent({}, 100); }
};

TEST_F(LongTexts, aListHoldsTheirBeginningAndTheirLength) {
    (void)db.loadProtectedAndRecent({}, 100);
    saved(longText(), 1);
    for (const auto &items : {db.loadProtectedAndRecent({}, 100), loadedAnew(), db.search(str("first"), 10)}) {
        ASSERT_EQ(items.size(), 1U);
        EXPECT_LE(items.front().content.size(), 1024);
        EXPECT_TRUE(longText().startsWith(items.front().content));
        ASSERT_TRUE(items.front().cut);
        EXPECT_EQ(items.front().cut->wholeBytes, longText().size());
    }
}

TEST_F(LongTexts, memoryAndTheFileSayTheSameOfThem) {
    (void)db.loadProtectedAndRecent({}, 100);
    saved(longText(), 1);
    saved(longText(str(" a@b")), 2);
    saved(str("https://example.com/") + QString(5000, QLatin1Char('y')), 3);
    saved(QString(3000, QChar(0x00E4)), 4);
    EXPECT_EQ(db.loadProtectedAndRecent({}, 100), loadedAnew());
}

TEST_F(LongTexts, whatIsLaterThanTheBeginningIsKnownOfThem) {
    saved(str("https://example.com/") + QString(5000, QLatin1Char('y')), 1);
    saved(longText(str("@")), 2);
    const auto items = db.loadProtectedAndRecent({}, 100);
    EXPECT_TRUE(items[0].cut->hasAt);
    EXPECT_FALSE(items[0].cut->isLink);
    EXPECT_FALSE(items[1].cut->hasAt);
    EXPECT_TRUE(items[1].cut->isLink);
}

TEST_F(LongTexts, aTextOfTheLongestWholeLengthStaysWholeAndOneByteMoreDoesNot) {
    saved(QString(static_cast<qsizetype>(longestWholeText), QLatin1Char('x')), 2);
    saved(QString(static_cast<qsizetype>(longestWholeText) + 1, QLatin1Char('x')), 1);
    const auto items = db.loadProtectedAndRecent({}, 100);
    EXPECT_FALSE(items[0].cut);
    EXPECT_TRUE(items[1].cut);
}

TEST_F(LongTexts, theWholeIsHadByItsItem) {
    saved(longText(str("end")), 1);
    const ClipboardItem item = loadedAnew().front();
    EXPECT_EQ(db.wholeText(item), longText(str("end")));
    db.remove(item.id);
    EXPECT_EQ(db.wholeText(item), std::nullopt);
}

TEST_F(LongTexts, savingACutItemKeepsTheWhole) {
    saved(longText(str("end")), 1);
    ClipboardItem item = loadedAnew().front();
    item.isPinned = true;
    db.save(item);
    EXPECT_TRUE(loadedAnew().front().isPinned);
    EXPECT_EQ(db.loadAll({}, 10).front().content, longText(str("end")));
    db.remove(item.id);
    db.save(item); // its text is gone, and the beginning is not taken for it
    EXPECT_EQ(db.counts().total, 0);
}

TEST_F(LongTexts, theWholeIsSearched) {
    saved(longText(str("needle")), 1);
    saved(longText(), 2);
    for (ClipboardDatabase *each : {&db})
        EXPECT_EQ(each->search(str("NEEDLE"), 10).size(), 1U);
    ClipboardDatabase cold(path);
    EXPECT_EQ(cold.search(str("needle"), 10).size(), 1U);
    EXPECT_EQ(cold.search(str("xx"), 10).size(), 2U);
}

TEST_F(LongTexts, aTextThatDoesNotContainTheQueryAsPeopleReadItIsNotFound) {
    saved(longText(str("cafe") + QChar(0x0301)), 1); // the accent belongs to the e
    saved(longText(str("cafe!")), 2);
    EXPECT_EQ(db.search(str("cafe"), 10).size(), 1U);
}

TEST_F(LongTexts, theCutFallsBetweenCharactersAndNotBeforeAnAccent) {
    const QByteArray accented = QByteArray(1023, 'x') + "e" + QByteArray("\xCC\x81") + QByteArray(3000, 'x');
    EXPECT_EQ(beginningOf({accented.constData(), static_cast<std::size_t>(accented.size())})->text,
              QByteArray(1023, 'x'));
    const QByteArray wide = QByteArray(1023, 'x') + QByteArray("\xC3\xA4") + QByteArray(3000, 'x');
    EXPECT_EQ(beginningOf({wide.constData(), static_cast<std::size_t>(wide.size())})->text, QByteArray(1023, 'x'));
}

TEST_F(LongTexts, aRowThatItsItemDoesNotReachStaysWhole) {
    Outside outside(path);
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('no uuid','" + longText().toStdString() + "',1,0,0,NULL)"));
    EXPECT_FALSE(loadedAnew().front().cut);
    EXPECT_EQ(loadedAnew().front().content, longText());
}

TEST_F(LongTexts, aDuplicateIsFoundByTheWhole) {
    const ClipboardItem item = saved(longText(str("1")), 1);
    saved(longText(str("2")), 2);
    EXPECT_EQ(db.findDuplicate({}, longText(str("1")))->id, item.id);
    EXPECT_EQ(db.findDuplicate({}, longText(str("3"))), std::nullopt);
}

TEST_F(LongTexts, wherePeopleCopiedALotALoadReadsNoMoreRowsThanAListShows) {
    Outside outside(path);
    const std::string rows = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<600) ";
    ASSERT_TRUE(outside.run("INSERT INTO items(id,content,date) " + rows +
                            "SELECT printf('00000000-0000-4000-8000-%012d',i), printf('%.*c',40000,'x'), i FROM n"));
    ClipboardDatabase cold(path);
    EXPECT_EQ(cold.loadProtectedAndRecent({}, 200).size(), 200U);
    SqlTrace trace; // of connections opened from now on, and so of every further load
    EXPECT_EQ(cold.loadProtectedAndRecent({}, 250).size(), 250U);
    EXPECT_THAT(trace.texts, testing::IsEmpty());
    EXPECT_EQ(cold.loadProtectedAndRecent({}, 400).size(), 400U);
    EXPECT_THAT(trace.texts, testing::Not(testing::IsEmpty()));
}

// Protected rows, which a history has all of.

qsizetype textIn(const std::vector<ClipboardItem> &items) {
    return std::accumulate(items.begin(), items.end(), qsizetype{0},
                           [](qsizetype sum, const ClipboardItem &item) { return sum + item.content.size(); });
}

std::string savedRows(int count, int length) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(count) +
           ") INSERT INTO items(id,content,date,is_saved) SELECT printf('00000000-0000-4000-8000-%012d',i), "
           "printf('%.*c'," +
           std::to_string(length) + ",'x')||i, i, 1 FROM n";
}

TEST_F(LongTexts, ofProtectedRowsTakeABoundedMemoryHoweverManyThereAre) {
    Outside outside(path);
    ASSERT_TRUE(outside.run(savedRows(5000, 1990)));
    ClipboardDatabase cold(path);
    const auto fromTheFile = cold.loadProtectedAndRecent({}, 200);
    const auto fromMemory = cold.loadProtectedAndRecent({}, 200);
    ASSERT_EQ(fromTheFile.size(), 5000U);
    EXPECT_LE(textIn(fromTheFile), 1'000'000);
    EXPECT_EQ(fromMemory, fromTheFile);
    EXPECT_EQ(cold.wholeText(fromTheFile.front()), QString(1990, QLatin1Char('x')) + str("5000"));
    ClipboardItem item = fromTheFile.front();
    item.isPinned = true;
    cold.save(item);
    EXPECT_EQ(cold.loadAll({}, 1).front().content, QString(1990, QLatin1Char('x')) + str("5000"));
}

TEST_F(LongTexts, ofProtectedRowsAreCutAsTheirNumberGrowsAndWholeAgainAsItShrinks) {
    Outside outside(path);
    ASSERT_TRUE(outside.run(savedRows(488, 1990)));
    ClipboardDatabase each(path);
    const auto isCut = [&] { return each.loadProtectedAndRecent({}, 10).back().cut.has_value(); };
    EXPECT_FALSE(isCut());
    ClipboardItem one = text(str("one more"), 1000);
    one.isSaved = true;
    each.save(one);
    EXPECT_TRUE(isCut());
    EXPECT_EQ(each.loadProtectedAndRecent({}, 10), loadedAnew());
    one.isSaved = false;
    each.save(one);
    EXPECT_FALSE(isCut());
    EXPECT_EQ(each.loadProtectedAndRecent({}, 10), loadedAnew());
}

// Readings that nobody waits for.

TEST_F(LongTexts, aReadingTellsOnceAndGivesItsResultOnce) {
    saved(str("one"), 1);
    std::atomic<int> told{0};
    const auto read = db.beginSearch(str("one"), 10, [&] { ++told; });
    EXPECT_EQ(contents(*read->take(std::chrono::seconds(60))), QStringList{str("one")});
    (void)db.counts(); // behind it on the queue
    EXPECT_EQ(told, 1);
    EXPECT_EQ(read->take(), std::nullopt);
}

TEST_F(LongTexts, aReadingThatIsDroppedTellsNobody) {
    Outside other(path);
    ASSERT_TRUE(other.run("BEGIN EXCLUSIVE")); // so that it cannot have ended before
    std::atomic<int> told{0};
    const auto read = db.beginSearch(str("one"), 10, [&] { ++told; });
    read->drop();
    ASSERT_TRUE(other.run("COMMIT"));
    (void)db.counts();
    EXPECT_EQ(told, 0);
}

TEST_F(LongTexts, theFilterFindsWhatLongTextsContain) {
    saved(longText(str("Straße")), 1);
    saved(longText(str("Weg")), 2);
    const auto read = db.beginFilter(db.loadProtectedAndRecent({}, 10), str("STRASSE"), {});
    EXPECT_EQ(read->take(std::chrono::seconds(60))->size(), 1U);
}

} // namespace
} // namespace tavrine
