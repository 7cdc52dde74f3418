#include "adapters/linux/InhibitCall.h"

#include "adapters/linux/SessionBus.h"

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// Nobody waits meanwhile, and one who hangs may go on after a night.
constexpr auto longestInhibition = 24h;

bool isSame(const std::optional<QDBusMessage> &a, const std::optional<QDBusMessage> &b) {
    return a.has_value() == b.has_value() && (!a || a->arguments() == b->arguments());
}

} // namespace

InhibitCall::InhibitCall(Service service, std::function<void()> onChange)
    : m_service(std::move(service)), m_onChange(std::move(onChange)) {}

InhibitCall::~InhibitCall() {
    if (m_isHeld)
        giveBack(m_hold);
}

void InhibitCall::want(const std::optional<QDBusMessage> &call) {
    if (isSame(call, m_call))
        return;
    m_call = call;
    if (!m_call) {
        if (m_isHeld)
            giveBack(m_hold);
        forget();
        m_hold.reset();
    } else if (m_bus && m_bus->isConnected()) {
        ask();
    } else if (!m_isFollowing) {
        m_isFollowing = true;
        m_isAsking = true;
        m_service.follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
    }
}

/// What is under way is nobody's any more, and nothing is held.
void InhibitCall::forget() {
    ++m_question;
    m_isAsking = false;
    m_isHeld = false;
}

void InhibitCall::onBusOpen(const QDBusConnection &bus) {
    forget();
    m_bus = bus;
    if (bus.isConnected()) {
        m_watcher =
            std::make_unique<QDBusServiceWatcher>(m_service.name, bus, QDBusServiceWatcher::WatchForOwnerChange);
        connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString &, const QString &, const QString &newOwner) { onOwnerChanged(newOwner); });
        ask();
    }
    tell();
}

void InhibitCall::onOwnerChanged(const QString &newOwner) {
    forget();
    if (!newOwner.isEmpty())
        ask();
    tell();
}

void InhibitCall::ask() {
    if (!m_call)
        return;
    m_isAsking = true;
    sessionBus::ask(
        *m_bus, *m_call, this,
        [this, question = ++m_question](const QDBusPendingCall &reply) { onAnswer(reply.reply(), question); },
        longestInhibition);
}

void InhibitCall::onAnswer(const QDBusMessage &reply, int question) {
    const bool isTaken = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
    const auto hold = isTaken ? std::optional<Hold>(reply.arguments().constFirst()) : std::nullopt;
    if (question != m_question) { // not wanted any more
        giveBack(hold);
        return;
    }
    if (m_isHeld)
        giveBack(m_hold);
    m_hold = hold;
    m_isHeld = isTaken;
    m_isAsking = false;
    tell();
}

void InhibitCall::giveBack(const std::optional<Hold> &hold) const {
    if (hold && m_service.giveBack && m_bus)
        m_bus->send(m_service.giveBack(*hold));
}

void InhibitCall::tell() {
    if (m_onChange)
        m_onChange();
}

} // namespace tavrine
