#include "clipboard/PlannedReader.h"

#include "DatabaseFixture.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/Statement.h"

#include <QElapsedTimer>

#include <algorithm>
#include <random>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using View = PlannedReader::View;

const std::string history = std::string(sql::protectedAndUnprotected) + sql::bySavedPinnedAndDate;

class PlannedReaderTest : public DatabaseFixture {
protected:
    /// What SQLite says that it will do for a statement.
    static std::string plan(sqlite3 *db, const std::string &sql) {
        std::string plan;
        sqlite3_stmt *statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(db, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &statement, nullptr), SQLITE_OK);
        while (sqlite3_step(statement) == SQLITE_ROW)
            plan += reinterpret_cast<const char *>(sqlite3_column_text(statement, 3)) + std::string("\n");
        sqlite3_finalize(statement);
        return plan;
    }
    void fill(int rows) {
        std::mt19937 random(7);
        ASSERT_TRUE(outside.run("BEGIN"));
        for (int i = 0; i < rows; ++i) {
            const std::string number = std::to_string(i);
            const auto flag = [&] { return random() % 9 == 0 ? "1" : "0"; };
            const std::string values = "'" + uuidString(QUuid::createUuid()).toStdString() + "','row " + number + ' ' +
                                       std::to_string(random() % 50) + "'," + std::to_string(random()) + '.' + number +
                                       ',' + flag() + ',' + flag();
            ASSERT_TRUE(outside.run("INSERT INTO items(id,content,date,is_pinned,is_saved) VALUES(" + values + ")"));
        }
        ASSERT_TRUE(outside.run("COMMIT"));
    }

    ClipboardDatabase db{path};
    Outside outside{path};
};

TEST_F(PlannedReaderTest, aSearchOfEveryRowReadsTheTableInItsOwnOrder) {
    const auto reader = PlannedReader::open(outside.handle(), View::everyMatch);
    ASSERT_TRUE(reader);
    const std::string ours = plan(reader->db(), sql::contentLike);
    EXPECT_THAT(ours, HasSubstr("SCAN main.items"));
    EXPECT_THAT(ours, Not(HasSubstr("INDEX")));
    EXPECT_THAT(plan(outside.handle(), sql::contentLike), HasSubstr("idx_saved")); // why it is here at all
}

TEST_F(PlannedReaderTest, aSearchAmongTheNewestReadsByDateAndProtectedRowsByTheirIndexes) {
    const auto reader = PlannedReader::open(outside.handle(), View::newestMatches);
    ASSERT_TRUE(reader);
    const std::string ours = plan(reader->db(), sql::contentLike);
    for (const char *index :
         {"SCAN main.items USING INDEX idx_date", "idx_pinned (is_pinned=?)", "idx_saved (is_saved=?)"})
        EXPECT_THAT(ours, HasSubstr(index));
}

TEST_F(PlannedReaderTest, bothSearchesGiveWhatTheStatementGives) {
    fill(3000);
    const std::string columns = "SELECT content FROM items WHERE content LIKE '%";
    const std::string order = "%' ESCAPE '\\' ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ";
    for (const View view : {View::newestMatches, View::everyMatch}) {
        const auto reader = PlannedReader::open(outside.handle(), view);
        ASSERT_TRUE(reader);
        for (const char *query : {"row", "1", "ROW 39", "nothing", "4 4", "2999"}) {
            for (const int limit : {0, 1, 5, 60, 500, 10000}) {
                reader->want("%" + QByteArray(query) + "%", limit);
                std::vector<std::string> found;
                Statement statement(reader->db(), sql::contentLike);
                statement.bindText(1, "%" + QByteArray(query) + "%");
                statement.bindInt(2, limit);
                while (statement.step() == Statement::Step::row)
                    found.push_back(statement.requiredUtf8(1).toStdString());
                EXPECT_EQ(found, outside.values(columns + query + order + std::to_string(limit))) << query << limit;
            }
        }
    }
}

