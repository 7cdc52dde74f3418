#include "clipboard/PlannedReader.h"

#include "base/Uuid.h"
#include "clipboard/BusyWait.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CutText.h"
#include "clipboard/FastLike.h"
#include "clipboard/Statement.h"

#include <sqlite3.h>

namespace tavrine {
namespace {

// A macro, for the compiler joins texts and not constants. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define ROWS "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM "
#define SHORT_ROWS "SELECT id,beginning(content,id) AS content,date,is_pinned,is_saved,image_file_name FROM "

// These two end with the last row that is wanted. Protected rows are few and have indexes of their own.
constexpr auto newestRows = "CREATE TEMP VIEW items AS " ROWS "(" SHORT_ROWS "main.items INDEXED BY idx_date "
                            "WHERE is_pinned=0 AND is_saved=0 ORDER BY date DESC LIMIT wanted_rows()) "
                            "UNION ALL " SHORT_ROWS "main.items WHERE is_pinned=1 OR is_saved=1;";
constexpr auto newestMatches =
    "CREATE TEMP VIEW items AS " ROWS "(" SHORT_ROWS "main.items INDEXED BY idx_date "
    "WHERE is_pinned=0 AND is_saved=0 AND is_wanted(content) ORDER BY date DESC LIMIT wanted_rows()) "
    "UNION ALL " SHORT_ROWS "main.items WHERE (is_pinned=1 OR is_saved=1) AND is_wanted(content);";
// From the end of the table, where the newest rows are: the statement sorts out the older ones as they come. The other
// way round each row would displace one that came before it. A LIMIT of -1 is none, and keeps SQLite to the order.
constexpr auto everyMatch = "CREATE TEMP VIEW items AS " SHORT_ROWS "main.items NOT INDEXED "
                            "WHERE is_wanted(content) ORDER BY rowid DESC LIMIT -1;";

// A look at each end of the flags' indexes, and between the two values.
constexpr auto oddFlags = "SELECT 1 WHERE EXISTS(SELECT 1 FROM main.items WHERE is_saved<0) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_saved>1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_saved>0 AND is_saved<1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned<0) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned>1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned>0 AND is_pinned<1);";

const char *textOf(PlannedReader::View view) {
    switch (view) {
    case PlannedReader::View::newestRows:
        return newestRows;
    case PlannedReader::View::newestMatches:
        return newestMatches;
    case PlannedReader::View::everyMatch:
        break;
    }
    return everyMatch;
}

bool hasMoved(sqlite3 *db) {
    int moved = 0;
    return sqlite3_file_control(db, "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || moved != 0;
}

/// is_wanted(TEXT): as TEXT LIKE the wanted pattern, which lets no BLOB match.
void isWanted(sqlite3_context *context, int, sqlite3_value **arguments) {
    const auto &pattern = *static_cast<const std::optional<LikePattern> *>(sqlite3_user_data(context));
    bool isMatch = false;
    if (pattern && sqlite3_value_type(arguments[0]) != SQLITE_BLOB) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(arguments[0]));
        isMatch = text && pattern->matches({text, static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]))});
    }
    sqlite3_result_int(context, isMatch ? 1 : 0);
}

/// like(PATTERN, TEXT, ESCAPE) where every row of the view matches, and may be there with its beginning only.
void alwaysLike(sqlite3_context *context, int, sqlite3_value **) {
    sqlite3_result_int(context, 1);
}

int isStopped(void *stop) {
    const auto &isWanted = *static_cast<const std::function<bool()> *>(stop);
    return isWanted && isWanted() ? 1 : 0;
}

std::string_view upToNul(sqlite3_value *value) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return text ? std::string_view(text) : std::string_view();
}

/// True when asking for the row by its item's id finds this row.
bool isReachable(std::string_view id) {
    const auto uuid = uuidFromString(QString::fromUtf8(id.data(), static_cast<qsizetype>(id.size())));
    return uuid && uuidString(*uuid).toLatin1() == QByteArrayView(id.data(), static_cast<qsizetype>(id.size()));
}

/// wanted_rows()
void wantedRows(sqlite3_context *context, int, sqlite3_value **) {
    sqlite3_result_int64(context, *static_cast<const qint64 *>(sqlite3_user_data(context)));
}

} // namespace

