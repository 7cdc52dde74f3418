#include "adapters/linux/StatusNotifierItem.h"

#include "adapters/linux/DBusMenu.h"
#include "adapters/linux/PortalAppearance.h"
#include "adapters/linux/SessionBus.h"
#include "adapters/linux/StatusNotifierAdaptor.h"
#include "adapters/linux/StatusNotifierHosts.h"
#include "adapters/linux/StatusPixels.h"

#include <QCursor>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <unistd.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto menuPath = QStringLiteral("/MenuBar");            // as other programs call theirs
const auto itemPath = QStringLiteral("/StatusNotifierItem"); // where a host looks when it is given a bus name

// A session that takes longer to answer than this starts with the next best tray.
constexpr auto longestUnknown = 1s;
// Process numbers repeat between containers that share a bus; then the next number is free.
constexpr int highestNumber = 16;

QDBusMessage busCall(const QString &method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

/// Hosts count the desktop's own pixels; windows are placed in points.
QPoint toPoints(QPoint pixels) {
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QPoint origin = screen->geometry().topLeft();
        const double scale = screen->devicePixelRatio();
        if (QRectF(origin, QSizeF(screen->geometry().size()) * scale).contains(pixels))
            return origin + ((pixels - origin).toPointF() / scale).toPoint();
    }
    return pixels;
}

} // namespace

StatusNotifierItem::StatusNotifierItem()
    : m_adaptor(new StatusNotifierAdaptor(
          this, [this](QPoint place) { tell(&Handlers::onPress, place); },
          [this](QPoint place) { tell(&Handlers::onSecondaryPress, place); })) {
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
    QTimer::singleShot(longestUnknown, this, [this] {
        if (m_offer == Offer::unknown)
            setOffer(Offer::no);
    });
}

StatusNotifierItem::~StatusNotifierItem() {
    if (m_isWanted)
        releaseName();
}

void StatusNotifierItem::onBusOpen(const QDBusConnection &bus) {
    if (!bus.isConnected()) {
        setOffer(Offer::no);
        return;
    }
    // Of a bus that went nothing is left: neither the name nor the watcher's knowledge of us.
    m_bus = bus;
    m_isRegistered = false;
    ++m_wish;
    m_hosts = std::make_unique<StatusNotifierHosts>(bus);
    m_appearance = std::make_unique<PortalAppearance>(bus);
    m_appearance->setOnChange([this] { refreshPixmaps(); });
    m_bus->registerObject(itemPath, this, QDBusConnection::ExportAdaptors);
    exportMenu();
    m_watcher = std::make_unique<QDBusServiceWatcher>(watcherName, bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) { onWatcherChanged(newOwner); });
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    for (const auto &signal :
         {QStringLiteral("StatusNotifierHostRegistered"), QStringLiteral("StatusNotifierHostUnregistered")})
        m_bus->connect(QString(), watcherPath, watcherName, signal, this, SLOT(askForHost()));
    if (m_isWanted)
        requestName();
    askForHost();
}

void StatusNotifierItem::onWatcherChanged(const QString &newOwner) {
    m_isRegistered = false;
    m_hosts->forget();
    if (newOwner.isEmpty())
        setOffer(Offer::no);
    else
        askForHost();
}

