#include "clipboard/PlannedReader.h"

#include "clipboard/FastLike.h"
#include "clipboard/Statement.h"

#include <sqlite3.h>

namespace tavrine {
namespace {

constexpr int busyTimeoutMs = 1000; // as on the main connection

constexpr auto inTableOrder = "CREATE TEMP VIEW items AS "
                              "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM main.items NOT INDEXED;";
constexpr auto byDate =
    "CREATE TEMP VIEW items AS "
    "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM main.items INDEXED BY idx_date;";

// A look at each end of the flags' indexes, and between the two values.
constexpr auto oddFlags = "SELECT 1 WHERE EXISTS(SELECT 1 FROM main.items WHERE is_saved<0) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_saved>1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_saved>0 AND is_saved<1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned<0) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned>1) "
                          "OR EXISTS(SELECT 1 FROM main.items WHERE is_pinned>0 AND is_pinned<1);";

bool hasMoved(sqlite3 *db) {
    int moved = 0;
    return sqlite3_file_control(db, "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || moved != 0;
}

} // namespace

std::unique_ptr<PlannedReader> PlannedReader::open(sqlite3 *db, Order order) {
    const char *path = db ? sqlite3_db_filename(db, "main") : nullptr;
    if (!path || !*path || hasMoved(db))
        return nullptr;
    sqlite3 *reading = nullptr;
    const int result = sqlite3_open_v2(path, &reading, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    std::unique_ptr<PlannedReader> reader(new PlannedReader(reading)); // closed also when it failed
    if (result != SQLITE_OK)
        return nullptr;
    installFastLike(reading);
    // Not waited for: who asks has another connection, and its wait is the one that counts.
    if (sqlite3_exec(reading, order == Order::byDate ? byDate : inTableOrder, nullptr, nullptr, nullptr) != SQLITE_OK)
        return nullptr;
    sqlite3_busy_timeout(reading, busyTimeoutMs);
    return reader;
}

PlannedReader::~PlannedReader() {
    sqlite3_close(m_db);
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
