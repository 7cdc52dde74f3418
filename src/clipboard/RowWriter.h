#pragma once

#include "clipboard/UnwrittenRows.h"

#include <QStringList>

#include <atomic>

namespace tavrine {

class CurrentRows;
class HistoryFile;

/// Writes single rows, and keeps in order what the file does not take. Belongs to the queue of the database, but for
/// `hasUnwritten`.
class RowWriter {
public:
    RowWriter(HistoryFile &file, CurrentRows &current) : m_file(file), m_current(current) {}

    /// Now, or after what waits already.
    void write(UnwrittenRows::Write write);
    /// Writes what waits, as far as the file takes it.
    void writeWaiting();
    /// Everything unprotected goes, now or after what waits already; new copies that wait, now.
    void clearUnprotected();
    /// The files that clears have left without a row since this was asked last. Not those that another row has, in the
    /// file or waiting: a new recording may have the name that a cleared one had. What the file does not tell now is
    /// left to the next time.
    [[nodiscard]] QStringList takeClearedFiles();

    /// The files of rows that are to go, while the clear itself finds no room on the disk: no other row has them. Each
    /// is told once.
    [[nodiscard]] QStringList takeFilesForRoom();

    /// True when the file refused the last clear for good: what it was to take stands.
    [[nodiscard]] bool hasClearFailed() const { return m_hasClearFailed; }

    [[nodiscard]] const UnwrittenRows &unwritten() const { return m_unwritten; }
    [[nodiscard]] bool hasUnwritten() const { return m_hasUnwritten; } ///< on any thread

private:
    /// False when it has to wait.
    bool attempt(const UnwrittenRows::Write &write);
    bool attemptSave(const ClipboardItem &item);
    bool attemptRecord(const ClipboardItem &item);
    bool attemptRemove(const QUuid &id);
    bool attemptClear();
    [[nodiscard]] bool hasProtectedRow(const QString &fileName) const;

    HistoryFile &m_file;
    CurrentRows &m_current;
    UnwrittenRows m_unwritten;
    QStringList m_clearedFiles;
    QStringList m_filesForRoom;
    bool m_hasClearFailed = false;
    std::atomic<bool> m_hasUnwritten{false};
};

} // namespace tavrine
