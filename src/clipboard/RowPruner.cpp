#include "clipboard/RowPruner.h"

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

#include <algorithm>

namespace tavrine {
namespace {

// Keeps a DELETE under the 999 parameters that an SQLite may be limited to.
constexpr qsizetype idsPerDelete = 500;
constexpr Seconds shortestLookAhead{60};
constexpr Seconds longestLookAhead{3600};

} // namespace

RowPruner::Pruned RowPruner::prune(const Request &request) {
    if (request.imagesOnly && isNothingToPrune(request))
        return {};
    const Selection selection = select(request);
    for (qsizetype first = 0; first < selection.ids.size(); first += idsPerDelete) {
        // Earlier chunks are gone all the same, and their files stay: there is no transaction to take back.
        if (!remove(selection.ids.mid(first, idsPerDelete)))
            return {};
    }
    if (request.imagesOnly && request.before && !request.keepNewest && selection.isWhole && m_current.isCurrent())
        m_current.rows().foundNoMediaBefore(*request.before);
    return {selection.imageFileNames, static_cast<int>(selection.ids.size())};
}

bool RowPruner::remove(const QByteArrayList &ids) {
    const QByteArrayList marks(ids.size(), "?");
    Statement deletion(m_file.db(), "DELETE FROM items WHERE id IN (" + marks.join(',') + ");");
    for (qsizetype i = 0; i < ids.size(); ++i)
        deletion.bindText(static_cast<int>(i + 1), ids.at(i));
    const bool isDone = deletion.step() == Statement::Step::done;
    if (m_current.noteDeletion(isDone))
        forgetRows(ids);
    return isDone;
}

RowPruner::Selection RowPruner::select(const Request &request) {
    const auto &[imagesOnly, before, keepNewest] = request;
    Statement statement(m_file.db(), sql::pruneSelection(imagesOnly, before.has_value(), keepNewest.has_value()));
    if (!statement.isPrepared())
        return {};
    int index = 0;
    if (before)
        statement.bindDouble(++index, before->secondsSince1970);
    if (before && keepNewest)
        statement.bindDouble(++index, before->secondsSince1970);
    if (keepNewest)
        statement.bindInt(++index, *keepNewest);
    Selection selection;
    Statement::Step step = statement.step();
    for (; step == Statement::Step::row; step = statement.step()) {
        selection.ids.append(statement.requiredUtf8(0));
        if (auto fileName = statement.text(1))
            selection.imageFileNames.append(*std::move(fileName));
    }
    selection.isWhole = step == Statement::Step::done;
    return selection;
}

bool RowPruner::isNothingToPrune(const Request &request) {
    if (!m_current.rows().isWarm())
        return false;
    if (request.keepNewest)
        (void)Statement::checkedInt(*request.keepNewest);
    // The number first: a file that is still unchanged afterwards had that number all along.
    const int mediaCount = readCount(m_file.db(), sql::countMedia);
    if (!m_current.isCurrent())
        return false;
    if (m_current.rows().isNothingToPrune(mediaCount, request.before, request.keepNewest))
        return true;
    if (!request.before || request.keepNewest)
        return false;
    // The cut-off moves on with every copy. One look ahead, which reads and deletes nothing, spares the next ones.
    const Date later = *request.before + m_lookAhead;
    const Selection ahead = select({true, later, {}});
    const bool isNothing = ahead.isWhole && ahead.ids.isEmpty() && m_current.isCurrent();
    m_lookAhead = std::clamp(isNothing ? m_lookAhead * 2 : m_lookAhead / 2, shortestLookAhead, longestLookAhead);
    if (isNothing)
        m_current.rows().foundNoMediaBefore(later);
    return isNothing;
}

void RowPruner::forgetRows(const QByteArrayList &ids) {
    for (const QByteArray &text : ids) {
        // Another spelling of a UUID is another row.
        const auto id = uuidFromString(QString::fromUtf8(text));
        if (id && uuidString(*id).toLatin1() == text)
            m_current.rows().removed(*id);
    }
}

} // namespace tavrine
