#include "clipboard/ClipboardDatabase.h"

#include "base/PrivateFiles.h"
#include "base/Uuid.h"
#include "clipboard/Statement.h"

#include <QByteArrayList>
#include <QFile>
#include <QFileInfo>

#include <charconv>
#include <cmath>
#include <limits>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

// The layout of these texts is part of the file: SQLite keeps the schema's statements word for word.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS items (\n"
                        "    id              TEXT    PRIMARY KEY NOT NULL,\n"
                        "    content         TEXT    NOT NULL DEFAULT '',\n"
                        "    date            REAL    NOT NULL,\n"
                        "    is_pinned       INTEGER NOT NULL DEFAULT 0,\n"
                        "    is_saved        INTEGER NOT NULL DEFAULT 0,\n"
                        "    image_file_name TEXT\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_date   ON items(date DESC);\n"
                        "CREATE INDEX IF NOT EXISTS idx_pinned ON items(is_pinned);\n"
                        "CREATE INDEX IF NOT EXISTS idx_saved  ON items(is_saved);\n"
                        "CREATE INDEX IF NOT EXISTS idx_images ON items(image_file_name);\n"
                        "CREATE INDEX IF NOT EXISTS idx_content ON items(content);";
constexpr auto addSavedColumn = "ALTER TABLE items ADD COLUMN is_saved INTEGER NOT NULL DEFAULT 0;";
constexpr auto addSavedIndex = "CREATE INDEX IF NOT EXISTS idx_saved ON items(is_saved);";

// NOLINTNEXTLINE(bugprone-macro-parentheses): pieces of text that the compiler joins
#define ITEMS "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM items"

constexpr auto insertOrReplace = "INSERT OR REPLACE INTO items (id, content, date, is_pinned, is_saved, "
                                 "image_file_name)\nVALUES (?,?,?,?,?,?);";
constexpr auto deleteById = "DELETE FROM items WHERE id=?;";
constexpr auto countProtected = "SELECT COUNT(*) FROM items WHERE is_pinned=1 OR is_saved=1;";
constexpr auto protectedAndUnprotected =
    ITEMS "\nWHERE is_pinned=1 OR is_saved=1\nUNION ALL\n" ITEMS "\nWHERE is_pinned=0 AND is_saved=0";
constexpr auto bySavedPinnedAndDate = " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ?;";
constexpr auto contentLike = ITEMS "\nWHERE content LIKE ? ESCAPE '\\'\n"
                                   "ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ?;";
constexpr auto sameContentAndFile = ITEMS " WHERE content=? AND image_file_name=? LIMIT 1;";
constexpr auto sameContentWithoutFile = ITEMS " WHERE content=? AND image_file_name IS NULL LIMIT 1;";
constexpr auto unprotectedFiles =
    "SELECT image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 AND image_file_name IS NOT NULL;";
constexpr auto deleteUnprotected = "DELETE FROM items WHERE is_pinned=0 AND is_saved=0;";
constexpr auto countAll = "SELECT COUNT(*) FROM items;";
constexpr auto countPinned = "SELECT COUNT(*) FROM items WHERE is_pinned=1;";
constexpr auto countMedia = "SELECT COUNT(*) FROM items WHERE image_file_name IS NOT NULL;";

constexpr int busyTimeoutMs = 1000;
// Keeps a DELETE under the 999 parameters that an SQLite may be limited to.
constexpr qsizetype idsPerDelete = 500;

/// Makes the file, if there is none, before SQLite would with a mode that others can read. SQLite takes an empty file
/// for a new database and gives its journal the file's mode. A file or a link that stands is not touched: opening and
/// closing it here would drop the locks of every other connection of the process.
void makePrivateFile(const QByteArray &path) {
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0)
        ::close(file);
}

/// The row that `statement` stands on. A row whose id is no UUID gets a fresh one, so that no update or delete of the
/// item reaches it.
ClipboardItem item(const Statement &statement) {
    ClipboardItem item;
    item.id = uuidFromString(statement.requiredText(0)).value_or(QUuid::createUuid());
    item.imageFileName = statement.text(5);
    item.content = contentOrImage(statement.requiredText(1), item.imageFileName);
    item.date = Date{statement.real(2)};
    item.isPinned = statement.flag(3);
    item.isSaved = statement.flag(4);
    return item;
}

