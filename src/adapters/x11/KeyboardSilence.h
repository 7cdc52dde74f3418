#pragma once

#include <QtGlobal>

#include <atomic>

namespace tavrine {

/// The time in which keys mean nothing to this program, although the server's raw events tell of them past every grab.
/// Shared by who drops the keys and by all who would hear them, some on threads of their own.
///
/// Events wait in the connections of those who listen, so after the end they are known by the server's time: what was
/// dropped last is what is dropped there.
class KeyboardSilence {
public:
    void begin() {
        m_hasKeys = false;
        m_isOn = true;
    }
    /// A key was dropped at that time of the server.
    void drop(quint32 time) {
        if (!m_hasKeys)
            m_first = time;
        m_last = time;
        m_hasKeys = true;
    }
    void end() { m_isOn = false; }

    /// Whether a key of that time is to be passed over. The server's time begins anew every 49 days.
    [[nodiscard]] bool covers(quint32 time) const {
        return m_isOn || (m_hasKeys && time - m_first <= m_last - m_first);
    }

private:
    std::atomic<bool> m_isOn = false;
    std::atomic<bool> m_hasKeys = false;
    std::atomic<quint32> m_first = 0;
    std::atomic<quint32> m_last = 0;
};

} // namespace tavrine
