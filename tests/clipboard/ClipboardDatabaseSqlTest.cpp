// The text of every statement, in the order in which they run, as SQLite was handed them.

#include "DatabaseFixture.h"
#include "clipboard/RecentRows.h"

#include <QDir>
#include <QFileInfo>

#include <array>
#include <cstdlib>
#include <limits>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ClipboardDatabaseSql : public DatabaseFixture {
protected:
    SqlTrace trace;
    ClipboardDatabase db{path};

    static constexpr auto id = "0A1B2C3D-1111-4222-8333-0123456789AB";
    static ClipboardItem item() {
        ClipboardItem item = text(QStringLiteral("it's"), 1.5);
        item.id = QUuid(QLatin1String(id));
        return item;
    }
    void SetUp() override { trace.clear(); }
};

/// Has no statement that deletes items prepared on connections opened while it lives, but for the first few.
class RefusedDeletions {
public:
    explicit RefusedDeletions(int allowed) {
        left = allowed;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&install));
    }
    ~RefusedDeletions() {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&install));
        end();
    }
    RefusedDeletions(const RefusedDeletions &) = delete;
    RefusedDeletions &operator=(const RefusedDeletions &) = delete;

    [[nodiscard]] int refused() const { return left < 0 ? -left : 0; }
    void end() { left = std::numeric_limits<int>::max(); }

private:
    static int install(sqlite3 *db, const char **, const void *) {
        sqlite3_set_authorizer(db, &ask, nullptr);
        return SQLITE_OK;
    }
    static int ask(void *, int action, const char *table, const char *, const char *, const char *) {
        if (action != SQLITE_DELETE || std::string_view(table) != "items")
            return SQLITE_OK;
        return left-- > 0 ? SQLITE_OK : SQLITE_DENY;
    }
    static inline int left = 0;
};

constexpr auto columns = "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM items";
constexpr auto countProtected = "SELECT COUNT(*) FROM items WHERE is_pinned=1 OR is_saved=1;";

TEST_F(DatabaseFixture, openingANewFileRunsTheSchemaAndTheIndexOnceMore) {
    const SqlTrace trace;
    const ClipboardDatabase db(path);
    std::string schema;
    for (std::size_t i = 0; i + 1 < trace.texts.size(); ++i)
        schema += (i == 0 ? "" : "\n") + trace.texts[i];
    EXPECT_EQ(schema,
              "CREATE TABLE IF NOT EXISTS items (\n    id              TEXT    PRIMARY KEY NOT NULL,\n    content     "
              "    TEXT    NOT NULL DEFAULT '',\n    date            REAL    NOT NULL,\n    is_pinned       INTEGER "
              "NOT NULL DEFAULT 0,\n    is_saved        INTEGER NOT NULL DEFAULT 0,\n    image_file_name "
              "TEXT\n);\nCREATE INDEX IF NOT EXISTS idx_date   ON items(date DESC);\nCREATE INDEX IF NOT EXISTS "
              "idx_pinned ON items(is_pinned);\nCREATE INDEX IF NOT EXISTS idx_saved  ON items(is_saved);\nCREATE "
              "INDEX IF NOT EXISTS idx_images ON items(image_file_name);\nCREATE INDEX IF NOT EXISTS idx_content "
              "ON items(content);");
    EXPECT_EQ(trace.texts.back(), "CREATE INDEX IF NOT EXISTS idx_saved ON items(is_saved);");
    for (const std::string &sql : trace.texts)
        EXPECT_EQ(sql.find("PRAGMA"), std::string::npos) << sql;
}

TEST_F(DatabaseFixture, openingAnOldFileAddsTheColumnBetweenTheSchemaAndTheIndex) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(
        Outside(path).run("CREATE TABLE items (id TEXT PRIMARY KEY NOT NULL, content TEXT, date REAL, is_pinned "
                          "INTEGER, image_file_name TEXT)"));
    const SqlTrace trace;
    const ClipboardDatabase db(path);
    std::vector<std::string> ours; // adding a column makes SQLite run statements of its own
    for (const std::string &sql : trace.texts) {
        if (sql.starts_with("CREATE") || sql.starts_with("ALTER"))
            ours.push_back(sql);
    }
    EXPECT_THAT(ours, ElementsAre(HasSubstr("CREATE TABLE"), HasSubstr("idx_date"), HasSubstr("idx_pinned"),
                                  "ALTER TABLE items ADD COLUMN is_saved INTEGER NOT NULL DEFAULT 0;",
                                  "CREATE INDEX IF NOT EXISTS idx_saved ON items(is_saved);"));
}

