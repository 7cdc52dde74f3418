#include "clipboard/ClipboardDatabase.h"

#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/CutText.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/HistoryLoader.h"
#include "clipboard/HistorySearcher.h"
#include "clipboard/LikePattern.h"
#include "clipboard/RowReading.h"
#include "clipboard/RowWriter.h"
#include "clipboard/Statement.h"

#include <limits>

#include <sqlite3.h>

namespace tavrine {

using Kind = UnwrittenRows::Write::Kind;

struct ClipboardDatabase::Parts {
    explicit Parts(const QString &path) : file(path) {}

    HistoryFile file;
    CurrentRows current{file};
    HistoryLoader loader{file, current};
    HistorySearcher searcher{file, current};
    RowPruner pruner{file, current};
    RowWriter writer{file, current};

    void remove(const QUuid &id) {
        ClipboardItem item;
        item.id = id;
        writer.write({Kind::remove, item});
    }

    void prepare() {
        file.prepare();
        if (writer.hasUnwritten())
            writer.writeWaiting();
    }

    std::optional<ClipboardItem> findDuplicate(const std::optional<QString> &imageFileName, const QString &content) {
        if (auto waiting = writer.unwritten().find(imageFileName, content))
            return waiting;
        Statement statement(file.db(), imageFileName ? sql::sameContentAndFile : sql::sameContentWithoutFile);
        statement.bindText(1, content.toUtf8());
        if (imageFileName)
            statement.bindText(2, imageFileName->toUtf8());
        if (statement.step() != Statement::Step::row)
            return std::nullopt;
        return readRow(statement).item;
    }

