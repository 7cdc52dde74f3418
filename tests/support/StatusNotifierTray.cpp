#include "support/StatusNotifierTray.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPoint>

#include <utility>

namespace tavrine::test {
namespace {

const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const auto itemPath = QStringLiteral("/StatusNotifierItem");

} // namespace

StatusNotifierTray::StatusNotifierTray()
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-tray"))) {
    m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                         QDBusConnection::ExportScriptableContents | QDBusConnection::ExportAllProperties);
    m_bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                  QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), this,
                  SLOT(onOwnerChanged(QString, QString, QString)));
    m_bus.connect({}, itemPath, itemInterface, QStringLiteral("NewIcon"), this, SLOT(onNewIcon()));
    m_bus.connect({}, itemPath, itemInterface, QStringLiteral("NewToolTip"), this, SLOT(onNewToolTip()));
    m_bus.connect({}, itemPath, itemInterface, QStringLiteral("NewStatus"), this, SLOT(onNewStatus(QString)));
    m_bus.connect({}, itemPath, itemInterface, QStringLiteral("NewTitle"), this, SLOT(onNewTitle()));
}

StatusNotifierTray::~StatusNotifierTray() {
    end();
    QDBusConnection::disconnectFromBus(QStringLiteral("test-tray"));
}

void StatusNotifierTray::start(bool withHost) {
    m_hasHost = withHost;
    m_bus.registerService(watcherName);
    if (withHost)
        Q_EMIT StatusNotifierHostRegistered();
}

void StatusNotifierTray::end() {
    m_bus.unregisterService(watcherName);
    m_items.clear();
    m_properties.clear();
}

void StatusNotifierTray::setHasHost(bool hasHost) {
    m_hasHost = hasHost;
    if (hasHost)
        Q_EMIT StatusNotifierHostRegistered();
    else
        Q_EMIT StatusNotifierHostUnregistered();
}

void StatusNotifierTray::comeAndGo() {
    m_goesNext = true;
    setHasHost(true);
}

bool StatusNotifierTray::tellHost() {
    const bool hasHost = m_hasHost;
    if (std::exchange(m_goesNext, false))
        setHasHost(false); // which is told before the answer
    return hasHost;
}

void StatusNotifierTray::RegisterStatusNotifierItem(const QString &service) {
    if (!m_items.contains(service))
        m_items.append(service);
    Q_EMIT StatusNotifierItemRegistered(service);
    readItem();
}

void StatusNotifierTray::onOwnerChanged(const QString &name, const QString &, const QString &after) {
    if (after.isEmpty() && m_items.removeAll(name) > 0)
        m_properties.clear();
}

void StatusNotifierTray::onSignal(const QString &signal) {
    m_signals.append(signal);
    readItem();
}

void StatusNotifierTray::readItem() {
    if (m_items.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(
        m_items.constLast(), itemPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    call << itemInterface;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *finished) {
        const QDBusPendingReply<QVariantMap> reply = *finished;
        finished->deleteLater();
        if (!reply.isError())
            m_properties = reply.value();
    });
}

StatusNotifierPixmaps StatusNotifierTray::pixmaps() const {
    return qdbus_cast<StatusNotifierPixmaps>(m_properties.value(QStringLiteral("IconPixmap")));
}

StatusNotifierToolTip StatusNotifierTray::toolTip() const {
    return qdbus_cast<StatusNotifierToolTip>(m_properties.value(QStringLiteral("ToolTip")));
}

void StatusNotifierTray::call(const QString &method, QPoint place) {
    auto message = QDBusMessage::createMethodCall(m_items.value(0), itemPath, itemInterface, method);
    message << place.x() << place.y();
    m_bus.asyncCall(message);
}

void StatusNotifierTray::scroll(int delta) {
    auto message = QDBusMessage::createMethodCall(m_items.value(0), itemPath, itemInterface, QStringLiteral("Scroll"));
    message << delta << QStringLiteral("vertical");
    m_bus.asyncCall(message);
}

} // namespace tavrine::test
