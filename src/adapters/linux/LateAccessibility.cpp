#include "adapters/linux/LateAccessibility.h"

#include "adapters/linux/BusValues.h"
#include "adapters/linux/SessionBus.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QPointer>
#include <QThread>
#include <QVariantMap>

#include <thread>
#include <vector>

// Of QtCore, for tools that watch a program: the function at this place hears of each object as it is made.
extern Q_CORE_EXPORT quintptr qtHookData[]; // NOLINT(readability-identifier-naming)

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto service = QStringLiteral("org.a11y.Bus");
const auto path = QStringLiteral("/org/a11y/bus");
const auto status = QStringLiteral("org.a11y.Status");
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr auto addressVariable = "AT_SPI_BUS_ADDRESS";
constexpr auto bridgeSlot = "connectA11yBus"; // of Qt's bridge, since its first version
constexpr auto bridgeSignature = "connectA11yBus(QString)";
const auto connectionName = QStringLiteral("a11y"); // as Qt's bridge names it: it takes the one that is there

// Nobody waits meanwhile, and one who hangs may go on after a night.
constexpr auto longestBusAnswer = 24h;

constexpr int placeOfNewObjects = 3;

/// The object of Qt's bridge that opens its bus. Nothing leads from the bridge to it, so it is seen while it is made.
QObject *makeBridgeAndFindItsBus() {
    static std::vector<QPointer<QObject>> made;
    const quintptr before =
        std::exchange(qtHookData[placeOfNewObjects], reinterpret_cast<quintptr>(+[](QObject *object) {
                          if (QThread::currentThread() == QCoreApplication::instance()->thread())
                              made.emplace_back(object);
                      }));
    QAccessible::setRootObject(QCoreApplication::instance());
    qtHookData[placeOfNewObjects] = before;
    for (const QPointer<QObject> &object : std::exchange(made, {})) {
        if (object && object->metaObject()->indexOfSlot(bridgeSignature) >= 0)
            return object;
    }
    return nullptr;
}

/// As Qt has it.
bool isAlwaysWanted() {
    return qEnvironmentVariableIntValue("QT_LINUX_ACCESSIBILITY_ALWAYS_ON") != 0;
}

} // namespace

LateAccessibility::LateAccessibility() : m_fixedAddress(qEnvironmentVariable(addressVariable)) {
    makeBridge(); // before a bus is opened: the bridge waits for who opens one
    m_begin = [this](const QString &address) {
        if (m_bridge)
            QMetaObject::invokeMethod(m_bridge, bridgeSlot, Q_ARG(QString, address));
    };
    followBus();
}

LateAccessibility::LateAccessibility(Begin begin)
    : m_begin(std::move(begin)), m_fixedAddress(qEnvironmentVariable(addressVariable)) {
    followBus();
}

void LateAccessibility::followBus() {
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
}

/// A bridge that is given the address of its bus asks nobody for it. It opens that bus at once or in its next turn, by
/// Qt's version. What comes of an address that leads nowhere is put away, so that it can be told the true one.
void LateAccessibility::makeBridge() {
    qputenv(addressVariable, "later");
    m_bridge = makeBridgeAndFindItsBus();
    if (m_bridge)
        QCoreApplication::removePostedEvents(m_bridge, QEvent::MetaCall);
    QDBusConnection::disconnectFromBus(connectionName);
    if (m_fixedAddress.isEmpty())
        qunsetenv(addressVariable); // what is started is to find its own
    else
        qputenv(addressVariable, m_fixedAddress.toLocal8Bit());
}

void LateAccessibility::onBusOpen(const QDBusConnection &bus) {
    if (!bus.isConnected() || m_isUnderWay)
        return;
    m_bus = bus;
    m_watcher = std::make_unique<QDBusServiceWatcher>(service, bus, QDBusServiceWatcher::WatchForRegistration);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceRegistered, this, &LateAccessibility::ask);
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    m_bus->connect(QString(), path, properties, QStringLiteral("PropertiesChanged"), this, SLOT(ask()));
    ask();
}

void LateAccessibility::ask() {
    if (m_isUnderWay)
        return;
    if (!m_fixedAddress.isEmpty())
        return openBus(m_fixedAddress);
    auto call = QDBusMessage::createMethodCall(service, path, properties, QStringLiteral("GetAll"));
    call.setAutoStartService(false); // a screen reader starts it
    call << status;
    sessionBus::ask(
        *m_bus, call, this,
        [this, number = ++m_question](const QDBusPendingCall &reply) {
            if (number != m_question || reply.isError())
                return;
            const auto values = busValue<QVariantMap>(reply.reply().arguments().value(0), busMap);
            if (isAlwaysWanted() || values.value(QStringLiteral("IsEnabled")).toBool() ||
                values.value(QStringLiteral("ScreenReaderEnabled")).toBool())
                askForAddress();
        },
        longestBusAnswer);
}

void LateAccessibility::askForAddress() {
    auto call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetAddress"));
    call.setAutoStartService(false);
    sessionBus::ask(
        *m_bus, call, this,
        [this, number = ++m_question](const QDBusPendingCall &reply) {
            if (number == m_question && !reply.isError())
                openBus(reply.reply().arguments().value(0).toString());
        },
        longestBusAnswer);
}

/// The bus that Qt's bridge will use is opened elsewhere: afterwards it finds it open.
void LateAccessibility::openBus(const QString &address) {
    if (address.isEmpty() || std::exchange(m_isUnderWay, true))
        return;
    std::thread([address, self = QPointer<LateAccessibility>(this)] {
        const QDBusConnection bus = QDBusConnection::connectToBus(address, connectionName);
        if (auto *const application = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                application,
                [self, bus, address] {
                    if (self)
                        self->askRegistry(bus, address);
                },
                Qt::QueuedConnection);
    }).detach();
}

void LateAccessibility::askRegistry(const QDBusConnection &bus, const QString &address) {
    const auto ping = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    sessionBus::ask(
        bus, ping, this,
        [this, address](const QDBusPendingCall &reply) {
            if (!reply.isError())
                m_begin(address);
        },
        longestBusAnswer);
}

} // namespace tavrine
