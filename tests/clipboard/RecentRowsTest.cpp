#include "clipboard/RecentRows.h"

#include "DatabaseFixture.h"

#include <algorithm>
#include <array>
#include <limits>
#include <random>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

// The window over a database, against the statements that it stands in for.

class RecentRowsOverADatabase : public DatabaseFixture {
protected:
    static constexpr qint64 limit = 20;
    SqlTrace trace;
    ClipboardDatabase db{path};
    Outside outside{path};

    /// What the statement gives on a connection that knows nothing of the window.
    std::vector<ClipboardItem> byStatement(std::optional<Date> since, qint64 rowLimit) {
        const std::string items = "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM items\n";
        const std::string sql =
            items + "WHERE is_pinned=1 OR is_saved=1\nUNION ALL\n" + items + "WHERE is_pinned=0 AND is_saved=0" +
            (since ? " AND date > ?1" : "") +
            " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ?2 + (SELECT COUNT(*) FROM items "
            "WHERE is_pinned=1 OR is_saved=1);";
        sqlite3_stmt *statement = nullptr;
        sqlite3_prepare_v2(outside.handle(), sql.c_str(), -1, &statement, nullptr);
        if (since)
            sqlite3_bind_double(statement, 1, since->secondsSince1970);
        sqlite3_bind_int64(statement, 2, rowLimit);
        std::vector<ClipboardItem> result;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            const auto textAt = [&](int column) {
                return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, column)));
            };
            ClipboardItem item;
            item.id = uuidFromString(textAt(0)).value_or(QUuid());
            if (sqlite3_column_type(statement, 5) != SQLITE_NULL)
                item.imageFileName = textAt(5);
            item.content = contentOrImage(textAt(1), item.imageFileName);
            item.date = Date{sqlite3_column_double(statement, 2)};
            item.isPinned = sqlite3_column_int(statement, 3) == 1;
            item.isSaved = sqlite3_column_int(statement, 4) == 1;
            result.push_back(item);
        }
        sqlite3_finalize(statement);
        return result;
    }

    /// True when the next load needs no statement.
    bool isAnsweredFromMemory(std::optional<Date> since = {}, qint64 rowLimit = limit) {
        const auto expected = byStatement(since, rowLimit);
        trace.clear();
        EXPECT_EQ(db.loadProtectedAndRecent(since, rowLimit), expected);
        return trace.texts.empty();
    }
    void expectFromMemory() { EXPECT_TRUE(isAnsweredFromMemory()); }
    void expectByStatement() { EXPECT_FALSE(isAnsweredFromMemory()); }

    void SetUp() override {
        ASSERT_TRUE(outside.run("BEGIN"));
        for (int i = 0; i < 30; ++i) {
            ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() + "','text'," +
                                    std::to_string(100 + i) + ",0,0,NULL)"));
        }
        ASSERT_TRUE(outside.run("COMMIT"));
        db.save(flagged(text(QStringLiteral("pinned"), 1), true, false));
        db.save(flagged(text(QStringLiteral("saved"), 2), false, true));
        expectByStatement();
        expectFromMemory();
    }
};

TEST_F(RecentRowsOverADatabase, followsSavingAndRemoving) {
    ClipboardItem item = text(QStringLiteral("new"), 500);
    db.save(item);
    expectFromMemory();
    for (const auto &[isPinned, isSaved] : {std::pair(true, false), {true, true}, {false, true}, {false, false}}) {
        db.save(flagged(item, isPinned, isSaved));
        expectFromMemory();
    }
    db.remove(item.id);
    expectFromMemory();
    db.remove(item.id); // meets no row
    expectFromMemory();
}

TEST_F(RecentRowsOverADatabase, holdsAnItemAsItReadsBack) {
    ClipboardItem item = text(QStringLiteral("cut") + QChar(QChar::Null) + QStringLiteral("off"), 500);
    db.save(item);
    expectFromMemory();
    item.content = QString(QChar(0xD800)); // half a character
    db.save(item);
    expectFromMemory();
    item.content = QString(QChar(QChar::Null)); // an empty caption
    item.imageFileName = QStringLiteral("a.png") + QChar(QChar::Null);
    db.save(item);
    expectFromMemory();
    EXPECT_EQ(db.loadProtectedAndRecent({}, 1).back().content, QStringLiteral("Image"));
    item.imageFileName = QString();
    db.save(item);
    expectFromMemory();
}

