#include "capture/ClearedScreen.h"

#include "base/Time.h"

#include <utility>

namespace tavrine {

void ClearedScreen::clearFor(std::function<void()> look) {
    const bool isClearing = !m_waiting.empty();
    m_waiting.push_back(std::move(look));
    if (isClearing)
        return;
    if (m_windows && m_windows->setAside())
        m_time.asyncAfter(settling, this, [this] { begin(); });
    else
        begin();
}

void ClearedScreen::begin() {
    const auto looks = std::exchange(m_waiting, {});
    m_looks += static_cast<int>(looks.size());
    for (const auto &look : looks)
        look();
}

void ClearedScreen::lookEnded() {
    if (m_looks > 0)
        --m_looks;
    if (m_looks == 0 && m_waiting.empty() && m_windows)
        m_windows->bringBack();
}

} // namespace tavrine
