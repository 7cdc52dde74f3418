#pragma once

#include "clipboard/ClipboardItem.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tavrine {

/// A reading of the history that may take long, while its caller goes on. Shared by the caller and the database's
/// queue; whoever lets go of it early says so with `drop`, and it ends without a result.
class HistoryRead {
public:
    using Items = std::vector<ClipboardItem>;

    /// `whenDone` is called on the database's queue, once, unless the reading was dropped before.
    explicit HistoryRead(std::function<void()> whenDone) : m_whenDone(std::move(whenDone)) {}

    /// The result, when it comes within `patience`. Gives it once.
    [[nodiscard]] std::optional<Items> take(std::chrono::milliseconds patience = {});
    void drop() { m_isDropped = true; }

    // For the queue.
    [[nodiscard]] bool isDropped() const { return m_isDropped; }
    void finish(Items items);

private:
    std::atomic<bool> m_isDropped{false};
    std::function<void()> m_whenDone;
    std::mutex m_mutex;
    std::condition_variable m_done;
    std::optional<Items> m_items;
};

} // namespace tavrine
