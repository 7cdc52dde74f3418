#pragma once

#include <QDBusConnection>
#include <QPoint>
#include <QVariant>

#include <chrono>
#include <initializer_list>
#include <optional>

namespace tavrine::testing {

/// Keys as the kernel numbers them.
namespace evdev {
inline constexpr quint32 escape = 1;
inline constexpr quint32 returnKey = 28;
inline constexpr quint32 leftShift = 42;
inline constexpr quint32 v = 47;
inline constexpr quint32 leftAlt = 56;
inline constexpr quint32 leftSuper = 125;
inline constexpr quint32 two = 3;
inline constexpr quint32 six = 7;
} // namespace evdev

/// The person's hands on a GNOME desktop under Wayland: keys and mouse as the compositor gets them.
class GnomeHands {
public:
    GnomeHands();

    [[nodiscard]] bool areThere() const { return !m_session.isEmpty(); }
    void press(quint32 key) const;
    void release(quint32 key) const;
    /// As a finger does it: the key is down for a moment.
    void tap(quint32 key) const;
    void chord(std::initializer_list<quint32> keys) const;
    /// On the plane of one screen, or of two beside each other, from its upper left corner. Each is 720 high there.
    void movePointer(QPoint place);
    void pressButton() const;
    void releaseButton() const;
    /// Leaves the overview, in which a session begins.
    void leaveOverview() const;

private:
    void call(const char *method, const QVariantList &arguments) const;

    QDBusConnection m_bus = QDBusConnection::sessionBus();
    QString m_session;
    std::optional<QPoint> m_pointer; ///< once it was moved
};

} // namespace tavrine::testing
