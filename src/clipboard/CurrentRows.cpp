#include "clipboard/CurrentRows.h"

#include "clipboard/HistoryFile.h"

#include <sqlite3.h>

namespace tavrine {

bool CurrentRows::isCurrent() {
    const bool isSameFile = m_generation == m_file.generation();
    if (m_rows.isWarm() && (!isSameFile || ChangeStamp::read(m_file.db()) != m_stamp))
        m_rows.forget();
    return m_rows.isWarm();
}

void CurrentRows::takeIn(const Load &load, std::optional<Date> since, qint64 limit) {
    m_rows.forget();
    m_hasOnlyPlainFlags = load.hasOnlyPlainFlags;
    m_stamp = load.stamp;
    m_generation = m_file.generation();
    if (m_stamp)
        m_rows.fill(load.rows, since, load.isCut, limit);
}

bool CurrentRows::noteWrite(bool isDone, quint32 writes) {
    if (!m_rows.isWarm())
        return false;
    const std::optional<ChangeStamp> now = ChangeStamp::read(m_file.db());
    const bool isSameFile = m_generation == m_file.generation();
    if (isDone && isSameFile && now && m_stamp && now->follows(*m_stamp, writes))
        m_stamp = now;
    else
        m_rows.forget();
    return m_rows.isWarm();
}

bool CurrentRows::noteDeletion(bool isDone) {
    // A deletion that met no row leaves the file as it was.
    return noteWrite(isDone, sqlite3_changes(m_file.db()) > 0 ? 1 : 0);
}

} // namespace tavrine
