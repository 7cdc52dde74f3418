#include "desktop/GnomeHands.h"

#include "support/Wait.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>

#include <vector>

namespace tavrine::testing {
namespace {

using namespace std::chrono_literals;

const auto serviceName = QStringLiteral("org.gnome.Mutter.RemoteDesktop");
constexpr auto onKey = 60ms; // a finger

void pass(std::chrono::milliseconds length) {
    (void)waitUntil([] { return false; }, length);
}

} // namespace

GnomeHands::GnomeHands() {
    const QDBusReply<QDBusObjectPath> session = m_bus.call(QDBusMessage::createMethodCall(
        serviceName, QStringLiteral("/org/gnome/Mutter/RemoteDesktop"), serviceName, QStringLiteral("CreateSession")));
    if (!session.isValid())
        return;
    m_session = session.value().path();
    call("Start", {});
    tap(evdev::leftShift); // the first key of a new keyboard reaches nobody
}

void GnomeHands::call(const char *method, const QVariantList &arguments) const {
    auto message = QDBusMessage::createMethodCall(serviceName, m_session, serviceName + QStringLiteral(".Session"),
                                                  QString::fromUtf8(method));
    message.setArguments(arguments);
    m_bus.call(message);
}

void GnomeHands::press(quint32 key) const {
    call("NotifyKeyboardKeycode", {key, true});
}

void GnomeHands::release(quint32 key) const {
    call("NotifyKeyboardKeycode", {key, false});
}

void GnomeHands::tap(quint32 key) const {
    chord({key});
}

void GnomeHands::chord(std::initializer_list<quint32> keys) const {
    for (const quint32 key : keys)
        press(key);
    pass(onKey);
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
        release(*key);
    pass(onKey);
}

void GnomeHands::movePointer(QPoint place) {
    // A jump goes no further than to an edge of the screen that the pointer is on, a step to the next one. Not by the
    // upper left corner, which opens the overview.
    const QPoint corner(0, 719);
    constexpr double farAway = 100000;
    if (!m_pointer)
        for (const double left : {farAway, 10.0, farAway})
            call("NotifyPointerMotionRelative", {-left, left == farAway ? farAway : 0});
    const QPoint step = place - std::exchange(m_pointer, place).value_or(corner);
    call("NotifyPointerMotionRelative", {double(step.x()), double(step.y())});
    pass(onKey);
}

void GnomeHands::pressButton() const {
    call("NotifyPointerButton", {0x110, true});
    pass(onKey);
}

void GnomeHands::releaseButton() const {
    call("NotifyPointerButton", {0x110, false});
    pass(onKey);
}

void GnomeHands::leaveOverview() const {
    const auto isOpen = [this] {
        auto ask =
            QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                                           QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        ask.setArguments({QStringLiteral("org.gnome.Shell"), QStringLiteral("OverviewActive")});
        const QDBusReply<QVariant> answer = m_bus.call(ask);
        return !answer.isValid() || answer.value().toBool();
    };
    (void)waitUntil([&] {
        if (isOpen())
            tap(evdev::escape);
        return !isOpen();
    });
}

} // namespace tavrine::testing