    std::optional<std::vector<ClipboardItem>> search(const QString &query, qint64 limit,
                                                     const std::function<bool()> &stop) {
        auto found = searcher.search(query, limit, stop);
        if (!file.busyWait().isHeld())
            return found;
        // What is known of the history stands for a file that another program holds.
        const LikePattern like(sql::containsPattern(query).toUtf8().constData(), U'\\');
        std::vector<ClipboardItem> known = writer.unwritten().appliedTo(loader.lastAnswer(), {}, -1);
        std::erase_if(known, [&](const ClipboardItem &item) { return !like.matches(item.content.toStdString()); });
        if (limit >= 0 && known.size() > static_cast<std::size_t>(limit))
            known.resize(static_cast<std::size_t>(limit));
        return known;
    }
};

template <class Work>
auto ClipboardDatabase::perform(Work work) {
    ++m_waiting;
    return m_queue.sync([&] {
        --m_waiting;
        m_parts->prepare();
        struct Conclusion {
            HistoryFile &file;
            ~Conclusion() { file.conclude(); }
        } const conclusion{m_parts->file};
        return work();
    });
}

ClipboardDatabase::ClipboardDatabase(const QString &path)
    : m_parts(std::make_unique<Parts>(path)), m_queue(QStringLiteral("com.tavrine.clipboard.db")) {
    perform([] {});
}

ClipboardDatabase::~ClipboardDatabase() {
    ++m_waiting; // a reading does not go on for nobody
    m_queue.sync([&] { m_parts.reset(); });
}

void ClipboardDatabase::save(const ClipboardItem &item) {
    perform([&] { m_parts->writer.write({Kind::save, item}); });
}

void ClipboardDatabase::record(const ClipboardItem &item) {
    perform([&] { m_parts->writer.write({Kind::record, item}); });
}

bool ClipboardDatabase::recordText(const ClipboardItem &item) {
    return perform([&] {
        const auto duplicate = m_parts->findDuplicate(std::nullopt, item.content);
        if (duplicate && duplicate->isProtected())
            return false;
        if (duplicate)
            m_parts->remove(duplicate->id);
        m_parts->writer.write({Kind::record, item});
        return true;
    });
}

void ClipboardDatabase::remove(const QUuid &id) {
    perform([&] { m_parts->remove(id); });
}

std::optional<QString> ClipboardDatabase::wholeText(const ClipboardItem &item) {
    if (!item.cut)
        return item.content;
    return perform([&]() -> std::optional<QString> {
        if (const auto waiting = m_parts->writer.unwritten().find(item.id))
            return waiting->content;
        return readWholeText(m_parts->file.db(), item.id);
    });
}

void ClipboardDatabase::forEachRow(const std::function<void(const ClipboardItem &)> &take) {
    perform([&] {
        Statement statement(m_parts->file.db(), sql::selectAll({}, std::numeric_limits<qint64>::max()));
        while (statement.step() == Statement::Step::row)
            take(readRow(statement).item);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::loadAll(std::optional<Date> since, qint64 limit) {
    return perform([&] {
        Statement statement(m_parts->file.db(), sql::selectAll(since, limit));
        std::vector<ClipboardItem> items;
        while (statement.step() == Statement::Step::row)
            items.push_back(readRow(statement).item);
        return items;
    });
}

void ClipboardDatabase::warmUp() {
    m_queue.async([this] { m_parts->loader.warmUp(); });
}

std::vector<ClipboardItem> ClipboardDatabase::loadProtectedAndRecent(std::optional<Date> since, qint64 limit) {
    return perform([&] {
        auto items = m_parts->loader.load(since, limit);
        const UnwrittenRows &unwritten = m_parts->writer.unwritten();
        return unwritten.isEmpty() ? items : unwritten.appliedTo(std::move(items), since, limit);
    });
}

std::vector<ClipboardItem> ClipboardDatabase::search(const QString &query, qint64 limit) {
    return perform([&] { return m_parts->search(query, limit, {}).value_or(std::vector<ClipboardItem>()); });
}

std::shared_ptr<HistoryRead> ClipboardDatabase::beginSearch(const QString &query, qint64 limit,
                                                            std::function<void()> whenDone) {
    return begin([this, query, limit](const auto &stop) { return m_parts->search(query, limit, stop); },
                 std::move(whenDone));
}

std::shared_ptr<HistoryRead> ClipboardDatabase::beginFilter(std::vector<ClipboardItem> cutItems, const QString &text,
                                                            std::function<void()> whenDone) {
    return begin([this, cutItems = std::move(cutItems),
                  text](const auto &stop) { return m_parts->searcher.filter(cutItems, text, stop); },
                 std::move(whenDone));
}

std::shared_ptr<HistoryRead> ClipboardDatabase::begin(Reading reading, std::function<void()> whenDone) {
    auto read = std::make_shared<HistoryRead>(std::move(whenDone));
    m_queue.async([this, reading = std::move(reading), read] { continueReading(reading, read); });
    return read;
}

void ClipboardDatabase::continueReading(const Reading &reading, const std::shared_ptr<HistoryRead> &read) {
    const std::function<bool()> stop = [&] { return read->isDropped() || m_waiting > 0; };
    if (read->isDropped() || !m_parts)
        return;
    m_parts->prepare();
    if (auto items = reading(stop))
        return read->finish(*std::move(items));
    if (!read->isDropped()) // somebody waits for the queue; after them it begins anew
        m_queue.async([this, reading, read] { continueReading(reading, read); });
}

std::optional<ClipboardItem> ClipboardDatabase::findDuplicate(const std::optional<QString> &imageFileName,
                                                              const QString &content) {
    return perform([&] { return m_parts->findDuplicate(imageFileName, content); });
}

ClipboardDatabase::Pruned ClipboardDatabase::prune(bool imagesOnly, std::optional<Date> before,
                                                   std::optional<qint64> keepNewest) {
    return perform([&] { return m_parts->pruner.prune({imagesOnly, before, keepNewest}); });
}

QStringList ClipboardDatabase::clearUnprotected() {
    return perform([&] {
        m_parts->writer.clearUnprotected();
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
    return perform([&] {
        sqlite3 *db = m_parts->file.db();
        Counts counts;
        counts.total = readCount(db, sql::countAll);
        counts.pinned = readCount(db, sql::countPinned);
        counts.images = readCount(db, sql::countMedia);
        return counts;
    });
}

std::optional<QSet<QString>> ClipboardDatabase::imageFileNames() {
    return perform([&]() -> std::optional<QSet<QString>> {
        Statement statement(m_parts->file.db(), sql::allFiles);
        QSet<QString> names;
        Statement::Step step = statement.step();
        for (; step == Statement::Step::row; step = statement.step())
            names.insert(statement.text(0).value_or(QString()));
        const bool isCertain =
            step == Statement::Step::done && m_parts->writer.unwritten().isEmpty() && !m_parts->file.wasSetAside();
        return isCertain ? std::optional(names) : std::nullopt;
    });
}

bool ClipboardDatabase::wouldWait() {
    return perform([&] { return m_parts->file.wouldWait(); });
}

void ClipboardDatabase::awaitOther() {
    perform([&] { m_parts->file.awaitOther(); });
}

bool ClipboardDatabase::needsALook() const {
    return m_parts->writer.hasUnwritten() || m_parts->file.isChanged();
}

} // namespace tavrine
