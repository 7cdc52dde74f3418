#include "adapters/linux/CastPortal.h"

#include "adapters/linux/PortalRequest.h"
#include "adapters/linux/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace tavrine {
namespace {

constexpr uint monitor = 1;
constexpr std::chrono::seconds longestAnswer{25}; // the question may start the portal

} // namespace

CastPortal::CastPortal() = default;
CastPortal::~CastPortal() = default;

CastPortal::Answer CastPortal::answer() {
    if (!std::exchange(m_hasBegun, true))
        sessionBus::follow(this, [this](const QDBusConnection &bus) {
            m_watcher.reset();
            m_bus = bus;
            m_answer = Answer::missing;
            if (!bus.isConnected())
                return;
            m_watcher = std::make_unique<QDBusServiceWatcher>(PortalRequest::service, bus,
                                                              QDBusServiceWatcher::WatchForRegistration);
            connect(m_watcher.get(), &QDBusServiceWatcher::serviceRegistered, this, &CastPortal::ask);
            m_answer = Answer::asking;
            ask();
        });
    return m_answer;
}

void CastPortal::ask() {
    auto question = PortalRequest::message(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << QStringLiteral("org.freedesktop.portal.ScreenCast") << QStringLiteral("AvailableSourceTypes");
    sessionBus::ask(
        *m_bus, question, this,
        [this](const QDBusPendingCall &reply) {
            const auto values = reply.reply().arguments();
            const uint kinds = values.value(0).value<QDBusVariant>().variant().toUInt();
            m_answer = !reply.isError() && (kinds & monitor) ? Answer::there : Answer::missing;
        },
        longestAnswer);
}

} // namespace tavrine