TEST_F(RecentRowsOverADatabase, followsPruningAndClearing) {
    (void)db.prune(false, Date{110}, {});
    expectFromMemory();
    (void)db.prune(false, {}, 10);
    expectFromMemory();
    (void)db.clearUnprotected();
    expectFromMemory();
    (void)db.clearUnprotected(); // meets no row
    expectFromMemory();
}

TEST_F(RecentRowsOverADatabase, answersBothFormsOfSince) {
    EXPECT_TRUE(isAnsweredFromMemory(Date{115}, 5));
    EXPECT_TRUE(isAnsweredFromMemory(Date{125.5}, 50));
    EXPECT_TRUE(isAnsweredFromMemory(Date{125}, 50));
    EXPECT_TRUE(isAnsweredFromMemory(Date::distantFuture(), 0));
    EXPECT_TRUE(isAnsweredFromMemory({}, 1'000'000)); // the table has no more
    EXPECT_FALSE(isAnsweredFromMemory({}, -1));       // no limit at all
}

TEST_F(RecentRowsOverADatabase, aLoadOfTheProtectedRowsAloneKnowsNothingOfTheOthers) {
    ASSERT_TRUE(outside.run("UPDATE items SET content='x' WHERE date=110"));
    EXPECT_FALSE(isAnsweredFromMemory(Date::distantFuture(), 0));
    EXPECT_TRUE(isAnsweredFromMemory(Date::distantFuture(), 0));
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, aWriteFromOutsideMakesItReadAgain) {
    ASSERT_TRUE(outside.run("DELETE FROM items WHERE date=129"));
    expectByStatement();
    expectFromMemory();
    ASSERT_TRUE(outside.run("UPDATE items SET content='x' WHERE is_pinned=1"));
    db.save(text(QStringLiteral("ours, after theirs"), 600));
    expectByStatement();
    expectFromMemory();
    db.save(text(QStringLiteral("ours, before theirs"), 601));
    ASSERT_TRUE(outside.run("DELETE FROM items WHERE date=128"));
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, aRemovalThatMeetsNoRowDoesNotHideAWriteFromOutside) {
    ASSERT_TRUE(outside.run("DELETE FROM items WHERE date=129"));
    db.remove(QUuid::createUuid());
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, aWriteAheadLogIsNeverTrusted) {
    ASSERT_EQ(outside.values("PRAGMA journal_mode=WAL"), std::vector<std::string>{"wal"});
    expectByStatement();
    expectByStatement();
    db.save(text(QStringLiteral("new"), 500));
    ASSERT_TRUE(outside.run("DELETE FROM items WHERE date=129"));
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, aWriteThatFailedIsNotBelieved) {
    ASSERT_TRUE(outside.run("BEGIN EXCLUSIVE"));
    db.save(text(QStringLiteral("late"), 500)); // after the busy time-out
    ASSERT_TRUE(outside.run("ROLLBACK"));
    (void)db.counts(); // writes it
    expectByStatement();
    ClipboardItem undated = text(QStringLiteral("no date"), std::numeric_limits<double>::quiet_NaN());
    expectFromMemory();
    db.save(undated); // stored as NULL, which the schema refuses
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, equalDatesAreLeftToTheStatement) {
    db.save(text(QStringLiteral("twin"), 120));
    expectByStatement(); // the twins would be among the twenty
    EXPECT_TRUE(isAnsweredFromMemory({}, 9));
    EXPECT_FALSE(isAnsweredFromMemory({}, 10));
    EXPECT_TRUE(isAnsweredFromMemory(Date{120}, 50));
    db.save(flagged(text(QStringLiteral("protected twin"), 1), true, false));
    EXPECT_FALSE(isAnsweredFromMemory({}, 1));
    EXPECT_FALSE(isAnsweredFromMemory({}, 1));
}

