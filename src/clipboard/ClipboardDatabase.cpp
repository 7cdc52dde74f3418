#include "clipboard/ClipboardDatabase.h"

#include "base/CaseInsensitiveText.h"
#include "base/Uuid.h"
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

#include <algorithm>
#include <limits>
#include <tuple>

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
        const bool isHeld = file.busyWait().isHeld();
        if (!isHeld && (!found || writer.unwritten().isEmpty()))
            return found;
        const LikePattern like(sql::containsPattern(query).toUtf8().constData(), U'\\');
        const CaseInsensitiveText text(query);
        const auto isNoMatch = [&](const ClipboardItem &item) {
            return !like.matches(item.content.toStdString()) || (shortened(item).cut && !text.isIn(item.content));
        };
        if (isHeld) { // what is known of the history stands for a file that another program holds
            found = loader.lastAnswer();
            std::erase_if(*found, isNoMatch);
        }
        auto outcome = writer.unwritten().outcome();
        std::erase_if(outcome.rows, isNoMatch);
        found = outcome.appliedTo(*std::move(found), {}, -1);
        if (limit >= 0 && found->size() > static_cast<std::size_t>(limit))
            found->resize(static_cast<std::size_t>(limit));
        return found;
    }

    Counts counts() {
        sqlite3 *db = file.db();
        if (writer.unwritten().isEmpty())
            return {readCount(db, sql::countAll), readCount(db, sql::countPinned), readCount(db, sql::countMedia)};
        const auto outcome = writer.unwritten().outcome();
        Counts counts{readCount(db, outcome.isCleared ? sql::countProtected : sql::countAll),
                      readCount(db, sql::countPinned),
                      readCount(db, outcome.isCleared ? sql::countProtectedMedia : sql::countMedia)};
        const auto add = [&counts](const ClipboardItem &item, int number) {
            counts.total += number;
            counts.pinned += item.isPinned ? number : 0;
            counts.images += item.imageFileName ? number : 0;
        };
        for (const QUuid &id : outcome.ids) { // as the file has them they count no more
            Statement statement(db, sql::rowOfIdWithoutText);
            statement.bindText(1, uuidString(id).toLatin1());
            if (statement.step() == Statement::Step::row)
                if (const ClipboardItem item = readRow(statement).item; item.isProtected() || !outcome.isCleared)
                    add(item, -1);
        }
        for (const ClipboardItem &row : outcome.rows)
            add(row, 1);
        return counts;
    }

    std::optional<std::vector<ClipboardItem>> filter(std::vector<ClipboardItem> cutItems, const QString &text,
                                                     const std::function<bool()> &stop) {
        const CaseInsensitiveText wanted(text);
        std::vector<ClipboardItem> found;
        std::erase_if(cutItems, [&](const ClipboardItem &item) {
            const auto waiting = writer.unwritten().find(item.id);
            if (waiting && wanted.isIn(waiting->content))
                found.push_back(item);
            return waiting.has_value();
        });
        auto inFile = searcher.filter(cutItems, text, stop);
        if (inFile)
            inFile->insert(inFile->end(), found.begin(), found.end());
        return inFile;
    }

    void forEachRow(const std::function<void(const ClipboardItem &)> &take) {
        auto outcome = writer.unwritten().outcome();
        const auto precedes = [](const ClipboardItem &a, const ClipboardItem &b) {
            return std::tuple(a.isPinned, a.date) > std::tuple(b.isPinned, b.date);
        };
        std::stable_sort(outcome.rows.begin(), outcome.rows.end(), precedes);
        auto waiting = outcome.rows.cbegin();
        Statement statement(file.db(), sql::selectAll({}, std::numeric_limits<qint64>::max()));
        while (statement.step() == Statement::Step::row) {
            const ClipboardItem item = readRow(statement).item;
            for (; waiting != outcome.rows.cend() && precedes(*waiting, item); ++waiting)
                take(*waiting);
            if (outcome.keeps(item))
                take(item);
        }
        std::for_each(waiting, outcome.rows.cend(), take);
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
    perform([&] { m_parts->forEachRow(take); });
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
        return unwritten.isEmpty() ? items : unwritten.outcome().appliedTo(std::move(items), since, limit);
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
                  text](const auto &stop) { return m_parts->filter(cutItems, text, stop); },
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
        return m_parts->writer.takeClearedFiles();
    });
}

ClipboardDatabase::Clearing ClipboardDatabase::finishClear() {
    return perform([&]() -> Clearing {
        RowWriter &writer = m_parts->writer;
        if (writer.unwritten().holdsClear())
            return {Clearing::State::waits, writer.takeFilesForRoom()};
        return {writer.hasClearFailed() ? Clearing::State::failed : Clearing::State::done, writer.takeClearedFiles()};
    });
}

ClipboardDatabase::Counts ClipboardDatabase::counts() {
    return perform([&] { return m_parts->counts(); });
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
