#include "clipboard/RowWriter.h"

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

#include <utility>

#include <sqlite3.h>

namespace tavrine {

void RowWriter::write(UnwrittenRows::Write write) {
    // Of a cut item the rest is in the file, or waits to be written.
    if (write.item.cut && write.kind != UnwrittenRows::Write::Kind::remove) {
        const auto waiting = m_unwritten.find(write.item.id);
        auto whole = waiting ? std::optional(waiting->content) : readWholeText(m_file.db(), write.item.id);
        if (!whole)
            return; // its row is gone, and so is its text
        write.item.content = *std::move(whole);
        write.item.cut.reset();
    }
    // A removal of a row that waits takes it away without a write, so it goes the same way.
    const bool waits = !m_unwritten.isEmpty();
    // A file that turns out to be gone or no database is seen to, once, and the write made again.
    constexpr int tries = 2;
    for (int i = 0; i < tries && !waits; ++i) {
        if (attempt(write))
            return;
        if (m_file.busyWait().isHeld())
            break;
        m_file.prepare();
    }
    m_unwritten.add(std::move(write));
    writeWaiting();
}

void RowWriter::writeWaiting() {
    while (!m_unwritten.isEmpty() && attempt(m_unwritten.first()))
        m_unwritten.removeFirst();
    m_hasUnwritten = !m_unwritten.isEmpty();
}

void RowWriter::clearUnprotected() {
    m_clearedFiles += m_unwritten.dropNewCopies();
    m_hasUnwritten = !m_unwritten.isEmpty();
    write({UnwrittenRows::Write::Kind::clear, {}});
}

QStringList RowWriter::takeClearedFiles() {
    QStringList withoutRow;
    for (const QString &fileName : std::exchange(m_clearedFiles, {})) {
        if (m_unwritten.hasFile(fileName))
            continue;
        Statement statement(m_file.db(), sql::rowOfFile);
        statement.bindText(1, fileName.toUtf8());
        const Statement::Step step = statement.step();
        if (step == Statement::Step::done)
            withoutRow.append(fileName);
        else if (step == Statement::Step::failed)
            m_clearedFiles.append(fileName);
    }
    return withoutRow;
}

QStringList RowWriter::takeFilesForRoom() {
    QStringList unshared;
    for (const QString &fileName : std::exchange(m_filesForRoom, {}))
        if (!m_unwritten.hasFile(fileName) && !hasProtectedRow(fileName))
            unshared.append(fileName);
    return unshared;
}

/// Also when it cannot be known.
bool RowWriter::hasProtectedRow(const QString &fileName) const {
    Statement statement(m_file.db(), sql::protectedRowOfFile);
    statement.bindText(1, fileName.toUtf8());
    return statement.step() != Statement::Step::done;
}

bool RowWriter::attempt(const UnwrittenRows::Write &write) {
    switch (write.kind) {
    case UnwrittenRows::Write::Kind::save:
        return attemptSave(write.item);
    case UnwrittenRows::Write::Kind::record:
        return m_unwritten.isEmpty() ? attemptSave(write.item) : attemptRecord(write.item);
    case UnwrittenRows::Write::Kind::remove:
        return attemptRemove(write.item.id);
    case UnwrittenRows::Write::Kind::clear:
        break;
    }
    return attemptClear();
}

bool RowWriter::attemptSave(const ClipboardItem &item) {
    Statement statement(m_file.db(), sql::insertOrReplace);
    statement.bindText(1, uuidString(item.id).toLatin1());
    statement.bindText(2, item.content.toUtf8());
    statement.bindDouble(3, item.date.secondsSince1970);
    statement.bindInt(4, item.isPinned ? 1 : 0);
    statement.bindInt(5, item.isSaved ? 1 : 0);
    if (item.imageFileName)
        statement.bindText(6, item.imageFileName->toUtf8());
    else
        statement.bindNull(6);
    const bool isDone = statement.step() == Statement::Step::done;
    if (m_current.noteWrite(isDone, 1))
        m_current.rows().saved(asItReadsBack(item));
    // A file that was taken away in the meantime has the row, and nobody will find it there.
    return isDone ? !m_file.hasMoved() : !m_file.noteFailure(statement.code());
}

bool RowWriter::attemptRecord(const ClipboardItem &item) {
    QByteArrayList duplicates;
    {
        Statement statement(m_file.db(), item.imageFileName ? sql::sameContentAndFile : sql::sameContentWithoutFile);
        statement.bindText(1, item.content.toUtf8());
        if (item.imageFileName)
            statement.bindText(2, item.imageFileName->toUtf8());
        const Statement::Step step = statement.step();
        if (step == Statement::Step::failed && m_file.noteFailure(statement.code()))
            return false;
        if (step == Statement::Step::row) {
            if (readRow(statement).item.isProtected())
                return true;
            duplicates.append(statement.requiredUtf8(0));
        }
    }
    for (const QByteArray &id : duplicates)
        if (const auto uuid = uuidFromString(QString::fromUtf8(id)); uuid && *uuid != item.id && !attemptRemove(*uuid))
            return false;
    return attemptSave(item);
}

bool RowWriter::attemptRemove(const QUuid &id) {
    Statement statement(m_file.db(), sql::deleteById);
    statement.bindText(1, uuidString(id).toLatin1());
    const bool isDone = statement.step() == Statement::Step::done;
    if (m_current.noteDeletion(isDone))
        m_current.rows().removed(id);
    return isDone || !m_file.noteFailure(statement.code());
}

bool RowWriter::attemptClear() {
    QStringList fileNames;
    {
        Statement selection(m_file.db(), sql::unprotectedFiles);
        Statement::Step step = selection.step();
        for (; step == Statement::Step::row; step = selection.step())
            fileNames.append(selection.text(0).value_or(QString()));
        if (step == Statement::Step::failed && m_file.noteFailure(selection.code()))
            return false;
    }
    const int code = sqlite3_exec(m_file.db(), sql::deleteUnprotected, nullptr, nullptr, nullptr) & 0xFF;
    const bool isDone = code == SQLITE_OK;
    if (m_current.noteDeletion(isDone))
        m_current.rows().clearedUnprotected();
    if (isDone)
        m_clearedFiles += fileNames; // a file goes with its row, and not before, unless the clear needs its room
    m_filesForRoom = code == SQLITE_FULL ? fileNames : QStringList();
    const bool mayWait = !isDone && m_file.noteFailure(code);
    m_hasClearFailed = !isDone && !mayWait;
    return !mayWait;
}

} // namespace tavrine
