#pragma once

#include "adapters/wayland/WaylandKeyboardHold.h"
#include "adapters/wayland/WaylandReader.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <gtest/gtest.h>

namespace tavrine::testing {

/// Who has the keyboard and keeps it: on KWin its own choosing of a window, elsewhere another program's surface over
/// everything. Nothing of what is typed arrives anywhere meanwhile.
class KeyboardOwner {
public:
    explicit KeyboardOwner(WaylandHand &hand) : m_hand(hand) {}
    ~KeyboardOwner() { letGo(); }
    KeyboardOwner(const KeyboardOwner &) = delete;
    KeyboardOwner &operator=(const KeyboardOwner &) = delete;

    void take() {
        m_hasIt = true;
        if (qEnvironmentVariableIsSet("SWAYSOCK")) {
            m_hold = new WaylandKeyboardHold(std::make_shared<WaylandReader>(), [] {});
            EXPECT_TRUE(waitUntil([this] { return m_hold->state() == WaylandKeyboardHold::State::whole; }));
            return;
        }
        const auto toKWin = [](const char *interface, const char *method) {
            return QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/KWin"),
                                                  QLatin1String(interface), QLatin1String(method));
        };
        auto bus = QDBusConnection::sessionBus();
        bus.asyncCall(toKWin("org.kde.KWin", "queryWindowInfo"));
        (void)bus.call(toKWin("org.freedesktop.DBus.Peer", "Ping")); // it has begun then
    }
    void letGo() {
        if (!std::exchange(m_hasIt, false))
            return;
        if (m_hold)
            std::exchange(m_hold, nullptr)->leave();
        else
            m_hand.tap(KEY_ESC);
    }

private:
    WaylandHand &m_hand;
    WaylandKeyboardHold *m_hold = nullptr; ///< owns itself
    bool m_hasIt = false;
};

} // namespace tavrine::testing