TEST_F(PlannedReaderTest, theHistoryIsReadByDateAndProtectedRowsByTheirIndexes) {
    const auto reader = PlannedReader::open(outside.handle(), View::newestRows);
    ASSERT_TRUE(reader);
    const std::string ours = plan(reader->db(), history);
    for (const char *index :
         {"SCAN main.items USING INDEX idx_date", "idx_pinned (is_pinned=?)", "idx_saved (is_saved=?)"})
        EXPECT_THAT(ours, HasSubstr(index));
    EXPECT_THAT(ours, Not(HasSubstr("SCAN main.items\n"))); // never the table from end to end
    const std::string usual = plan(outside.handle(), history);
    EXPECT_THAT(usual.substr(usual.find("RIGHT")), HasSubstr("TEMP B-TREE"));
}

TEST_F(PlannedReaderTest, theHistoryIsWhatTheStatementGives) {
    fill(3000);
    ASSERT_TRUE(outside.run("UPDATE items SET is_saved=2 WHERE content LIKE '%77%'")); // rows of neither kind
    const std::string protectedRows =
        outside.values("SELECT COUNT(*) FROM items WHERE is_pinned=1 OR is_saved=1").at(0);
    for (const int limit : {0, 1, 200, 5000}) {
        for (const double since : {-1.0, 2e9, 1e12}) {
            const std::string after = since < 0 ? "" : " AND date > " + std::to_string(since);
            const auto expected = outside.values("SELECT content FROM (" + std::string(sql::protectedAndUnprotected) +
                                                 after + " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT " +
                                                 protectedRows + "+" + std::to_string(limit) + ")");
            ClipboardDatabase fresh(path); // which knows nothing yet
            std::vector<std::string> found;
            for (const QString &content :
                 contents(fresh.loadProtectedAndRecent(since < 0 ? std::nullopt : std::optional(Date{since}), limit)))
                found.push_back(content.toStdString());
            EXPECT_EQ(found, expected) << limit << ' ' << since;
        }
    }
}

TEST_F(PlannedReaderTest, theFileKeepsItsSchemaAndHoldsNoView) {
    const std::string schema = "SELECT name FROM sqlite_schema ORDER BY name";
    const auto before = outside.values(schema);
    fill(3);
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 3U);
    EXPECT_EQ(outside.values(schema), before);
}

TEST_F(PlannedReaderTest, aReaderCannotWrite) {
    const auto reader = PlannedReader::open(outside.handle(), View::everyMatch);
    ASSERT_TRUE(reader);
    EXPECT_NE(sqlite3_exec(reader->db(), "DELETE FROM main.items", nullptr, nullptr, nullptr), SQLITE_OK);
}

TEST_F(PlannedReaderTest, aSearchGivesWhatTheStatementGivesOnTheMainConnection) {
    fill(4000); // more than memory holds
    for (const bool isWarm : {false, true}) {
        if (isWarm) {
            EXPECT_FALSE(db.loadProtectedAndRecent({}, 200).empty());
        }
        for (const char *query : {"row", "1", "7", "row 39", "nothing", "4 4", "3999"}) {
            const std::string expected = "SELECT content FROM items WHERE content LIKE '%" + std::string(query) +
                                         "%' ESCAPE '\\' ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT 500";
            std::vector<std::string> found;
            for (const QString &content : contents(db.search(QLatin1String(query), 500)))
                found.push_back(content.toStdString());
            EXPECT_EQ(found, outside.values(expected)) << query << (isWarm ? " warm" : " cold");
        }
    }
}

