#include "adapters/x11/X11KeyboardMap.h"

namespace tavrine {

X11KeyboardMap::X11KeyboardMap(XcbClient &client, std::function<void()> onChange)
    : m_client(client), m_onChange(std::move(onChange)) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { read(); });
}

void X11KeyboardMap::read() {
    m_timer.stop();
    if (m_firstXkbEvent == 0)
        m_firstXkbEvent = selectKeyboardNotices(m_client);
    m_sinceFirstNotice.invalidate();
    auto keyboard = X11Keyboard::read(m_client);
    if (!keyboard) {
        m_timer.start(betweenTries);
        return;
    }
    m_keyboard = std::move(*keyboard);
    m_isKnown = true;
    m_onChange();
}

KeyboardNotice X11KeyboardMap::take(const xcb_generic_event_t &event) {
    const KeyboardNotice notice = keyboardNotice(event, m_firstXkbEvent);
    if (notice.isMapping) {
        if (!m_sinceFirstNotice.isValid())
            m_sinceFirstNotice.start();
        if (!m_timer.isActive() || m_sinceFirstNotice.elapsed() < longestDelay.count())
            m_timer.start(settling);
    }
    return notice;
}

} // namespace tavrine
