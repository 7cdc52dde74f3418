#include "clipboard/ClipboardDatabase.h"

#include "base/PrivateFiles.h"
#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/FastLike.h"
#include "clipboard/LikePattern.h"
#include "clipboard/Statement.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr int busyTimeoutMs = 1000;
// Keeps a DELETE under the 999 parameters that an SQLite may be limited to.
constexpr qsizetype idsPerDelete = 500;
/// The part of the newest rows from which on a search looks for its matches among the newest first. At a million rows,
/// that way takes as long as looking at every row when one in two thousand matches.
constexpr double someMatches = 0.001;
constexpr Seconds shortestLookAhead{60};
constexpr Seconds longestLookAhead{3600};

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
RecentRows::Row row(const Statement &statement) {
    const bool hasTextualContent = statement.isText(1); // reading it makes a text of anything
    const QString id = statement.requiredText(0);
    const std::optional<QUuid> uuid = uuidFromString(id);
    RecentRows::Row row;
    row.item.id = uuid.value_or(QUuid::createUuid());
    row.item.imageFileName = statement.text(5);
    row.item.content = contentOrImage(statement.requiredText(1), row.item.imageFileName);
    row.item.date = Date{statement.real(2)};
    row.item.isPinned = statement.flag(3);
    row.item.isSaved = statement.flag(4);
    row.isOrdinary = uuid && uuidString(*uuid) == id && hasTextualContent && statement.isReal(2) &&
                     statement.isPlainFlag(3) && statement.isPlainFlag(4);
    return row;
}

std::vector<ClipboardItem> items(Statement &statement) {
    std::vector<ClipboardItem> result;
    while (statement.step() == Statement::Step::row)
        result.push_back(row(statement).item);
    return result;
}

/// The one number that a counting statement gives; 0 when it fails.
int count(sqlite3 *db, const char *sql) {
    Statement statement(db, sql);
    return statement.step() == Statement::Step::row ? statement.integer(0) : 0;
}

/// What reading the row gives after `item` was saved: bound text ends at its first NUL.
ClipboardItem asItReadsBack(ClipboardItem item) {
    const auto stored = [](const QString &text) {
        const bool isStoredWhole = text.isValidUtf16() && !text.contains(QChar::Null);
        return isStoredWhole ? text : QString::fromUtf8(text.toUtf8().constData());
    };
    if (item.imageFileName)
        item.imageFileName = stored(*item.imageFileName);
    item.content = contentOrImage(stored(item.content), item.imageFileName);
    return item;
}

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

} // namespace

ClipboardDatabase::ClipboardDatabase(const QString &path) : m_queue(QStringLiteral("com.tavrine.clipboard.db")) {
    // A folder that cannot be made leaves a file that cannot be opened, and so no history.
    (void)claimPrivateFolder(QFileInfo(path).absolutePath());
    m_queue.sync([&] {
        makePrivateFile(QFile::encodeName(path));
        claimPrivateFile(path);
        sqlite3_open(path.toUtf8().constData(), &m_db);
        sqlite3_busy_timeout(m_db, busyTimeoutMs);
        // The schema stops at `idx_saved` on a file from before the column; the next two statements give it both,
        // and its remaining indexes appear at the next start. On every other file the second statement fails.
        sqlite3_exec(m_db, sql::schema, nullptr, nullptr, nullptr);
        sqlite3_exec(m_db, sql::addSavedColumn, nullptr, nullptr, nullptr);
        sqlite3_exec(m_db, sql::addSavedIndex, nullptr, nullptr, nullptr);
        installFastLike(m_db);
    });
}

ClipboardDatabase::~ClipboardDatabase() {
    m_queue.sync([&] { sqlite3_close(m_db); });
}

void ClipboardDatabase::save(const ClipboardItem &item) {
    m_queue.sync([&] {
        Statement statement(m_db, sql::insertOrReplace);
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
        if (noteWrite(statement.step() == Statement::Step::done, 1))
            m_recent.saved(asItReadsBack(item));
    });
}

