#pragma once

#include "clipboard/UnwrittenRows.h"

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
    void clearUnprotected();

    [[nodiscard]] const UnwrittenRows &unwritten() const { return m_unwritten; }
    [[nodiscard]] bool hasUnwritten() const { return m_hasUnwritten; } ///< on any thread

private:
    /// False when it has to wait.
    bool attempt(const UnwrittenRows::Write &write);
    bool attemptSave(const ClipboardItem &item);
    bool attemptRecord(const ClipboardItem &item);
    bool attemptRemove(const QUuid &id);

    HistoryFile &m_file;
    CurrentRows &m_current;
    UnwrittenRows m_unwritten;
    std::atomic<bool> m_hasUnwritten{false};
};

} // namespace tavrine