TEST_F(ClipboardDatabaseSql, savingIsOneStatement) {
    db.save(item());
    EXPECT_THAT(trace.texts, ElementsAre("INSERT OR REPLACE INTO items (id, content, date, is_pinned, is_saved, "
                                         "image_file_name)\nVALUES (?,?,?,?,?,?);"));
    EXPECT_THAT(trace.expanded, ElementsAre("INSERT OR REPLACE INTO items (id, content, date, is_pinned, is_saved, "
                                            "image_file_name)\nVALUES ('0A1B2C3D-1111-4222-8333-0123456789AB','it''s',"
                                            "1.5,0,0,NULL);"));
}

TEST_F(ClipboardDatabaseSql, savingBindsTheFlagsAndTheFileInTheirPlaces) {
    ClipboardItem both = flagged(item(), false, true);
    both.imageFileName = QStringLiteral("a.png");
    db.save(both);
    EXPECT_THAT(trace.expanded, ElementsAre(HasSubstr("'it''s',1.5,0,1,'a.png');")));
}

TEST_F(ClipboardDatabaseSql, removingIsOneStatementWithTheIdInCapitals) {
    db.remove(item().id);
    EXPECT_THAT(trace.texts, ElementsAre("DELETE FROM items WHERE id=?;"));
    EXPECT_THAT(trace.expanded, ElementsAre("DELETE FROM items WHERE id='0A1B2C3D-1111-4222-8333-0123456789AB';"));
}

TEST_F(ClipboardDatabaseSql, loadingAllIsTextWithoutParameters) {
    (void)db.loadAll({}, std::numeric_limits<qint64>::max());
    (void)db.loadAll(Date{1700000000.1}, 7);
    EXPECT_THAT(
        trace.texts,
        ElementsAre(std::string(columns) + " ORDER BY is_pinned DESC, date DESC LIMIT 9223372036854775807;",
                    std::string(columns) + " WHERE date > 1700000000.1 ORDER BY is_pinned DESC, date DESC LIMIT 7;"));
}