void ClipboardDatabase::remove(const QUuid &id) {
    m_queue.sync([&] {
        Statement statement(m_db, sql::deleteById);
        statement.bindText(1, uuidString(id).toLatin1());
        if (noteDeletion(statement.step() == Statement::Step::done))
            m_recent.removed(id);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadAll(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] {
        Statement statement(m_db, sql::selectAll(since, limit));
        return items(statement);
    });
}

void ClipboardDatabase::warmUp() {
    m_queue.async([this] {
        if (!isRecentCurrent())
            (void)loadByStatement({}, 0);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadProtectedAndRecent(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] {
        if (isRecentCurrent()) {
            // A limit that would end the process in the statement does so here.
            (void)Statement::checkedInt(saturatedSum(limit, static_cast<qint64>(m_recent.protectedCount())));
            if (auto answer = m_recent.answer(since, limit))
                return *std::move(answer);
        }
        return loadByStatement(since, limit);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadByStatement(std::optional<Date> since, qint64 limit) {
    // The limit bounds the unprotected rows alone, so the protected ones are counted on top of it.
    const qint64 protectedCount = count(m_db, sql::countProtected);
    const qint64 wanted = saturatedSum(limit, protectedCount);
    std::vector<RecentRows::Row> rows;
    std::optional<ChangeStamp> stamp;
    // The newest rows come first by their date; what SQLite picks for this statement sorts the whole table.
    const auto reader = PlannedReader::open(m_db, PlannedReader::View::newestRows);
    const auto runOn = [&](sqlite3 *db, qint64 rowLimit) {
        rows.clear();
        Statement statement(db, QByteArray(sql::protectedAndUnprotected) + (since ? " AND date > ?" : "") +
                                    sql::bySavedPinnedAndDate);
        if (!statement.isPrepared())
            return false;
        if (since)
            statement.bindDouble(1, since->secondsSince1970);
        (void)Statement::checkedInt(wanted);
        statement.bindInt(since ? 2 : 1, rowLimit);
        Statement::Step step = statement.step();
        // While the statement stands on a row it holds its lock, and nobody can write between the rows and the stamp.
        stamp = step == Statement::Step::row ? ChangeStamp::read(m_db) : std::nullopt;
        m_hasOnlyPlainFlags = stamp && reader && reader->hasOnlyPlainFlags();
        for (; step == Statement::Step::row; step = statement.step())
            rows.push_back(row(statement));
        return step == Statement::Step::done;
    };
    const auto run = [&](qint64 rowLimit) {
        if (reader)
            reader->want(rowLimit);
        if (reader && runOn(reader->db(), rowLimit))
            return true;
        return !(reader && reader->isBusy()) && runOn(m_db, rowLimit);
    };

    m_recent.forget();
    if (limit < 0) {
        run(wanted);
    } else {
        // The statement costs the same however many rows it gives: it is run for as many as can be kept.
        const qint64 enough = saturatedSum(qint64{RecentRows::maximumRows}, protectedCount);
        const qint64 rowLimit = std::min<qint64>(std::max(wanted, enough), std::numeric_limits<int>::max());
        if (run(rowLimit) && stamp) {
            m_recent.fill(rows, since, static_cast<qint64>(rows.size()) == rowLimit, limit);
            m_stamp = stamp;
        }
        // Equal dates need not fall in the same order under another limit.
        if (rowLimit != wanted && hasEqualDates(rows, static_cast<std::size_t>(wanted)))
            run(wanted);
        if (static_cast<qint64>(rows.size()) > wanted)
            rows.resize(static_cast<std::size_t>(wanted));
    }
    std::vector<ClipboardItem> items;
    items.reserve(rows.size());
    for (RecentRows::Row &row : rows)
        items.push_back(std::move(row.item));
    return items;
}

std::optional<std::vector<ClipboardItem>> ClipboardDatabase::searchOn(sqlite3 *db, const QByteArray &pattern,
                                                                      qint64 limit, const PlannedReader *reader) {
    Statement statement(db, sql::contentLike);
    if (!statement.isPrepared())
        return std::nullopt;
    statement.bindText(1, pattern);
    statement.bindInt(2, limit);
    std::vector<ClipboardItem> found;
    Statement::Step step = statement.step();
    for (; step == Statement::Step::row; step = statement.step())
        found.push_back(row(statement).item);
    if (step == Statement::Step::failed && reader && !reader->isBusy())
        return std::nullopt;
    return found;
}

RecentRows::Found ClipboardDatabase::searchRecent(const QByteArray &pattern, qint64 limit) {
    if (!isRecentCurrent() || !m_hasOnlyPlainFlags)
        return {};
    const LikePattern like(pattern.constData(), U'\\');
    return m_recent.search(
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

std::vector<ClipboardItem> ClipboardDatabase::search(const QString &query, qint64 limit) {
    return m_queue.sync([&] {
        (void)Statement::checkedInt(limit); // a limit that would end the process in the statement does so here
        const QByteArray pattern = sql::containsPattern(query).toUtf8();
        if (pattern.size() <= sqlite3_limit(m_db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1)) { // else the statement fails
            RecentRows::Found recent = searchRecent(pattern, limit);
            if (recent.items)
                return *std::move(recent.items);
            // Where some of the newest rows match, enough of them do so before long.
            const bool areSome = recent.share && *recent.share > someMatches;
            auto &searcher = areSome ? m_newestSearcher : m_searcher;
            if (!searcher || !searcher->isInPlace())
                searcher = PlannedReader::open(m_db, areSome ? PlannedReader::View::newestMatches
                                                             : PlannedReader::View::everyMatch);
            if (searcher) {
                searcher->want(pattern, limit);
                auto found = searchOn(searcher->db(), pattern, limit, searcher.get());
                searcher->releasePages();
                if (found)
                    return *std::move(found);
                searcher.reset();
            }
        }
        return searchOn(m_db, pattern, limit, nullptr).value_or(std::vector<ClipboardItem>());
    });
}

std::optional<ClipboardItem> ClipboardDatabase::findDuplicate(const std::optional<QString> &imageFileName,
                                                              const QString &content) {
    return m_queue.sync([&]() -> std::optional<ClipboardItem> {
        Statement statement(m_db, imageFileName ? sql::sameContentAndFile : sql::sameContentWithoutFile);
        statement.bindText(1, content.toUtf8());
        if (imageFileName)
            statement.bindText(2, imageFileName->toUtf8());
        if (statement.step() != Statement::Step::row)
            return std::nullopt;
        return row(statement).item;
    });
}

ClipboardDatabase::Pruned ClipboardDatabase::prune(bool imagesOnly, std::optional<Date> before,
                                                   std::optional<qint64> keepNewest) {
    return m_queue.sync([&]() -> Pruned {
        if (imagesOnly && isNothingToPrune(before, keepNewest))
            return {};
        Pruned pruned;
        QByteArrayList ids;
        const bool isWhole = selectForPruning(imagesOnly, before, keepNewest, ids, pruned.imageFileNames);
        bool isEveryChunkDone = isWhole;
        for (qsizetype first = 0; first < ids.size(); first += idsPerDelete) {
            const QByteArrayList chunk = ids.mid(first, idsPerDelete);
            const QByteArrayList marks(chunk.size(), "?");
            Statement deletion(m_db, "DELETE FROM items WHERE id IN (" + marks.join(',') + ");");
            // Earlier chunks are gone all the same, and their files stay: there is no transaction to take back.
            if (!deletion.isPrepared())
                return {};
            for (qsizetype i = 0; i < chunk.size(); ++i)
                deletion.bindText(static_cast<int>(i + 1), chunk.at(i));
            const bool isDone = deletion.step() == Statement::Step::done;
            isEveryChunkDone = isEveryChunkDone && isDone;
            if (noteDeletion(isDone))
                forgetRows(chunk);
        }
        if (imagesOnly && before && !keepNewest && isEveryChunkDone && isRecentCurrent())
            m_recent.foundNoMediaBefore(*before);
        pruned.deletedCount = static_cast<int>(ids.size());
        return pruned;
    });
}

bool ClipboardDatabase::selectForPruning(bool imagesOnly, std::optional<Date> before, std::optional<qint64> keepNewest,
                                         QByteArrayList &ids, QStringList &imageFileNames) {
    Statement selection(m_db, sql::pruneSelection(imagesOnly, before.has_value(), keepNewest.has_value()));
    if (!selection.isPrepared())
        return false;
    int index = 0;
    if (before)
        selection.bindDouble(++index, before->secondsSince1970);
    if (before && keepNewest)
        selection.bindDouble(++index, before->secondsSince1970);
    if (keepNewest)
        selection.bindInt(++index, *keepNewest);
    Statement::Step step = selection.step();
    for (; step == Statement::Step::row; step = selection.step()) {
        ids.append(selection.requiredUtf8(0));
        if (auto fileName = selection.text(1))
            imageFileNames.append(*std::move(fileName));
    }
    return step == Statement::Step::done;
}

bool ClipboardDatabase::isNothingToPrune(std::optional<Date> before, std::optional<qint64> keepNewest) {
    if (!m_recent.isWarm())
        return false;
    if (keepNewest)
        (void)Statement::checkedInt(*keepNewest);
    // The number first: a file that is still unchanged afterwards had that number all along.
    const int mediaCount = count(m_db, sql::countMedia);
    if (!isRecentCurrent())
        return false;
    if (m_recent.isNothingToPrune(mediaCount, before, keepNewest))
        return true;
    if (!before || keepNewest)
        return false;
    // The cut-off moves on with every copy. One look ahead, which reads and deletes nothing, spares the next ones.
    const Date later = *before + m_lookAhead;
    QByteArrayList ids;
    QStringList files;
    const bool isNothing = selectForPruning(true, later, {}, ids, files) && ids.isEmpty() && isRecentCurrent();
    m_lookAhead = std::clamp(isNothing ? m_lookAhead * 2 : m_lookAhead / 2, shortestLookAhead, longestLookAhead);
    if (isNothing)
        m_recent.foundNoMediaBefore(later);
    return isNothing;
}

QStringList ClipboardDatabase::clearUnprotected() {
    return m_queue.sync([&] {
        QStringList fileNames;
        {
            Statement selection(m_db, sql::unprotectedFiles);
            while (selection.step() == Statement::Step::row)
                fileNames.append(selection.text(0).value_or(QString()));
        }
        if (noteDeletion(sqlite3_exec(m_db, sql::deleteUnprotected, nullptr, nullptr, nullptr) == SQLITE_OK))
            m_recent.clearedUnprotected();
        return fileNames;
    });
}

ClipboardDatabase::Counts ClipboardDatabase::counts() {
    return m_queue.sync([&] {
        Counts counts;
        counts.total = count(m_db, sql::countAll);
        counts.pinned = count(m_db, sql::countPinned);
        counts.images = count(m_db, sql::countMedia);
        return counts;
    });
}

bool ClipboardDatabase::isRecentCurrent() {
    if (m_recent.isWarm() && ChangeStamp::read(m_db) != m_stamp)
        m_recent.forget();
    return m_recent.isWarm();
}

bool ClipboardDatabase::noteWrite(bool isDone, quint32 writes) {
    if (!m_recent.isWarm())
        return false;
    const std::optional<ChangeStamp> now = ChangeStamp::read(m_db);
    if (isDone && now && m_stamp && now->follows(*m_stamp, writes))
        m_stamp = now;
    else
        m_recent.forget();
    return m_recent.isWarm();
}

bool ClipboardDatabase::noteDeletion(bool isDone) {
    // A deletion that met no row leaves the file as it was.
    return noteWrite(isDone, sqlite3_changes(m_db) > 0 ? 1 : 0);
}

void ClipboardDatabase::forgetRows(const QByteArrayList &ids) {
    for (const QByteArray &text : ids) {
        // Another spelling of a UUID is another row.
        const auto id = uuidFromString(QString::fromUtf8(text));
        if (id && uuidString(*id).toLatin1() == text)
            m_recent.removed(*id);
    }
}

} // namespace tavrine
