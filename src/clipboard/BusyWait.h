#pragma once

#include <QElapsedTimer>

struct sqlite3;

namespace tavrine {

/// How long an operation of the database waits while another program holds the file: one second in all, over every
/// statement and connection that it uses. Belongs to the queue of the database.
///
/// To a single statement it is what `sqlite3_busy_timeout` does with 1000 ms. That begins anew with each statement and
/// on each connection, and one copy takes several: whoever counts them together needs a handler.
///
/// An operation that waited in vain leaves the file "held": from then on nothing waits, until a look at the file shows
/// that it can be written again. So a file that is held for a minute costs its readers one second and not sixty.
class BusyWait {
public:
    static constexpr int longestMs = 1000;

    /// Makes `db` wait by these rules.
    void install(sqlite3 *db);
    /// An operation begins: it has the whole second, unless the file is held.
    void begin();
    /// Until the next `begin` nothing waits, and the file does not count as held for that.
    void beginWithoutWaiting() { m_isImpatient = true; }
    /// True after an operation waited in vain, until `release`.
    [[nodiscard]] bool isHeld() const { return m_isHeld; }
    void release() { m_isHeld = false; }

private:
    static int wait(void *self, int tries);

    QElapsedTimer m_waited; ///< since the operation met the lock; not valid before
    bool m_isHeld = false;
    bool m_isImpatient = false;
};

} // namespace tavrine
