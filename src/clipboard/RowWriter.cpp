#include "clipboard/RowWriter.h"

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CurrentRows.h"
#include "clipboard/HistoryFile.h"
#include "clipboard/RowReading.h"
#include "clipboard/Statement.h"

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
    m_unwritten.clearUnprotected();
    m_hasUnwritten = !m_unwritten.isEmpty();
}

bool RowWriter::attempt(const UnwrittenRows::Write &write) {
    switch (write.kind) {
    case UnwrittenRows::Write::Kind::save:
        return attemptSave(write.item);
    case UnwrittenRows::Write::Kind::record:
        return m_unwritten.isEmpty() ? attemptSave(write.item) : attemptRecord(write.item);
    case UnwrittenRows::Write::Kind::remove:
        break;
    }
    return attemptRemove(write.item.id);
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

} // namespace tavrine