TEST_F(RecentRowsOverADatabase, rowsOfOtherProgramsThatReadOtherwiseAreLeftToTheStatement) {
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toLower().toStdString() +
                            "','lower case id',115.5,0,0,NULL)"));
    expectByStatement();
    expectByStatement();
    EXPECT_TRUE(isAnsweredFromMemory({}, 14));
    ASSERT_TRUE(outside.run("UPDATE items SET is_saved=2 WHERE is_pinned=1"));
    EXPECT_FALSE(isAnsweredFromMemory({}, 1));
    EXPECT_FALSE(isAnsweredFromMemory({}, 1));
}

TEST_F(RecentRowsOverADatabase, aRowWithATextAsDateIsShownWhereTheStatementShowsIt) {
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() +
                            "','dated in words','in May',0,0,NULL)"));
    expectByStatement(); // a text ranks above every number
    expectByStatement();
    EXPECT_EQ(db.loadProtectedAndRecent({}, 1).back().content, QStringLiteral("dated in words"));
    db.save(text(QStringLiteral("new"), 500));
    expectByStatement();
    ASSERT_TRUE(outside.run("UPDATE items SET date='soon' WHERE is_pinned=1"));
    expectByStatement();
    expectByStatement();
}

TEST_F(RecentRowsOverADatabase, warmingUpReadsBeforeAnyoneAsks) {
    ClipboardDatabase other(path);
    other.warmUp();
    (void)other.counts(); // waits for it
    const auto expected = byStatement({}, limit);
    trace.clear();
    EXPECT_EQ(other.loadProtectedAndRecent({}, limit), expected);
    EXPECT_TRUE(trace.texts.empty());
}

constexpr auto countMedia = "SELECT COUNT(*) FROM items WHERE image_file_name IS NOT NULL;";

TEST_F(RecentRowsOverADatabase, aPruningOfImagesThatAreAllKnownAndKeptOnlyCountsThem) {
    db.save(image(QStringLiteral("a.png"), 300));
    db.save(flagged(image(QStringLiteral("pinned.png"), 1.5), true, false));
    trace.clear();
    EXPECT_EQ(db.prune(true, Date{300}, {}), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.prune(true, {}, 1), ClipboardDatabase::Pruned());
    EXPECT_EQ(trace.texts, (std::vector<std::string>{countMedia, countMedia}));
    EXPECT_EQ(db.prune(true, {}, 0).imageFileNames, QStringList{QStringLiteral("a.png")});
}

TEST_F(RecentRowsOverADatabase, aPruningFindsTheImageThatAnotherProgramAdded) {
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('x','',1,0,0,'theirs.png')"));
    EXPECT_EQ(db.prune(true, Date{2}, {}).imageFileNames, QStringList{QStringLiteral("theirs.png")});
}

TEST_F(RecentRowsOverADatabase, anImageBelowTheWindowIsPrunedWhenItsTimeComes) {
    db.save(image(QStringLiteral("old.png"), 1000));
    for (std::size_t i = 0; i <= RecentRows::maximumRows; ++i)
        db.save(text(QStringLiteral("later"), 2000 + static_cast<double>(i)));
    expectFromMemory();
    const double hour = 3600;
    EXPECT_EQ(db.prune(true, Date{1000 - hour}, {}), ClipboardDatabase::Pruned()); // looks ahead to 1000 and not beyond
    trace.clear();
    EXPECT_EQ(db.prune(true, Date{999}, {}), ClipboardDatabase::Pruned());
    EXPECT_EQ(trace.texts, std::vector<std::string>{countMedia});
    EXPECT_EQ(db.prune(true, Date{1000}, {}), ClipboardDatabase::Pruned());
    EXPECT_EQ(db.prune(true, Date{1000.5}, {}).imageFileNames, QStringList{QStringLiteral("old.png")});
    // One that comes to stand below what was looked at is seen all the same.
    db.save(image(QStringLiteral("older.png"), 10));
    EXPECT_EQ(db.prune(true, Date{11}, {}).imageFileNames, QStringList{QStringLiteral("older.png")});
}

// Thousands of operations in any order, each answer against the statement.