void StatusNotifierItem::askForHost() {
    auto call = QDBusMessage::createMethodCall(
        watcherName, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setAutoStartService(false);
    call << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    sessionBus::ask(*m_bus, call, this, [this](const QDBusPendingCall &reply) {
        const QVariantList arguments = reply.reply().arguments();
        const bool hasHost =
            !reply.isError() && !arguments.isEmpty() && arguments.constFirst().value<QDBusVariant>().variant().toBool();
        if (hasHost) {
            m_hosts->ask([this](bool keepShape) { takeHosts(keepShape); });
        } else {
            m_hosts->forget(); // whoever was still looked at has gone
            setOffer(Offer::no);
        }
    });
}

/// The shape first: a picture is to be the right one from the beginning.
void StatusNotifierItem::takeHosts(bool keepShape) {
    const bool isOther = std::exchange(m_keepsShape, keepShape) != keepShape;
    if (isOther)
        refreshPixmaps();
    if (isOther && m_offer == Offer::yes && m_handlers.onOfferChanged)
        m_handlers.onOfferChanged();
    setOffer(Offer::yes);
    registerItem();
}

void StatusNotifierItem::setOffer(Offer offer) {
    if (std::exchange(m_offer, offer) != offer && m_handlers.onOfferChanged)
        m_handlers.onOfferChanged();
}

void StatusNotifierItem::setWanted(bool isWanted) {
    if (!m_bus || std::exchange(m_isWanted, isWanted) == isWanted)
        return;
    ++m_wish;
    m_adaptor->isActive = isWanted;
    if (isWanted) {
        refreshPixmaps();
        requestName();
    } else {
        if (m_isRegistered)
            Q_EMIT m_adaptor->NewStatus(m_adaptor->status());
        m_isRegistered = false;
        releaseName();
    }
}

void StatusNotifierItem::requestName() {
    constexpr uint doNotQueue = 4;
    constexpr uint isOwner = 1;
    constexpr uint isOwnerAlready = 4;
    const auto name = QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(::getpid()).arg(m_number);
    auto call = busCall(QStringLiteral("RequestName"));
    call << name << doNotQueue;
    sessionBus::ask(*m_bus, call, this, [this, name, wish = m_wish](const QDBusPendingCall &reply) {
        if (wish != m_wish || reply.isError())
            return;
        const uint result = reply.reply().arguments().value(0).toUInt();
        if (result == isOwner || result == isOwnerAlready) {
            m_name = name;
            registerItem();
        } else if (m_number < highestNumber) {
            ++m_number;
            requestName();
        }
    });
    m_name.clear();
}

void StatusNotifierItem::releaseName() {
    // Also a name whose reply is still under way: the bus takes the calls in order.
    auto call = busCall(QStringLiteral("ReleaseName"));
    call << QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(::getpid()).arg(m_number);
    m_bus->asyncCall(call);
    m_name.clear();
}

void StatusNotifierItem::registerItem() {
    if (!m_isWanted || m_isRegistered || m_name.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call.setAutoStartService(false);
    call << m_name;
    sessionBus::ask(*m_bus, call, this, [this, wish = m_wish](const QDBusPendingCall &reply) {
        if (wish != m_wish || !m_isWanted)
            return;
        if (reply.isError()) {
            setOffer(Offer::no); // until the watcher changes
            return;
        }
        m_isRegistered = true;
        if (m_handlers.onShown)
            m_handlers.onShown();
    });
}

void StatusNotifierItem::setMenu(const StatusItemMenu &menu) {
    m_menu = std::make_unique<DBusMenu>(menu);
    m_adaptor->menuPath = QDBusObjectPath(menuPath);
    exportMenu();
}

void StatusNotifierItem::exportMenu() {
    if (m_bus && m_menu)
        m_menu->exportOn(*m_bus, menuPath);
}

void StatusNotifierItem::menuChanged() {
    if (m_menu)
        m_menu->changed();
}

void StatusNotifierItem::setImage(const StatusImage &image) {
    m_image = image;
    refreshPixmaps();
}

/// Nothing is drawn while nobody looks.
void StatusNotifierItem::refreshPixmaps() {
    if (!m_isWanted)
        return;
    const QColor color =
        m_appearance && m_appearance->settings().colorScheme == ColorScheme::light ? darkSymbolColor : lightSymbolColor;
    StatusNotifierPixmaps pixmaps;
    for (const double scale : {1.0, 2.0})
        if (const QImage image = statusPixels(
                m_image, {.scale = scale, .label = color, .isSquare = !m_keepsShape, .isStrip = m_keepsShape});
            !image.isNull())
            pixmaps.append(StatusNotifierPixmap::fromImage(image));
    if (pixmaps == m_adaptor->pixmaps)
        return;
    m_adaptor->pixmaps = pixmaps;
    if (m_isRegistered)
        Q_EMIT m_adaptor->NewIcon();
}

void StatusNotifierItem::setToolTip(const QString &toolTip) {
    if (std::exchange(m_adaptor->toolTipText, toolTip) != toolTip && m_isRegistered)
        Q_EMIT m_adaptor->NewToolTip();
}

void StatusNotifierItem::tell(std::function<void(QPoint)> Handlers::*whom, QPoint place) {
    // Hosts that know no place say (0, 0); the pointer is on the icon then. In a later turn: the host waits for the
    // answer to its call, and a menu may run a loop of its own.
    const QPoint point = place.isNull() ? QCursor::pos() : toPoints(place);
    QMetaObject::invokeMethod(
        this,
        [this, whom, point] {
            if (m_handlers.*whom)
                (m_handlers.*whom)(point);
        },
        Qt::QueuedConnection);
}

} // namespace tavrine
