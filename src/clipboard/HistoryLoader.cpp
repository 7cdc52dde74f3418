#include "clipboard/HistoryLoader.h"

#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CutText.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/PlannedReader.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

#include <algorithm>
#include <limits>

namespace tavrine {
namespace {

/// The statement costs the same however many rows it gives, unless their texts are long: then as many are read as a
/// list shows, with some to spare, and not as many as memory could keep.
constexpr std::size_t longTextsForMemory = 8'000'000;
constexpr qint64 rowsOfAList = 256;

/// True when the first `count` of `rows`, or the next one after them, have an order that was SQLite's to choose.
bool hasEqualDates(const std::vector<RecentRows::Row> &rows, std::size_t count) {
    const auto end = rows.begin() + static_cast<std::ptrdiff_t>(std::min(rows.size(), count + 1));
    return std::adjacent_find(rows.begin(), end, [](const RecentRows::Row &a, const RecentRows::Row &b) {
               return a.item.date == b.item.date;
           }) != end;
}

qint64 saturatedSum(qint64 a, qint64 b) {
    qint64 sum = 0;
    return qAddOverflow(a, b, &sum) ? std::numeric_limits<qint64>::max() : sum; // `b` is never negative
}

std::vector<ClipboardItem> firstItems(std::vector<RecentRows::Row> rows, qint64 limit) {
    if (limit >= 0 && static_cast<qint64>(rows.size()) > limit)
        rows.resize(static_cast<std::size_t>(limit));
    std::vector<ClipboardItem> items;
    items.reserve(rows.size());
    for (RecentRows::Row &row : rows)
        items.push_back(std::move(row.item));
    return items;
}

/// What of `items`, a whole history, is asked for.
std::vector<ClipboardItem> lastOf(const std::vector<ClipboardItem> &items, std::optional<Date> since, qint64 limit) {
    std::vector<ClipboardItem> wanted;
    qint64 others = 0;
    for (const ClipboardItem &item : items) {
        const bool isWanted = !since || item.date > *since;
        if (item.isProtected() || (isWanted && (limit < 0 || others++ < limit)))
            wanted.push_back(item);
    }
    return wanted;
}

} // namespace

std::vector<ClipboardItem> HistoryLoader::load(std::optional<Date> since, qint64 limit) {
    if (m_current.isCurrent()) {
        // A limit that would end the process in the statement does so here.
        (void)Statement::checkedInt(saturatedSum(limit, static_cast<qint64>(m_current.rows().protectedCount())));
        if (auto answer = m_current.rows().answer(since, limit))
            return remembered(*std::move(answer), since);
    }
    if (auto answer = loadByStatement(since, limit))
        return remembered(*std::move(answer), since);
    return m_file.busyWait().isHeld() ? lastOf(m_lastAnswer, since, limit) : std::vector<ClipboardItem>();
}

std::vector<ClipboardItem> HistoryLoader::remembered(std::vector<ClipboardItem> answer, std::optional<Date> since) {
    m_file.noteLoad();
    if (!since)
        m_lastAnswer = answer;
    return answer;
}

void HistoryLoader::warmUp() {
    if (!m_current.isCurrent())
        (void)loadByStatement({}, 0);
}

std::optional<std::vector<ClipboardItem>> HistoryLoader::loadByStatement(std::optional<Date> since, qint64 limit) {
    // The limit bounds the unprotected rows alone, so the protected ones are counted on top of it.
    const qint64 protectedCount = readCount(m_file.db(), sql::countProtected);
    Request request{since, saturatedSum(limit, protectedCount),
                    longestWholeTextOf(static_cast<std::size_t>(protectedCount)), 0};
    (void)Statement::checkedInt(request.wanted);
    request.rowLimit = request.wanted;
    if (limit >= 0) {
        const qint64 enough = saturatedSum(qint64{RecentRows::maximumRows}, protectedCount);
        request.rowLimit = std::min<qint64>(std::max(request.wanted, enough), std::numeric_limits<int>::max());
    }
    // The newest rows come first by their date; what SQLite picks for this statement sorts the whole table.
    const auto reader = PlannedReader::open(m_file.db(), PlannedReader::View::newestRows, &m_file.busyWait());

    m_current.forget();
    if (reader)
        reader->setLongTextBudget(longTextsForMemory);
    auto load = run(request, reader.get());
    if (!load && reader && reader->isOverBudget()) {
        reader->setLongTextBudget(0);
        request.rowLimit =
            std::min(request.rowLimit, std::max(request.wanted, saturatedSum(rowsOfAList, protectedCount)));
        load = run(request, reader.get());
    }
    if (!load)
        return std::nullopt;
    if (limit >= 0) {
        load->isCut = static_cast<qint64>(load->rows.size()) == request.rowLimit;
        m_current.takeIn(*load, since, limit);
        // Equal dates need not fall in the same order under another limit.
        if (request.rowLimit != request.wanted && hasEqualDates(load->rows, static_cast<std::size_t>(request.wanted))) {
            request.rowLimit = request.wanted;
            load = run(request, reader.get());
        }
    }
    return load ? std::optional(firstItems(std::move(load->rows), request.wanted)) : std::nullopt;
}

std::optional<CurrentRows::Load> HistoryLoader::run(const Request &request, PlannedReader *reader) {
    if (reader) {
        reader->want(request.rowLimit);
        if (auto load = runOn(reader->db(), request, reader))
            return load;
        if (reader->isBusy())
            return std::nullopt;
    }
    return reader && reader->isOverBudget() ? std::nullopt : runOn(m_file.db(), request, reader);
}

std::optional<CurrentRows::Load> HistoryLoader::runOn(sqlite3 *db, const Request &request,
                                                      const PlannedReader *reader) {
    Statement statement(db, QByteArray(sql::protectedAndUnprotected) + (request.since ? " AND date > ?" : "") +
                                sql::bySavedPinnedAndDate);
    if (!statement.isPrepared()) {
        m_file.noteFailure(statement.code());
        return std::nullopt;
    }
    if (request.since)
        statement.bindDouble(1, request.since->secondsSince1970);
    statement.bindInt(request.since ? 2 : 1, request.rowLimit);

    CurrentRows::Load load;
    Statement::Step step = statement.step();
    // While the statement stands on a row it holds its lock, and nobody can write between the rows and the stamp.
    if (step == Statement::Step::row) {
        load.stamp = ChangeStamp::read(m_file.db());
        load.hasOnlyPlainFlags = load.stamp && reader && reader->hasOnlyPlainFlags();
    }
    for (; step == Statement::Step::row; step = statement.step())
        load.rows.push_back(readListRow(statement, db != m_file.db(), request.longestProtected));
    if (step == Statement::Step::done)
        return load;
    m_file.noteFailure(statement.code());
    return std::nullopt;
}

} // namespace tavrine