class RandomOperations : public RecentRowsOverADatabase, public testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override {
        // Starts with an empty table.
    }

    unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

    QUuid id() { return {below(60), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}; } // so that they meet
    double date() {
        if (below(60) == 0)
            return below(50); // equal dates now and then
        return below(8) == 0 ? below(1'000'000) / 7.0 : m_now += 0.25 + below(3);
    }
    ClipboardItem item() {
        ClipboardItem item;
        item.id = id();
        item.content = below(10) == 0 ? QString() : QString::number(below(1000));
        item.date = Date{date()};
        item.isPinned = below(8) == 0;
        item.isSaved = below(10) == 0;
        if (below(4) == 0)
            item.imageFileName = QStringLiteral("%1.png").arg(below(1000));
        return item;
    }

    void prune() {
        const bool imagesOnly = below(4) != 0;
        const std::optional<Date> before =
            below(2) == 0 ? std::optional(Date{below(2) == 0 ? m_now - below(60) : below(1'000'000) / 7.0})
                          : std::nullopt;
        const std::optional<qint64> keepNewest =
            !before || below(3) == 0 ? std::optional<qint64>(below(12)) : std::nullopt;
        std::string where = "is_pinned=0 AND is_saved=0";
        if (imagesOnly)
            where += " AND image_file_name IS NOT NULL";
        if (before)
            where += " AND date < " + std::string(QByteArray::number(before->secondsSince1970, 'g', 17));
        std::string sql = "SELECT image_file_name FROM items WHERE " + where + " ORDER BY date";
        if (keepNewest)
            sql += " LIMIT MAX(0,(SELECT COUNT(*) FROM items WHERE " + where + ")-" + std::to_string(*keepNewest) + ")";
        const std::vector<std::string> expected = outside.values(sql);
        const ClipboardDatabase::Pruned pruned = db.prune(imagesOnly, before, keepNewest);
        ASSERT_EQ(pruned.deletedCount, static_cast<int>(expected.size())) << sql;
        std::vector<std::string> files;
        std::copy_if(expected.begin(), expected.end(), std::back_inserter(files),
                     [](const auto &f) { return f != "NULL"; });
        ASSERT_EQ(pruned.imageFileNames.size(), static_cast<qsizetype>(files.size()));
        for (std::size_t i = 0; i < files.size(); ++i)
            ASSERT_EQ(pruned.imageFileNames[static_cast<qsizetype>(i)].toStdString(), files[i]);
    }

    void writeFromOutside() {
        const std::string someId = uuidString(id()).toStdString();
        switch (below(5)) {
        case 0:
            outside.run("DELETE FROM items WHERE id='" + someId + "'");
            break;
        case 1:
            outside.run("UPDATE items SET is_saved=" + std::to_string(below(3)) + " WHERE id='" + someId + "'");
            break;
        case 2:
            outside.run("UPDATE items SET date=date+1, image_file_name='o.png' WHERE id='" + someId + "'");
            break;
        case 3:
            outside.run("BEGIN; DELETE FROM items WHERE id='" + someId + "'; ROLLBACK;");
            break;
        default:
            outside.run("INSERT OR REPLACE INTO items VALUES ('" + someId + "','theirs'," + std::to_string(m_now) +
                        ",0,0,NULL)");
        }
    }

    void compare() {
        const std::array<qint64, 6> limits{0, 1, 5, 20, 200, 450};
        const qint64 rowLimit = limits[below(limits.size())];
        std::optional<Date> since;
        if (below(3) == 0)
            since = below(4) == 0 ? Date::distantFuture()
                                  : Date{below(2) == 0 ? m_now - below(40) : below(1'000'000) / 7.0};
        const auto expected = byStatement(since, rowLimit);
        trace.clear();
        ASSERT_EQ(db.loadProtectedAndRecent(since, rowLimit), expected);
        m_fromMemory += trace.texts.empty();
        m_byStatement += !trace.texts.empty();
    }

    /// A search, by memory or by the statement. Which of several rows of one rank comes first is SQLite's to choose.
    void compareSearch() {
        const std::array<const char *, 8> queries{"", "1", "7", "12", "t", "THEIRS", "mag", "%"};
        const std::array<qint64, 5> limits{0, 1, 5, 60, 4000};
        const char *query = queries[below(queries.size())];
        const qint64 rowLimit = limits[below(limits.size())];
        const std::string where =
            std::string(" FROM items WHERE content LIKE '%") + (*query == '%' ? "\\%" : query) + "%' ESCAPE '\\'";
        const auto fromOutside =
            outside.values("SELECT (is_saved=1)||(is_pinned=1)||printf('%.4f',date)" + where +
                           " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT " + std::to_string(rowLimit));
        const auto ids = outside.values("SELECT id" + where);
        trace.clear();
        const auto found = db.search(QLatin1String(query), rowLimit);
        m_searchedInMemory += trace.texts.empty();
        m_searchedByStatement += !trace.texts.empty();
        ASSERT_EQ(found.size(), fromOutside.size()) << query;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const std::string rank = std::to_string(found[i].isSaved) + std::to_string(found[i].isPinned) +
                                     QByteArray::number(found[i].date.secondsSince1970, 'f', 4).toStdString();
            ASSERT_EQ(rank, fromOutside[i]) << query << ' ' << i;
            ASSERT_EQ(std::count(ids.begin(), ids.end(), uuidString(found[i].id).toStdString()), 1) << query;
        }
    }

    void step() {
        switch (below(20)) {
        case 0:
            writeFromOutside();
            break;
        case 1:
            db.remove(id());
            break;
        case 2:
        case 3:
            prune();
            break;
        case 4:
            if (below(20) == 0)
                (void)db.clearUnprotected();
            break;
        default:
            db.save(item());
        }
    }

    std::mt19937_64 m_random{GetParam()};
    double m_now = 1'000'000;
    int m_fromMemory = 0;
    int m_byStatement = 0;
    int m_searchedInMemory = 0;
    int m_searchedByStatement = 0;
};

