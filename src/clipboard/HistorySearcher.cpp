#include "clipboard/HistorySearcher.h"

#include "base/CaseInsensitiveText.h"
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

std::optional<HistorySearcher::Items> HistorySearcher::search(const QString &query, qint64 limit,
                                                              const std::function<bool()> &stop) {
    (void)Statement::checkedInt(limit); // a limit that would end the process in the statement does so here
    const Wanted wanted{query, sql::containsPattern(query).toUtf8(), limit, stop};
    const auto isStopped = [&] { return stop && stop(); };
    if (wanted.pattern.size() <= sqlite3_limit(m_file.db(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1)) { // else it fails
        RecentRows::Found recent = searchRecent(wanted);
        if (recent.items)
            return std::move(recent.items);
        auto found = searchPlanned(wanted, recent.share);
        if (found)
            return found;
        if (isStopped())
            return std::nullopt;
    }
    return searchOn(m_file.db(), wanted, nullptr).value_or(Items());
}

RecentRows::Found HistorySearcher::searchRecent(const Wanted &wanted) {
    if (!m_current.isCurrent() || !m_current.hasOnlyPlainFlags())
        return {};
    const LikePattern like(wanted.pattern.constData(), U'\\');
    const CaseInsensitiveText text(wanted.query);
    return m_current.rows().search(
        [&](const ClipboardItem &item) -> std::optional<bool> {
            if (item.content.contains(QChar::ReplacementCharacter))
                return std::nullopt; // may stand for bytes that mean something else to LIKE
            const QByteArray content = item.content.toUtf8();
            const bool isMatch = like.matches(std::string_view(content.constData(), std::strlen(content.constData())));
            if (item.cut)
                return isMatch && text.isIn(item.content) ? std::optional(true) : std::nullopt;
            if (isMatch && item.imageFileName && item.content == contentOrImage(QString(), item.imageFileName))
                return std::nullopt; // the row may hold the empty text that reads so
            return isMatch;
        },
        wanted.limit);
}

std::optional<HistorySearcher::Items> HistorySearcher::searchPlanned(const Wanted &wanted,
                                                                     std::optional<double> shareOfRecent) {
    if (m_generation != m_file.generation()) {
        m_everyMatch.reset();
        m_newestMatches.reset();
        m_generation = m_file.generation();
    }
    // Where some of the newest rows match, enough of them do so before long.
    const bool areSome = shareOfRecent && *shareOfRecent > someMatches;
    auto &reader = areSome ? m_newestMatches : m_everyMatch;
    if (!reader || !reader->isInPlace())
        reader = PlannedReader::open(m_file.db(),
                                     areSome ? PlannedReader::View::newestMatches : PlannedReader::View::everyMatch,
                                     &m_file.busyWait());
    if (!reader)
        return std::nullopt;
    reader->want(wanted.pattern, wanted.limit, wanted.query);
    reader->setStop(wanted.stop);
    auto found = searchOn(reader->db(), wanted, reader.get());
    reader->setStop({});
    reader->releasePages();
    if (!found && !(wanted.stop && wanted.stop()))
        reader.reset();
    return found;
}

std::optional<HistorySearcher::Items> HistorySearcher::searchOn(sqlite3 *db, const Wanted &wanted,
                                                                const PlannedReader *reader) {
    Statement statement(db, sql::contentLike);
    if (!statement.isPrepared())
        return std::nullopt;
    statement.bindText(1, wanted.pattern);
    statement.bindInt(2, wanted.limit);
    const CaseInsensitiveText text(wanted.query);
    Items found;
    Statement::Step step = statement.step();
    for (; step == Statement::Step::row; step = statement.step()) {
        const bool isContained = reader ? !statement.behindNul(1).ends_with(PlannedReader::doesNotContain)
                                        : text.isIn(statement.requiredText(1));
        RecentRows::Row row = readListRow(statement, reader != nullptr);
        if (isContained || !row.item.cut)
            found.push_back(std::move(row.item));
    }
    if (step == Statement::Step::failed && reader && !reader->isBusy())
        return std::nullopt;
    return found;
}

std::optional<HistorySearcher::Items> HistorySearcher::filter(const Items &cutItems, const QString &text,
                                                              const std::function<bool()> &stop) {
    const CaseInsensitiveText wanted(text);
    Items found;
    for (const ClipboardItem &item : cutItems) {
        if (stop && stop())
            return std::nullopt;
        if (const auto whole = readWholeText(m_file.db(), item.id); whole && wanted.isIn(*whole))
            found.push_back(item);
    }
    return found;
}

} // namespace tavrine
