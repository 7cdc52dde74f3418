#include "adapters/linux/PortalRequest.h"

#include "adapters/linux/SessionBus.h"

namespace tavrine {
namespace {

constexpr uint success = 0;
constexpr std::chrono::seconds firstAnswer{25}; // the question may start the portal; nobody waits for it
const auto requestInterface = QStringLiteral("org.freedesktop.portal.Request");

} // namespace

const QString PortalRequest::service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString PortalRequest::path = QStringLiteral("/org/freedesktop/portal/desktop");

QString PortalRequest::newToken() {
    static int number = 0;
    return QStringLiteral("tavrine%1").arg(++number);
}

QDBusMessage PortalRequest::message(const QString &interface, const QString &method) {
    return QDBusMessage::createMethodCall(service, path, interface, method);
}

PortalRequest::PortalRequest(const QDBusConnection &bus, QDBusMessage message, QVariantMap options, Answered answered,
                             QObject *parent)
    : QObject(parent), m_bus(bus), m_answered(std::move(answered)) {
    // Before the question: the answer may come at once.
    const QString token = newToken();
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    const QString handle = QStringLiteral("%1/request/%2/%3").arg(path, sender, token);
    listenAt(handle);
    options.insert(QStringLiteral("handle_token"), token);
    message << options;
    sessionBus::ask(
        m_bus, message, this,
        [this, handle](const QDBusPendingCall &reply) {
            if (reply.isError())
                return responded(success + 1, {});
            const auto given = reply.reply().arguments().value(0).value<QDBusObjectPath>().path();
            if (given != handle && !given.isEmpty())
                listenAt(given); // as early portals name it
        },
        firstAnswer);
}

void PortalRequest::listenAt(const QString &handle) {
    // Of any sender, else the toolkit asks who has the name, and waits.
    m_bus.connect(QString(), handle, requestInterface, QStringLiteral("Response"), this,
                  SLOT(responded(uint, QVariantMap)));
}

void PortalRequest::responded(uint response, const QVariantMap &results) {
    if (const Answered answered = std::exchange(m_answered, nullptr))
        answered(response == success ? std::optional(results) : std::nullopt);
}

} // namespace tavrine