TEST_F(PlannedReaderTest, aTextThatOnlyReadsLikeAnotherIsLeftToTheStatement) {
    // Over-long bytes spell an "é" to LIKE, and an empty caption reads as "Image".
    ASSERT_TRUE(
        outside.run("INSERT INTO items VALUES('00000000-0000-4000-8000-000000000001',CAST(x'62E083A9' AS TEXT),1,"
                    "0,0,NULL),('00000000-0000-4000-8000-000000000002','',2,0,0,'a.png'),"
                    "('00000000-0000-4000-8000-000000000003',x'6262',3,0,0,NULL)"));
    (void)db.loadProtectedAndRecent({}, 200);
    EXPECT_EQ(db.search(QStringLiteral("bé"), 9).size(), 1U);
    EXPECT_EQ(db.search(QStringLiteral("Image"), 9).size(), 0U);
    EXPECT_EQ(db.search(QStringLiteral("bb"), 9).size(), 0U); // bytes are no text
}

TEST_F(PlannedReaderTest, rowsWithOtherFlagsThanZeroAndOneAreFoundInTheirPlace) {
    fill(5);
    for (const char *value : {"2", "-1", "0.5", "'text'"}) {
        ASSERT_TRUE(outside.run(std::string("UPDATE items SET is_saved=") + value + " WHERE content LIKE 'row 3%'"));
        (void)db.loadProtectedAndRecent({}, 200);
        std::vector<std::string> found;
        for (const QString &content : contents(db.search(QStringLiteral("row"), 3)))
            found.push_back(content.toStdString());
        EXPECT_EQ(found, outside.values("SELECT content FROM items ORDER BY is_saved DESC, is_pinned DESC, date DESC "
                                        "LIMIT 3"))
            << value;
    }
}

TEST_F(PlannedReaderTest, aWriteBetweenTwoSearchesIsSeen) {
    fill(2);
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 2U);
    db.save(text(QStringLiteral("row of ours"), 1));
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 3U);
    ASSERT_TRUE(outside.run("INSERT INTO items(id,content,date) VALUES('x','row of another',2)"));
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 4U);
}

TEST_F(PlannedReaderTest, anotherFileInThePlaceOfOursIsTheOneThatIsRead) {
    fill(2);
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 2U);
    ASSERT_TRUE(QFile::rename(path, path + QStringLiteral(".old")));
    { // another file of that name
        ClipboardDatabase other(path);
        other.save(text(QStringLiteral("row of the other file"), 1));
    }
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 1U);
    EXPECT_EQ(db.search(QStringLiteral("other file"), 9).size(), 1U);
}

TEST_F(PlannedReaderTest, aFileWithoutTheIndexIsReadAllTheSame) {
    fill(5);
    ASSERT_TRUE(outside.run("DROP INDEX idx_date"));
    EXPECT_EQ(db.loadProtectedAndRecent({}, 10).size(), 5U);
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 5U);
}

TEST_F(PlannedReaderTest, aTableThatIsGoneGivesNothing) {
    fill(5);
    ASSERT_TRUE(outside.run("DROP TABLE items"));
    EXPECT_THAT(db.search(QStringLiteral("row"), 9), IsEmpty());
    EXPECT_THAT(db.loadProtectedAndRecent({}, 10), IsEmpty());
}

TEST_F(PlannedReaderTest, aFileThatAnotherProgramHoldsIsWaitedForOnce) {
    fill(5);
    ASSERT_TRUE(outside.run("BEGIN EXCLUSIVE"));
    QElapsedTimer timer;
    timer.start();
    EXPECT_THAT(db.search(QStringLiteral("row"), 9), IsEmpty());
    EXPECT_GE(timer.elapsed(), 900);
    EXPECT_LT(timer.elapsed(), 1900);
    ASSERT_TRUE(outside.run("COMMIT"));
    EXPECT_EQ(db.search(QStringLiteral("row"), 9).size(), 5U);
}

TEST_F(PlannedReaderTest, noFileHasNoReader) {
    EXPECT_FALSE(PlannedReader::open(nullptr, View::newestRows));
    sqlite3 *memory = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &memory), SQLITE_OK);
    EXPECT_FALSE(PlannedReader::open(memory, View::newestRows));
    sqlite3_close(memory);
}

} // namespace
} // namespace tavrine
