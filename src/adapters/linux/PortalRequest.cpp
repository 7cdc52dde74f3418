#include "adapters/linux/PortalRequest.h"

#include "base/Program.h"

#include <QDBusPendingCallWatcher>

#include <atomic>

namespace tavrine {
namespace {

constexpr uint success = 0;
constexpr uint refusal = 1;
constexpr uint failure = 2;
constexpr std::chrono::seconds firstAnswer{25}; // the question may start the portal; nobody waits for it
const auto requestInterface = QStringLiteral("org.freedesktop.portal.Request");

} // namespace

const QString PortalRequest::service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString PortalRequest::path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString PortalRequest::sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

QString PortalRequest::newToken() {
    static std::atomic<int> number = 0;
    return QStringLiteral("tavrine%1").arg(++number);
}

QDBusMessage PortalRequest::message(const QString &interface, const QString &method) {
    return QDBusMessage::createMethodCall(service, path, interface, method);
}

void PortalRequest::introduce(const QDBusConnection &bus) {
    auto introduction = message(QStringLiteral("org.freedesktop.host.portal.Registry"), QStringLiteral("Register"));
    introduction << QString(ownBundleIdentifier) << QVariantMap();
    bus.send(introduction);
}

PortalRequest::PortalRequest(const QDBusConnection &bus, QDBusMessage message, QVariantMap options, Answered answered,
                             QObject *parent)
    : QObject(parent), m_bus(bus), m_answered(std::move(answered)) {
    // Before the question: the answer may come at once.
    const QString token = newToken();
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    listenAt(QStringLiteral("%1/request/%2/%3").arg(path, sender, token));
    options.insert(QStringLiteral("handle_token"), token);
    message << options;
    const auto longest = std::chrono::milliseconds(firstAnswer).count();
    const auto *const reply = new QDBusPendingCallWatcher(m_bus.asyncCall(message, static_cast<int>(longest)), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *finished) {
        finished->deleteLater();
        if (finished->isError())
            return responded(failure, {});
        const auto given = finished->reply().arguments().value(0).value<QDBusObjectPath>().path();
        if (given != m_handle && !given.isEmpty())
            listenAt(given); // as early portals name it
    });
}

PortalRequest::~PortalRequest() {
    if (!m_answered)
        return;
    auto close = QDBusMessage::createMethodCall(service, m_handle, requestInterface, QStringLiteral("Close"));
    close.setAutoStartService(false);
    m_bus.send(close);
}

void PortalRequest::listenAt(const QString &handle) {
    m_handle = handle;
    // Of any sender, else the toolkit asks who has the name, and waits.
    m_bus.connect(QString(), handle, requestInterface, QStringLiteral("Response"), this,
                  SLOT(responded(uint, QVariantMap)));
}

void PortalRequest::responded(uint response, const QVariantMap &results) {
    const auto outcome = response == success   ? PortalAnswer::Outcome::given
                         : response == refusal ? PortalAnswer::Outcome::refused
                                               : PortalAnswer::Outcome::failed;
    if (const Answered answered = std::exchange(m_answered, nullptr))
        answered({outcome, outcome == PortalAnswer::Outcome::given ? results : QVariantMap()});
}

} // namespace tavrine
