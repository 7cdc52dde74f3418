#include "clipboard/ClipboardDatabase.h"

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/HistoryLoader.h"
#include "clipboard/HistorySearcher.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

#include <sqlite3.h>

namespace tavrine {

struct ClipboardDatabase::Parts {
    explicit Parts(const QString &path) : file(path) {}

    HistoryFile file;
    CurrentRows current{file};
    HistoryLoader loader{file, current};
    HistorySearcher searcher{file, current};
    RowPruner pruner{file, current};
};

ClipboardDatabase::ClipboardDatabase(const QString &path)
    : m_parts(std::make_unique<Parts>(path)), m_queue(QStringLiteral("com.tavrine.clipboard.db")) {
    m_queue.sync([&] { m_parts->file.open(); });
}

ClipboardDatabase::~ClipboardDatabase() {
    m_queue.sync([&] { m_parts.reset(); });
}

void ClipboardDatabase::save(const ClipboardItem &item) {
    m_queue.sync([&] {
        Statement statement(m_parts->file.db(), sql::insertOrReplace);
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
        if (m_parts->current.noteWrite(statement.step() == Statement::Step::done, 1))
            m_parts->current.rows().saved(asItReadsBack(item));
    });
}

void ClipboardDatabase::remove(const QUuid &id) {
    m_queue.sync([&] {
        Statement statement(m_parts->file.db(), sql::deleteById);
        statement.bindText(1, uuidString(id).toLatin1());
        if (m_parts->current.noteDeletion(statement.step() == Statement::Step::done))
            m_parts->current.rows().removed(id);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadAll(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] {
        Statement statement(m_parts->file.db(), sql::selectAll(since, limit));
        return readItems(statement);
    });
}

void ClipboardDatabase::warmUp() {
    m_queue.async([this] { m_parts->loader.warmUp(); });
}

std::vector<ClipboardItem> ClipboardDatabase::loadProtectedAndRecent(std::optional<Date> since, qint64 limit) {
    return m_queue.sync([&] { return m_parts->loader.load(since, limit); });
}

std::vector<ClipboardItem> ClipboardDatabase::search(const QString &query, qint64 limit) {
    return m_queue.sync([&] { return m_parts->searcher.search(query, limit); });
}

std::optional<ClipboardItem> ClipboardDatabase::findDuplicate(const std::optional<QString> &imageFileName,
                                                              const QString &content) {
    return m_queue.sync([&]() -> std::optional<ClipboardItem> {
        Statement statement(m_parts->file.db(), imageFileName ? sql::sameContentAndFile : sql::sameContentWithoutFile);
        statement.bindText(1, content.toUtf8());
        if (imageFileName)
            statement.bindText(2, imageFileName->toUtf8());
        if (statement.step() != Statement::Step::row)
            return std::nullopt;
        return readRow(statement).item;
    });
}

ClipboardDatabase::Pruned ClipboardDatabase::prune(bool imagesOnly, std::optional<Date> before,
                                                   std::optional<qint64> keepNewest) {
    return m_queue.sync([&] { return m_parts->pruner.prune({imagesOnly, before, keepNewest}); });
}

QStringList ClipboardDatabase::clearUnprotected() {
    return m_queue.sync([&] {
        sqlite3 *db = m_parts->file.db();
        QStringList fileNames;
        {
            Statement selection(db, sql::unprotectedFiles);
            while (selection.step() == Statement::Step::row)
                fileNames.append(selection.text(0).value_or(QString()));
        }
        const bool isDone = sqlite3_exec(db, sql::deleteUnprotected, nullptr, nullptr, nullptr) == SQLITE_OK;
        if (m_parts->current.noteDeletion(isDone))
            m_parts->current.rows().clearedUnprotected();
        return fileNames;
    });
}

ClipboardDatabase::Counts ClipboardDatabase::counts() {
    return m_queue.sync([&] {
        sqlite3 *db = m_parts->file.db();
        Counts counts;
        counts.total = readCount(db, sql::countAll);
        counts.pinned = readCount(db, sql::countPinned);
        counts.images = readCount(db, sql::countMedia);
        return counts;
    });
}

} // namespace tavrine
