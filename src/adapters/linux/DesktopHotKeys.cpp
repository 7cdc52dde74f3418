#include "adapters/linux/DesktopHotKeys.h"

#include "adapters/linux/KGlobalAccelClaim.h"
#include "adapters/linux/KGlobalAccelHotKeys.h"
#include "adapters/linux/PortalHotKeys.h"
#include "adapters/linux/SessionBus.h"

#include <algorithm>

namespace tavrine {
namespace {

QDBusMessage ownerOf(const QString &name) {
    const auto bus = QStringLiteral("org.freedesktop.DBus");
    auto message = QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus,
                                                  QStringLiteral("GetNameOwner"));
    message << name;
    return message;
}

QString ownerIn(const QDBusPendingCall &reply) {
    return reply.isError() ? QString() : reply.reply().arguments().value(0).toString();
}

} // namespace

DesktopHotKeys::DesktopHotKeys() {
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
}

DesktopHotKeys::~DesktopHotKeys() = default;

void DesktopHotKeys::onBusOpen(const QDBusConnection &bus) {
    m_hasBus = bus.isConnected();
    if (m_keeper)
        return; // it follows the bus itself
    if (!m_hasBus) {
        for (const auto &[ref, registration] : std::map(m_registrations))
            tell(ref, false);
        return;
    }
    sessionBus::ask(bus, ownerOf(KGlobalAccelClaim::service), this, [this, bus](const QDBusPendingCall &reply) {
        const QString service = ownerIn(reply);
        sessionBus::ask(bus, ownerOf(QStringLiteral("org.kde.KWin")), this,
                        [this, service](const QDBusPendingCall &compositor) {
                            if (m_keeper)
                                return;
                            if (!service.isEmpty() && service == ownerIn(compositor))
                                choose(std::make_unique<KGlobalAccelHotKeys>());
                            else
                                choose(std::make_unique<PortalHotKeys>());
                        });
    });
}

void DesktopHotKeys::choose(std::unique_ptr<HotKeys> keeper) {
    m_keeper = std::move(keeper);
    m_keeper->setOnHeld([this](HotKeyRef kept, bool isHeld) { told(kept, isHeld); });
    for (const auto &[id, title] : m_titles)
        m_keeper->setTitle({0, id}, title);
    if (m_handler)
        m_keeper->installHandler(m_handler);
    for (auto &[ref, registration] : m_registrations)
        registration.kept = m_keeper->registerHotKey(registration.keyCode, registration.modifiers, registration.id);
    for (const auto &[ref, registration] : std::map(m_registrations))
        if (!registration.kept)
            tell(ref, false);
}

void DesktopHotKeys::installHandler(Handler handler) {
    m_handler = std::move(handler);
    if (m_keeper)
        m_keeper->installHandler(m_handler);
}

void DesktopHotKeys::removeHandler() {
    m_handler = nullptr;
    if (m_keeper)
        m_keeper->removeHandler();
}

std::optional<HotKeyRef> DesktopHotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    Registration registration{keyCode, modifiers, id, std::nullopt};
    if (m_keeper) {
        registration.kept = m_keeper->registerHotKey(keyCode, modifiers, id);
        if (!registration.kept)
            return std::nullopt;
    }
    m_registrations[++m_lastRef] = registration;
    return m_lastRef;
}

void DesktopHotKeys::unregisterHotKey(HotKeyRef ref) {
    const auto found = m_registrations.find(ref);
    if (found == m_registrations.end())
        return;
    const auto kept = found->second.kept;
    m_registrations.erase(found);
    if (m_keeper && kept)
        m_keeper->unregisterHotKey(*kept);
}

HotKeyTraits DesktopHotKeys::traits() const {
    if (m_keeper)
        return m_keeper->traits();
    return {.availability = m_hasBus ? HotKeyAvailability::asking : HotKeyAvailability::none,
            .areByPosition = false,
            .isKnownAtOnce = false,
            .keepsKeyboard = false};
}

void DesktopHotKeys::setTitle(HotKeyId id, const QString &title) {
    m_titles[id.id] = title;
    if (m_keeper)
        m_keeper->setTitle(id, title);
}

void DesktopHotKeys::setOnHeld(std::function<void(HotKeyRef, bool)> handler) {
    m_onHeld = std::move(handler);
}

void DesktopHotKeys::told(HotKeyRef kept, bool isHeld) {
    const auto found =
        std::ranges::find_if(m_registrations, [kept](const auto &each) { return each.second.kept == kept; });
    if (found != m_registrations.end())
        tell(found->first, isHeld);
}

void DesktopHotKeys::tell(HotKeyRef ref, bool isHeld) {
    if (m_onHeld)
        m_onHeld(ref, isHeld);
}

} // namespace tavrine
