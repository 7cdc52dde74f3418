#include "clipboard/HistorySearcher.h"

#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/LikePattern.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

#include <cstring>

#include <sqlite3.h>

namespace tavrine {
namespace {

/// The part of the newest rows from which on a search looks for its matches among the newest first. At a million rows,
/// that way takes as long as looking at every row when one in two thousand matches.
constexpr double someMatches = 0.001;

} // namespace

std::vector<ClipboardItem> HistorySearcher::search(const QString &query, qint64 limit) {
    (void)Statement::checkedInt(limit); // a limit that would end the process in the statement does so here
    const QByteArray pattern = sql::containsPattern(query).toUtf8();
    if (pattern.size() <= sqlite3_limit(m_file.db(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1)) { // else it fails
        RecentRows::Found recent = searchRecent(pattern, limit);
        if (recent.items)
            return *std::move(recent.items);
        if (auto found = searchPlanned(pattern, limit, recent.share))
            return *std::move(found);
    }
    return searchOn(m_file.db(), pattern, limit, nullptr).value_or(std::vector<ClipboardItem>());
}

RecentRows::Found HistorySearcher::searchRecent(const QByteArray &pattern, qint64 limit) {
    if (!m_current.isCurrent() || !m_current.hasOnlyPlainFlags())
        return {};
    const LikePattern like(pattern.constData(), U'\\');
    return m_current.rows().search(
        [&like](const ClipboardItem &item) -> std::optional<bool> {
            if (item.content.contains(QChar::ReplacementCharacter))
                return std::nullopt; // may stand for bytes that mean something else to LIKE
            const QByteArray content = item.content.toUtf8();
            const bool isMatch = like.matches(std::string_view(content.constData(), std::strlen(content.constData())));
            if (isMatch && item.imageFileName && item.content == contentOrImage(QString(), item.imageFileName))
                return std::nullopt; // the row may hold the empty text that reads so
            return isMatch;
        },
        limit);
}

std::optional<std::vector<ClipboardItem>> HistorySearcher::searchPlanned(const QByteArray &pattern, qint64 limit,
                                                                         std::optional<double> shareOfRecent) {
    // Where some of the newest rows match, enough of them do so before long.
    const bool areSome = shareOfRecent && *shareOfRecent > someMatches;
    auto &reader = areSome ? m_newestMatches : m_everyMatch;
    if (!reader || !reader->isInPlace())
        reader = PlannedReader::open(m_file.db(),
                                     areSome ? PlannedReader::View::newestMatches : PlannedReader::View::everyMatch);
    if (!reader)
        return std::nullopt;
    reader->want(pattern, limit);
    auto found = searchOn(reader->db(), pattern, limit, reader.get());
    reader->releasePages();
    if (!found)
        reader.reset();
    return found;
}

std::optional<std::vector<ClipboardItem>> HistorySearcher::searchOn(sqlite3 *db, const QByteArray &pattern,
                                                                    qint64 limit, const PlannedReader *reader) {
    Statement statement(db, sql::contentLike);
    if (!statement.isPrepared())
        return std::nullopt;
    statement.bindText(1, pattern);
    statement.bindInt(2, limit);
    std::vector<ClipboardItem> found;
    Statement::Step step = statement.step();
    for (; step == Statement::Step::row; step = statement.step())
        found.push_back(readRow(statement).item);
    if (step == Statement::Step::failed && reader && !reader->isBusy())
        return std::nullopt;
    return found;
}

} // namespace tavrine
