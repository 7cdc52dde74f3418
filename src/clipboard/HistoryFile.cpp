#include "clipboard/HistoryFile.h"

#include "base/PrivateFiles.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/FastLike.h"

#include <QFile>
#include <QFileInfo>

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

} // namespace

HistoryFile::HistoryFile(QString path) : m_path(std::move(path)) {}

HistoryFile::~HistoryFile() {
    sqlite3_close(m_db);
}

void HistoryFile::open() {
    // A folder that cannot be made leaves a file that cannot be opened, and so no history.
    (void)claimPrivateFolder(QFileInfo(m_path).absolutePath());
    makePrivateFile(QFile::encodeName(m_path));
    claimPrivateFile(m_path);
    sqlite3_open(m_path.toUtf8().constData(), &m_db);
    sqlite3_busy_timeout(m_db, busyTimeoutMs);
    // The schema stops at `idx_saved` on a file from before the column; the next two statements give it both,
    // and its remaining indexes appear at the next start. On every other file the second statement fails.
    sqlite3_exec(m_db, sql::schema, nullptr, nullptr, nullptr);
    sqlite3_exec(m_db, sql::addSavedColumn, nullptr, nullptr, nullptr);
    sqlite3_exec(m_db, sql::addSavedIndex, nullptr, nullptr, nullptr);
    installFastLike(m_db);
}

} // namespace tavrine