std::vector<ClipboardItem> items(Statement &statement) {
    std::vector<ClipboardItem> result;
    while (statement.step() == Statement::Step::row)
        result.push_back(item(statement));
    return result;
}

/// The one number that a counting statement gives; 0 when it fails.
int count(sqlite3 *db, const char *sql) {
    Statement statement(db, sql);
    return statement.step() == Statement::Step::row ? statement.integer(0) : 0;
}

/// The shortest decimal text that reads back as the same double.
QByteArray shortestDecimal(double value) {
    // Dates need no exponent; beyond what a double counts by ones, the digits before the point would be padding.
    const double size = std::abs(value);
    const bool isFixed = size == 0 || (size >= 1e-5 && size < 1e16);
    char text[64];
    const auto format = isFixed ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(std::begin(text), std::end(text), value, format).ptr;
    return {text, end - text};
}

/// The LIKE pattern for "contains `query`", with what LIKE would take for a wildcard escaped.
QString containsPattern(QString query) {
    query.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    query.replace(QLatin1String("%"), QLatin1String("\\%"));
    query.replace(QLatin1String("_"), QLatin1String("\\_"));
    return QLatin1Char('%') + query + QLatin1Char('%');
}

} // namespace

ClipboardDatabase::ClipboardDatabase(const QString &path) : m_queue(QStringLiteral("com.tavrine.clipboard.db")) {
    // A folder that cannot be made leaves a file that cannot be opened, and so no history.
    (void)makePrivateFolder(QFileInfo(path).absolutePath());
    m_queue.sync([&] {
        makePrivateFile(QFile::encodeName(path));
        sqlite3_open(path.toUtf8().constData(), &m_db);
        sqlite3_busy_timeout(m_db, busyTimeoutMs);
        // The schema stops at `idx_saved` on a file from before the column; the next two statements give it both, and
        // its remaining indexes appear at the next start. On every other file the second statement fails.
        sqlite3_exec(m_db, schema, nullptr, nullptr, nullptr);
        sqlite3_exec(m_db, addSavedColumn, nullptr, nullptr, nullptr);
        sqlite3_exec(m_db, addSavedIndex, nullptr, nullptr, nullptr);
    });
}

ClipboardDatabase::~ClipboardDatabase() {
    m_queue.sync([&] { sqlite3_close(m_db); });
}

void ClipboardDatabase::save(const ClipboardItem &item) {
    m_queue.sync([&] {
        Statement statement(m_db, insertOrReplace);
        if (!statement.isPrepared())
            return;
        statement.bindText(1, uuidString(item.id).toLatin1());
        statement.bindText(2, item.content.toUtf8());
        statement.bindDouble(3, item.date.secondsSince1970);
        statement.bindInt(4, item.isPinned ? 1 : 0);
        statement.bindInt(5, item.isSaved ? 1 : 0);
        if (item.imageFileName)
            statement.bindText(6, item.imageFileName->toUtf8());
        else
            statement.bindNull(6);
        statement.step();
    });
}