TEST_P(RandomOperations, giveWhatTheStatementGives) {
    for (int i = 0; i < 600 && !HasFatalFailure(); ++i) {
        step();
        if (below(3) != 0)
            compare();
        if (below(3) == 0)
            compareSearch();
    }
    EXPECT_GT(m_searchedInMemory, 20);
    EXPECT_GT(m_searchedByStatement, 5);
    EXPECT_GT(m_fromMemory, 100); // both ways were taken often
    EXPECT_GT(m_byStatement, 20);
}
INSTANTIATE_TEST_SUITE_P(Seeds, RandomOperations, testing::Range(1U, 9U));

class ManyRows : public RandomOperations {};

TEST_P(ManyRows, giveWhatTheStatementGivesAcrossTheEdgeOfTheWindow) {
    ASSERT_TRUE(outside.run("BEGIN"));
    for (int i = 0; i < 2000; ++i) {
        ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() + "','t'," +
                                std::to_string(i * 71.4) + ",0,0," + (i % 90 == 0 ? "'m.png'" : "NULL") + ")"));
    }
    ASSERT_TRUE(outside.run("COMMIT"));
    for (int i = 0; i < 300 && !HasFatalFailure(); ++i) {
        step();
        compare();
        compareSearch();
    }
    EXPECT_GT(m_searchedInMemory, 20);
    EXPECT_GT(m_searchedByStatement, 20);
    EXPECT_GT(m_fromMemory, 50);
    EXPECT_GT(m_byStatement, 3);
}
INSTANTIATE_TEST_SUITE_P(Seeds, ManyRows, testing::Range(11U, 15U));

// The window alone.

class RecentRowsTest : public DatabaseFixture {
protected:
    RecentRows rows;

    static RecentRows::Row row(ClipboardItem item) { return {std::move(item), true}; }
    std::size_t held() { return rows.answer({}, 0) ? heldUpTo() : 0; }
    std::size_t heldUpTo() {
        std::size_t count = 0;
        while (rows.answer({}, static_cast<qint64>(count) + 1).value_or(std::vector<ClipboardItem>()).size() ==
               count + 1)
            ++count;
        return count;
    }
};

TEST_F(RecentRowsTest, knowsNothingWhileItIsCold) {
    rows.saved(text(QStringLiteral("a"), 1));
    rows.removed(QUuid());
    rows.clearedUnprotected();
    rows.foundNoMediaBefore(Date{5});
    EXPECT_FALSE(rows.isWarm());
    EXPECT_EQ(rows.answer({}, 0), std::nullopt);
    EXPECT_FALSE(rows.isNothingToPrune(0, Date{1}, {}));
}

std::optional<bool> isB(const ClipboardItem &item) {
    return item.content == QLatin1String("b");
}

