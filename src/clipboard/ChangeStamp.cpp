#include "clipboard/ChangeStamp.h"

#include <QtEndian>

#include <algorithm>

#include <sqlite3.h>

namespace tavrine {
namespace {

// Places in the file's header, from SQLite's description of its file format.
constexpr int firstByteRead = 18; ///< file format write version, followed by the read version: 1 for a rollback journal
constexpr int changeCounterPlace = 24;
constexpr int lastByteRead = 39;
constexpr uchar rollbackJournal = 1;

} // namespace

std::optional<ChangeStamp> ChangeStamp::read(sqlite3 *db) {
    sqlite3_file *file = nullptr;
    if (sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || !file || !file->pMethods)
        return std::nullopt;
    std::array<uchar, lastByteRead - firstByteRead + 1> header{};
    if (file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), firstByteRead) != SQLITE_OK)
        return std::nullopt;
    if (header[0] != rollbackJournal || header[1] != rollbackJournal)
        return std::nullopt;
    ChangeStamp stamp;
    std::copy_n(header.begin() + (changeCounterPlace - firstByteRead), size, stamp.m_bytes.begin());
    return stamp;
}

quint32 ChangeStamp::counter() const {
    return qFromBigEndian<quint32>(m_bytes.data());
}

bool ChangeStamp::follows(const ChangeStamp &before, quint32 writes) const {
    return writes == 0 ? *this == before : counter() == before.counter() + writes; // the counter wraps
}

} // namespace tavrine
