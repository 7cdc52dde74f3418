#pragma once

#include "clipboard/BusyWait.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <mutex>

struct sqlite3;

namespace tavrine {

/// The database's file and the main connection to it. Belongs to the queue of the database, but for `isChanged`.
///
/// Every operation begins with `prepare`, which sees to it that the connection is to what stands at the path now:
///
///  1. A file that was removed, moved, or replaced by another is left, and what stands in its place is opened; where
///     nothing stands, a new file is made.
///  2. What could not be opened or brought up to date (a full disk, one that is mounted for reading, a folder that is
///     not there) is tried again at the next operation.
///  3. A file that is no database is set aside under a name that says so, and a new one is begun.
///  4. A file that is damaged behind its header is neither detected nor repaired.
class HistoryFile {
public:
    explicit HistoryFile(QString path);
    ~HistoryFile();
    HistoryFile(const HistoryFile &) = delete;
    HistoryFile &operator=(const HistoryFile &) = delete;

    /// Before an operation.
    void prepare();
    /// After it. What the file looks like now is what `isChanged` compares with.
    void conclude();

    /// The connection; null when the file cannot be opened, and then every statement fails.
    [[nodiscard]] sqlite3 *db() const { return m_db; }
    /// True when a write would wait for another program that holds the file. Itself it waits for nothing.
    [[nodiscard]] bool wouldWait();
    /// Waits for that program as long as one operation may.
    void awaitOther();
    /// Grows each time that another file was opened: what was known of the one before is void.
    [[nodiscard]] int generation() const { return m_generation; }
    [[nodiscard]] BusyWait &busyWait() { return m_busyWait; }

    /// True when a history that was no database stands beside this one.
    [[nodiscard]] bool wasSetAside() const;
    /// True when the file's place was taken by another, or by none.
    [[nodiscard]] bool hasMoved() const;
    /// The operation failed with `code`, one of SQLite's. True when it may succeed later: another program holds the
    /// file, the disk is full or read-only, the file is gone or no database. `prepare` then does what can be done.
    bool noteFailure(int code);

    /// True when somebody else changed, replaced or removed the file since `noteLoad`. On any thread.
    [[nodiscard]] bool isChanged() const;
    /// The history was loaded as the file has it.
    void noteLoad();

private:
    using Look = std::array<qint64, 5>; ///< device, number, size and moment of the last change; zeros for no file

    void open();
    void close();
    /// Writes nothing, and gives SQLite's word on whether it could.
    int tryToWrite();
    /// SQLite's word on the schema.
    int bringUpToDate();
    void setAside();
    [[nodiscard]] Look look() const;

    QString m_path;
    QByteArray m_systemPath; ///< the same as the system takes it
    sqlite3 *m_db = nullptr;
    BusyWait m_busyWait;
    int m_generation = 0;
    bool m_isUpToDate = false;
    Look m_opened{};         ///< what stood there when it was opened last
    Look m_lookBefore{};     ///< at the beginning of the operation
    int m_changesBefore = 0; ///< rows that the connection had changed by then; -1 when it was opened since
    mutable std::mutex m_mutex;
    Look m_lastLook{}; ///< at the end of the last operation
    bool m_isChanged = false;
};

} // namespace tavrine