TEST_F(RecentRowsTest, aSearchIsAnsweredWhereNothingBelowTheFloorCouldCount) {
    rows.fill({row(flagged(text(QStringLiteral("b"), 1), true, false)), row(text(QStringLiteral("b"), 9)),
               row(text(QStringLiteral("a"), 8)), row(text(QStringLiteral("b"), 7)), row(text(QStringLiteral("b"), 6))},
              {}, true, 4); // the last one is not held
    EXPECT_EQ(rows.search(isB, 3).items->size(), 3U);
    EXPECT_EQ(rows.search(isB, 3).items->front().date, Date{1});
    EXPECT_FALSE(rows.search(isB, 4).items);
    EXPECT_EQ(rows.search(isB, 4).share, 0.75);
}

TEST_F(RecentRowsTest, aSearchOverAWholeTableIsAnsweredWhateverItFinds) {
    rows.fill({row(text(QStringLiteral("a"), 2)), row(text(QStringLiteral("b"), 1))}, {}, false, 2);
    EXPECT_EQ(rows.search(isB, 500).items->size(), 1U);
    EXPECT_EQ(rows.search([](const ClipboardItem &) { return false; }, 500).items->size(), 0U);
    EXPECT_FALSE(rows.search(isB, -1).items);
}

TEST_F(RecentRowsTest, aRowThatCannotBeJudgedDeclinesTheSearch) {
    rows.fill({row(text(QStringLiteral("a"), 2)), row(text(QStringLiteral("b"), 1))}, {}, false, 2);
    const RecentRows::Found found =
        rows.search([](const ClipboardItem &) -> std::optional<bool> { return std::nullopt; }, 500);
    EXPECT_FALSE(found.items);
    EXPECT_FALSE(found.share);
}

TEST_F(RecentRowsTest, aColdWindowSaysNothingOfASearch) {
    EXPECT_FALSE(rows.search(isB, 1).items);
    EXPECT_FALSE(rows.search(isB, 1).share);
}

TEST_F(RecentRowsTest, aCutAmongTheProtectedRowsLeavesItCold) {
    rows.fill({row(flagged(text(QStringLiteral("a"), 1), true, false))}, {}, true, 0);
    EXPECT_FALSE(rows.isWarm());
    rows.fill({row(flagged(text(QStringLiteral("a"), 1), true, false))}, {}, false, 0);
    EXPECT_TRUE(rows.isWarm());
}

TEST_F(RecentRowsTest, theLastRowOfACutAnswerIsNotHeldForItMayHaveTwins) {
    rows.fill({row(text(QStringLiteral("b"), 2)), row(text(QStringLiteral("a"), 1))}, {}, true, 2);
    EXPECT_EQ(heldUpTo(), 1U);
    EXPECT_EQ(rows.answer({}, 2), std::nullopt);
}

TEST_F(RecentRowsTest, keepsNoMoreThanItsRows) {
    rows.fill({}, {}, false, 0);
    for (std::size_t i = 0; i < RecentRows::maximumRows; ++i)
        rows.saved(text(QStringLiteral("a"), static_cast<double>(i)));
    EXPECT_EQ(heldUpTo(), RecentRows::maximumRows);
    rows.saved(text(QStringLiteral("a"), 1e6));
    EXPECT_EQ(heldUpTo(), RecentRows::maximumRows);
}

TEST_F(RecentRowsTest, keepsLongTextsOnlyWhereTheyWereAskedFor) {
    rows.fill({}, {}, false, 0);
    const QString longText(RecentRows::maximumTextLength / 100, QLatin1Char('x'));
    for (int i = 0; i < 100; ++i)
        rows.saved(text(longText, i));
    EXPECT_EQ(heldUpTo(), 100U);
    ASSERT_TRUE(rows.answer({}, 60));
    rows.saved(text(longText, 100));
    EXPECT_EQ(rows.answer({}, 101), std::nullopt);
    ASSERT_TRUE(rows.answer({}, 60));
    for (int i = 101; i < 300; ++i)
        rows.saved(text(longText + QLatin1Char('x'), i));
    EXPECT_TRUE(rows.answer({}, 60)); // too long all the same, but asked for
}

} // namespace
} // namespace tavrine
