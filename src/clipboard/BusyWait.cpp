#include "clipboard/BusyWait.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <sqlite3.h>

namespace tavrine {

void BusyWait::install(sqlite3 *db) {
    sqlite3_busy_handler(db, wait, this);
}

void BusyWait::begin() {
    m_waited.invalidate();
    m_isImpatient = false;
}

int BusyWait::wait(void *self, int tries) {
    auto &wait = *static_cast<BusyWait *>(self);
    if (wait.m_isImpatient)
        return 0;
    if (!wait.m_waited.isValid())
        wait.m_waited.start();
    if (wait.m_isHeld || wait.m_waited.elapsed() >= longestMs) {
        wait.m_isHeld = true;
        return 0;
    }
    // Short at first, for most locks last a commit; then often enough that the last one is not felt.
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(tries + 1, 25)));
    return 1;
}

} // namespace tavrine