TEST_F(ClipboardDatabaseSql, sinceIsTheShortestDecimalThatReadsBackTheSame) {
    const auto written = [&](double since) {
        trace.clear();
        (void)db.loadAll(Date{since}, 1);
        const std::string sql = trace.texts.empty() ? "" : trace.texts.front();
        const std::size_t start = sql.find("> ") + 2;
        return sql.substr(start, sql.find(" ORDER") - start);
    };
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(1700000000.123456), "1700000000.123456");
    EXPECT_EQ(written(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(written(-62135769600.0), "-62135769600");
    EXPECT_EQ(written(64092211200.0), "64092211200");
    EXPECT_EQ(written(5e-324), "5e-324");
    for (const double value :
         {0.1, 1.0 / 3, 1700000000.123456, 2.5e-7, 1.7976931348623157e308, -0.7, 123456789012345680.0})
        EXPECT_EQ(std::strtod(written(value).c_str(), nullptr), value);
}

TEST_F(ClipboardDatabaseSql, theHistoryIsLoadedByTwoStatements) {
    const std::string both = std::string(columns) + "\nWHERE is_pinned=1 OR is_saved=1\nUNION ALL\n" + columns +
                             "\nWHERE is_pinned=0 AND is_saved=0";
    const std::string order = " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ";
    (void)db.loadProtectedAndRecent({}, 5000);
    EXPECT_THAT(trace.texts, ElementsAre(countProtected, both + order + "?;"));
    EXPECT_EQ(trace.expanded.back(), both + order + "5000;");
    trace.clear();
    (void)db.loadProtectedAndRecent(Date{2.5}, 6000);
    EXPECT_THAT(trace.texts, ElementsAre(countProtected, both + " AND date > ?" + order + "?;"));
    EXPECT_EQ(trace.expanded.back(), both + " AND date > 2.5" + order + "6000;");
}

TEST_F(ClipboardDatabaseSql, theProtectedRowsComeOnTopOfTheLimit) {
    db.save(flagged(item(), true, false));
    db.save(flagged(text(QStringLiteral("b"), 2), false, true));
    trace.clear();
    (void)db.loadProtectedAndRecent({}, 10000);
    EXPECT_THAT(trace.expanded.back(), HasSubstr("LIMIT 10002;"));
}

TEST_F(ClipboardDatabaseSql, aLimitBelowWhatMemoryKeepsIsRaisedToIt) {
    (void)db.loadProtectedAndRecent({}, 200);
    EXPECT_THAT(trace.expanded.back(), HasSubstr("LIMIT " + std::to_string(RecentRows::maximumRows) + ";"));
}

TEST_F(ClipboardDatabaseSql, aSearchEscapesWhatLikeWouldTakeForAWildcard) {
    (void)db.search(QStringLiteral("50%_\\'"), 9);
    const std::string search = std::string(columns) +
                               "\nWHERE content LIKE ? ESCAPE '\\'\nORDER BY is_saved DESC, is_pinned "
                               "DESC, date DESC LIMIT ?;";
    EXPECT_THAT(trace.texts, ElementsAre(search));
    EXPECT_THAT(trace.expanded, ElementsAre(HasSubstr("LIKE '%50\\%\\_\\\\''%' ESCAPE '\\'\n")));
    EXPECT_THAT(trace.expanded, ElementsAre(HasSubstr("LIMIT 9;")));
}

TEST_F(ClipboardDatabaseSql, aDuplicateIsLookedForWithOrWithoutAFile) {
    (void)db.findDuplicate({}, QStringLiteral("a"));
    (void)db.findDuplicate(QStringLiteral("f"), QStringLiteral("a"));
    EXPECT_THAT(trace.texts, ElementsAre(std::string(columns) + " WHERE content=? AND image_file_name IS NULL LIMIT 1;",
                                         std::string(columns) + " WHERE content=? AND image_file_name=? LIMIT 1;"));
    EXPECT_THAT(trace.expanded.back(), HasSubstr("content='a' AND image_file_name='f'"));
}

TEST_F(ClipboardDatabaseSql, aPruningThatSelectsNothingDeletesNothing) {
    (void)db.prune(false, {}, {});
    (void)db.prune(true, {}, {});
    (void)db.prune(false, Date{1.5}, {});
    EXPECT_THAT(
        trace.expanded,
        ElementsAre("SELECT id,image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 ORDER BY date ASC",
                    "SELECT id,image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 AND image_file_name IS "
                    "NOT NULL ORDER BY date ASC",
                    "SELECT id,image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 AND date < 1.5 ORDER BY "
                    "date ASC"));
}

TEST_F(ClipboardDatabaseSql, aPruningByAgeAndCountBindsDateDateCount) {
    (void)db.prune(true, Date{1.5}, 50);
    const std::string where = "is_pinned=0 AND is_saved=0 AND image_file_name IS NOT NULL AND date < ";
    EXPECT_THAT(trace.texts, ElementsAre("SELECT id,image_file_name FROM items WHERE " + where +
                                         "? ORDER BY date ASC LIMIT MAX(0, (\n    SELECT COUNT(*) FROM items WHERE " +
                                         where + "?\n ) - ?)"));
    EXPECT_THAT(trace.expanded,
                ElementsAre("SELECT id,image_file_name FROM items WHERE " + where +
                            "1.5 ORDER BY date ASC LIMIT MAX(0, (\n    SELECT COUNT(*) FROM items WHERE " + where +
                            "1.5\n ) - 50)"));
}

TEST_F(ClipboardDatabaseSql, aPruningByCountBindsTheCountAlone) {
    (void)db.prune(false, {}, 3);
    EXPECT_THAT(trace.expanded,
                ElementsAre("SELECT id,image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 ORDER BY "
                            "date ASC LIMIT MAX(0, (\n    SELECT COUNT(*) FROM items WHERE is_pinned=0 AND "
                            "is_saved=0\n ) - 3)"));
}

TEST_F(ClipboardDatabaseSql, aPruningOf1200RowsDeletes500Then500Then200) {
    Outside outside(path);
    ASSERT_TRUE(outside.run("BEGIN"));
    for (int i = 0; i < 1200; ++i) {
        ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() + "','t'," +
                                std::to_string(i) + ",0,0,NULL)"));
    }
    ASSERT_TRUE(outside.run("COMMIT"));
    trace.clear();
    EXPECT_EQ(db.prune(false, {}, {}).deletedCount, 1200);
    ASSERT_EQ(trace.texts.size(), 4U);
    const std::array<int, 3> sizes{500, 500, 200};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::string marks = "?";
        for (int n = 1; n < sizes[i]; ++n)
            marks += ",?";
        EXPECT_EQ(trace.texts[i + 1], "DELETE FROM items WHERE id IN (" + marks + ");");
    }
    EXPECT_THAT(outside.values("SELECT COUNT(*) FROM items"), ElementsAre("0"));
}