void ClipboardDatabase::remove(const QUuid &id) {
    m_queue.sync([&] {
        Statement statement(m_db, deleteById);
        statement.bindText(1, uuidString(id).toLatin1());
        statement.step();
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadAll(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] {
        QByteArray sql = ITEMS;
        if (since)
            sql += " WHERE date > " + shortestDecimal(since->secondsSince1970);
        sql += " ORDER BY is_pinned DESC, date DESC LIMIT " + QByteArray::number(limit) + ";";
        Statement statement(m_db, sql);
        return items(statement);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadProtectedAndRecent(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] {
        // The limit bounds the unprotected rows alone, so the protected ones are counted on top of it.
        const int protectedCount = count(m_db, countProtected);
        Statement statement(m_db, QByteArray(protectedAndUnprotected) + (since ? " AND date > ?" : "") +
                                      bySavedPinnedAndDate);
        if (!statement.isPrepared())
            return std::vector<ClipboardItem>();
        if (since)
            statement.bindDouble(1, since->secondsSince1970);
        qint64 sum = 0;
        if (qAddOverflow(limit, qint64{protectedCount}, &sum))
            sum = std::numeric_limits<qint64>::max();
        statement.bindInt(since ? 2 : 1, sum);
        return items(statement);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::search(const QString &query, qint64 limit) {
    return m_queue.sync([&] {
        Statement statement(m_db, contentLike);
        if (!statement.isPrepared())
            return std::vector<ClipboardItem>();
        statement.bindText(1, containsPattern(query).toUtf8());
        statement.bindInt(2, limit);
        return items(statement);
    });
}

std::optional<ClipboardItem> ClipboardDatabase::findDuplicate(const std::optional<QString> &imageFileName,
                                                              const QString &content) {
    return m_queue.sync([&]() -> std::optional<ClipboardItem> {
        Statement statement(m_db, imageFileName ? sameContentAndFile : sameContentWithoutFile);
        statement.bindText(1, content.toUtf8());
        if (imageFileName)
            statement.bindText(2, imageFileName->toUtf8());
        if (statement.step() != Statement::Step::row)
            return std::nullopt;
        return item(statement);
    });
}

ClipboardDatabase::Pruned ClipboardDatabase::prune(bool imagesOnly, std::optional<Date> before,
                                                   std::optional<qint64> keepNewest) {
    return m_queue.sync([&]() -> Pruned {
        QByteArray conditions = "is_pinned=0 AND is_saved=0";
        if (imagesOnly)
            conditions += " AND image_file_name IS NOT NULL";
        if (before)
            conditions += " AND date < ?";
        QByteArray sql = "SELECT id,image_file_name FROM items WHERE " + conditions + " ORDER BY date ASC";
        if (keepNewest)
            sql += " LIMIT MAX(0, (\n    SELECT COUNT(*) FROM items WHERE " + conditions + "\n ) - ?)";

        Pruned pruned;
        QByteArrayList ids;
        {
            Statement selection(m_db, sql);
            if (!selection.isPrepared())
                return {};
            int index = 0;
            if (before)
                selection.bindDouble(++index, before->secondsSince1970);
            if (before && keepNewest)
                selection.bindDouble(++index, before->secondsSince1970);
            if (keepNewest)
                selection.bindInt(++index, *keepNewest);
            while (selection.step() == Statement::Step::row) {
                ids.append(selection.requiredUtf8(0));
                if (auto fileName = selection.text(1))
                    pruned.imageFileNames.append(*std::move(fileName));
            }
        }

        for (qsizetype first = 0; first < ids.size(); first += idsPerDelete) {
            const QByteArrayList chunk = ids.mid(first, idsPerDelete);
            const QByteArrayList marks(chunk.size(), "?");
            Statement deletion(m_db, "DELETE FROM items WHERE id IN (" + marks.join(',') + ");");
            // Earlier chunks are gone all the same, and their files stay: there is no transaction to take back.
            if (!deletion.isPrepared())
                return {};
            for (qsizetype i = 0; i < chunk.size(); ++i)
                deletion.bindText(static_cast<int>(i + 1), chunk.at(i));
            deletion.step();
        }
        pruned.deletedCount = static_cast<int>(ids.size());
        return pruned;
    });
}

QStringList ClipboardDatabase::clearUnprotected() {
    return m_queue.sync([&] {
        QStringList fileNames;
        {
            Statement selection(m_db, unprotectedFiles);
            while (selection.step() == Statement::Step::row)
                fileNames.append(selection.text(0).value_or(QString()));
        }
        sqlite3_exec(m_db, deleteUnprotected, nullptr, nullptr, nullptr);
        return fileNames;
    });
}

ClipboardDatabase::Counts ClipboardDatabase::counts() {
    return m_queue.sync([&] {
        Counts counts;
        counts.total = count(m_db, countAll);
        counts.pinned = count(m_db, countPinned);
        counts.images = count(m_db, countMedia);
        return counts;
    });
}

} // namespace tavrine
