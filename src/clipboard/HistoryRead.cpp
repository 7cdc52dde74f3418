#include "clipboard/HistoryRead.h"

#include <utility>

namespace tavrine {

std::optional<HistoryRead::Items> HistoryRead::take(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    m_done.wait_for(lock, patience, [this] { return m_items.has_value(); });
    return std::exchange(m_items, std::nullopt);
}

void HistoryRead::finish(Items items) {
    {
        const std::lock_guard lock(m_mutex);
        m_items = std::move(items);
    }
    m_done.notify_all();
    if (!m_isDropped && m_whenDone)
        m_whenDone();
}

} // namespace tavrine
