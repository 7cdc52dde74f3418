#include "clipboard/HistoryFile.h"

#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/FastLike.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// Makes the file, if there is none, before SQLite would with a mode that others can read. SQLite takes an empty file
/// for a new database and gives its journal the file's mode. A file or a link that stands is not touched: opening and
/// closing it here would drop the locks of every other connection of the process.
void makePrivateFile(const QByteArray &path) {
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0)
        ::close(file);
}

int run(sqlite3 *db, const char *sql) {
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) & 0xFF;
}

/// True for what a person can mend while the program runs.
bool isPassing(int code) {
    switch (code) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_FULL:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
    case SQLITE_PERM:
    case SQLITE_NOTADB:
        return true;
    default:
        return false;
    }
}

} // namespace

HistoryFile::HistoryFile(QString path) : m_path(std::move(path)), m_systemPath(QFile::encodeName(m_path)) {}

HistoryFile::~HistoryFile() {
    close();
}

void HistoryFile::prepare() {
    m_busyWait.begin();
    m_lookBefore = look();
    {
        const std::lock_guard lock(m_mutex);
        m_isChanged = m_isChanged || m_lookBefore != m_lastLook;
    }
    const bool isSameFile = m_lookBefore[0] == m_opened[0] && m_lookBefore[1] == m_opened[1];
    if (m_db && (!m_isUpToDate || !isSameFile))
        close();
    m_changesBefore = m_db ? sqlite3_total_changes(m_db) : -1;
    if (!m_db)
        open();
    // One look, which waits for nothing, instead of a second for each operation that would only wait in vain again.
    if (m_busyWait.isHeld() && tryToWrite() == SQLITE_OK)
        m_busyWait.release();
}

int HistoryFile::tryToWrite() {
    const int code = run(m_db, "BEGIN IMMEDIATE;");
    if (code == SQLITE_OK)
        run(m_db, "ROLLBACK;");
    return code;
}

bool HistoryFile::wouldWait() {
    if (m_busyWait.isHeld())
        return false; // that was waited for already
    m_busyWait.beginWithoutWaiting();
    const bool isBusy = tryToWrite() == SQLITE_BUSY;
    m_busyWait.begin();
    return isBusy;
}

void HistoryFile::awaitOther() {
    (void)tryToWrite();
}

void HistoryFile::conclude() {
    const bool hasWritten = m_changesBefore < 0 || sqlite3_total_changes(m_db) != m_changesBefore;
    const Look now = hasWritten ? look() : m_lookBefore;
    const std::lock_guard lock(m_mutex);
    m_lastLook = now;
}

void HistoryFile::open() {
    // A folder that cannot be made leaves a file that cannot be opened, and so no history for now.
    (void)claimPrivateFolder(QFileInfo(m_path).absolutePath());
    makePrivateFile(QFile::encodeName(m_path));
    claimPrivateFile(m_path);
    int code = bringUpToDate();
    if (code == SQLITE_NOTADB) {
        close();
        setAside();
        makePrivateFile(QFile::encodeName(m_path));
        code = bringUpToDate();
    }
    m_isUpToDate = !isPassing(code);
    m_changesBefore = -1;
    const Look now = look();
    if (now[0] != m_opened[0] || now[1] != m_opened[1] || code == SQLITE_NOTADB)
        ++m_generation;
    m_opened = now;
}

int HistoryFile::bringUpToDate() {
    if (sqlite3_open(m_path.toUtf8().constData(), &m_db) != SQLITE_OK)
        return sqlite3_errcode(m_db) & 0xFF;
    m_busyWait.install(m_db);
    installFastLike(m_db);
    // The schema stops at `idx_saved` on a file from before the column; the next two statements give it both,
    // and its remaining indexes appear at the next start. On every other file the second statement fails.
    const int code = run(m_db, sql::schema);
    if (isPassing(code))
        return code; // so would the others
    run(m_db, sql::addSavedColumn);
    return run(m_db, sql::addSavedIndex);
}

void HistoryFile::setAside() {
    const Date now{static_cast<double>(QDateTime::currentSecsSinceEpoch())};
    const std::optional<QString> name = setUnreadableFileAside(m_path, now);
    if (name) {
        // What is left of a write to it would be taken for a write to the new one.
        ::rename(QFile::encodeName(m_path + QStringLiteral("-journal")).constData(),
                 QFile::encodeName(*name + QStringLiteral("-journal")).constData());
        printLine(QStringLiteral("DEBUG: The clipboard history is no database and was set aside as ") + *name);
    } else {
        printLine(QStringLiteral("DEBUG: The clipboard history is no database and cannot be set aside: ") + m_path);
    }
}

void HistoryFile::close() {
    sqlite3_close(m_db);
    m_db = nullptr;
    m_isUpToDate = false;
}

bool HistoryFile::wasSetAside() const {
    const QFileInfo info(m_path);
    const QString aside = info.fileName() + QStringLiteral(".unreadable-");
    const QStringList names = info.dir().entryList(QDir::Files); // without a pattern, whose library a launch would load
    return std::any_of(names.begin(), names.end(), [&](const QString &name) { return name.startsWith(aside); });
}

bool HistoryFile::hasMoved() const {
    int moved = 0;
    return !m_db || sqlite3_file_control(m_db, "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || moved != 0;
}

bool HistoryFile::noteFailure(int code) {
    if (!m_isUpToDate)
        return true; // nothing could succeed
    if (!isPassing(code))
        return false;
    if (code != SQLITE_BUSY && code != SQLITE_LOCKED)
        m_isUpToDate = false; // the next operation opens anew
    return true;
}

HistoryFile::Look HistoryFile::look() const {
    struct stat status {};
    if (::stat(m_systemPath.constData(), &status) != 0)
        return {};
    return {static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

bool HistoryFile::isChanged() const {
    const std::lock_guard lock(m_mutex);
    return m_isChanged || look() != m_lastLook;
}

void HistoryFile::noteLoad() {
    const std::lock_guard lock(m_mutex);
    m_isChanged = false;
}

} // namespace tavrine