TEST_F(ClipboardDatabaseSql, aChunkThatCannotBePreparedEndsThePruningWithAnEmptyResult) {
    Outside outside(path);
    ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('x','t',1,0,0,'x.png');"
                            "ALTER TABLE items RENAME TO rows; CREATE VIEW items AS SELECT * FROM rows;"));
    // Reading a view works, deleting from one cannot even be prepared.
    EXPECT_EQ(db.prune(true, {}, {}), ClipboardDatabase::Pruned());
    EXPECT_THAT(outside.values("SELECT COUNT(*) FROM rows"), ElementsAre("1"));
}

TEST_F(DatabaseFixture, aLaterChunkThatCannotBePreparedEndsThePruningThereAndTheEarlierOnesAreGoneAllTheSame) {
    RefusedDeletions refused(1);
    ClipboardDatabase db(path);
    Outside outside(path);
    ASSERT_TRUE(outside.run("BEGIN"));
    for (int i = 0; i < 1200; ++i) {
        const std::string number = std::to_string(i);
        ASSERT_TRUE(outside.run("INSERT INTO items VALUES ('" + freshUuidString().toStdString() + "','t'," + number +
                                ",0,0,'" + number + ".png')"));
    }
    ASSERT_TRUE(outside.run("COMMIT"));
    EXPECT_EQ(db.prune(true, {}, {}), ClipboardDatabase::Pruned()) << "the files of the first chunk are not told";
    EXPECT_EQ(refused.refused(), 1) << "nothing is tried after it";
    EXPECT_THAT(outside.values("SELECT COUNT(*), MIN(date) FROM items"), ElementsAre("700", "500.0"));
    EXPECT_EQ(db.counts().total, 700);
    refused.end();
    const ClipboardDatabase::Pruned rest = db.prune(true, {}, {});
    EXPECT_EQ(rest.deletedCount, 700);
    EXPECT_EQ(rest.imageFileNames.size(), 700);
    EXPECT_EQ(rest.imageFileNames.first(), QStringLiteral("500.png"));
}

TEST_F(ClipboardDatabaseSql, clearingIsTwoStatements) {
    (void)db.clearUnprotected();
    EXPECT_THAT(trace.texts, ElementsAre("SELECT image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 AND "
                                         "image_file_name IS NOT NULL;",
                                         "DELETE FROM items WHERE is_pinned=0 AND is_saved=0;"));
}

TEST_F(ClipboardDatabaseSql, countingIsThreeStatements) {
    (void)db.counts();
    EXPECT_THAT(trace.texts, ElementsAre("SELECT COUNT(*) FROM items;", "SELECT COUNT(*) FROM items WHERE is_pinned=1;",
                                         "SELECT COUNT(*) FROM items WHERE image_file_name IS NOT NULL;"));
}

} // namespace
} // namespace tavrine