void PlannedReader::beginning(sqlite3_context *context, int, sqlite3_value **arguments) {
    auto &reader = *static_cast<PlannedReader *>(sqlite3_user_data(context));
    if (sqlite3_value_type(arguments[0]) != SQLITE_TEXT ||
        sqlite3_value_bytes(arguments[0]) <= static_cast<int>(longestWholeText)) {
        sqlite3_result_value(context, arguments[0]);
        return;
    }
    const std::string_view whole = upToNul(arguments[0]);
    reader.m_longBytes += whole.size();
    if (reader.isOverBudget())
        return sqlite3_result_error(context, "more long text than is wanted", -1);
    const auto beginning = isReachable(upToNul(arguments[1])) ? beginningOf(whole) : std::nullopt;
    if (!beginning) { // up to the NUL alone: nothing but ours stands behind one
        sqlite3_result_text64(context, whole.data(), whole.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        return;
    }
    QByteArray column = columnOf(*beginning);
    const bool isContained = !reader.m_text || reader.m_text->isIn(QString::fromUtf8(beginning->text)) ||
                             reader.m_text->isIn(QString::fromUtf8(whole.data(), static_cast<qsizetype>(whole.size())));
    if (!isContained)
        column += doesNotContain;
    sqlite3_result_text64(context, column.constData(), static_cast<sqlite3_uint64>(column.size()), SQLITE_TRANSIENT,
                          SQLITE_UTF8);
}

std::unique_ptr<PlannedReader> PlannedReader::open(sqlite3 *db, View view, BusyWait *busyWait) {
    const char *path = db ? sqlite3_db_filename(db, "main") : nullptr;
    if (!path || !*path || hasMoved(db))
        return nullptr;
    std::unique_ptr<PlannedReader> reader(new PlannedReader);
    return reader->make(path, view, busyWait) ? std::move(reader) : nullptr;
}

bool PlannedReader::make(const char *path, View view, BusyWait *busyWait) {
    if (sqlite3_open_v2(path, &m_db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
        return false;
    if (view == View::newestRows)
        installFastLike(m_db);
    else
        sqlite3_create_function_v2(m_db, "like", 3, SQLITE_UTF8, nullptr, alwaysLike, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(m_db, "beginning", 2, SQLITE_UTF8, this, beginning, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(m_db, "is_wanted", 1, SQLITE_UTF8, &m_pattern, isWanted, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(m_db, "wanted_rows", 0, SQLITE_UTF8, &m_limit, wantedRows, nullptr, nullptr, nullptr);
    // Not waited for: who asks has another connection, and its wait is the one that counts.
    if (sqlite3_exec(m_db, textOf(view), nullptr, nullptr, nullptr) != SQLITE_OK)
        return false;
    if (busyWait)
        busyWait->install(m_db);
    else
        sqlite3_busy_timeout(m_db, BusyWait::longestMs);
    constexpr int instructionsOfARow = 20; // a row may be long: each asks once
    sqlite3_progress_handler(m_db, instructionsOfARow, isStopped, &m_stop);
    return true;
}

PlannedReader::~PlannedReader() {
    sqlite3_close(m_db);
}

void PlannedReader::want(qint64 limit) {
    m_limit = limit;
}

void PlannedReader::want(const QByteArray &pattern, qint64 limit, const QString &text) {
    m_pattern.emplace(pattern.constData(), U'\\');
    m_limit = limit;
    m_text.reset();
    if (!text.isEmpty())
        m_text.emplace(text);
}

void PlannedReader::setLongTextBudget(std::size_t bytes) {
    m_budget = bytes;
    m_longBytes = 0;
}

bool PlannedReader::isInPlace() const {
    return !hasMoved(m_db);
}

bool PlannedReader::hasOnlyPlainFlags() const {
    return Statement(m_db, oddFlags).step() == Statement::Step::done;
}

void PlannedReader::releasePages() {
    sqlite3_db_release_memory(m_db);
}

bool PlannedReader::isBusy() const {
    return (sqlite3_errcode(m_db) & 0xFF) == SQLITE_BUSY;
}

} // namespace tavrine
