#include "adapters/gnome/cast/MutterCast.h"

#include "adapters/gnome/MutterMonitors.h"
#include "adapters/gnome/cast/CastArea.h"
#include "base/Uuid.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestAnswer = 5s; // of a shell that is busy
const auto service = QStringLiteral("org.gnome.Mutter.ScreenCast");
constexpr auto castInterface = "org.gnome.Mutter.ScreenCast";
constexpr auto sessionInterface = "org.gnome.Mutter.ScreenCast.Session";
constexpr auto streamInterface = "org.gnome.Mutter.ScreenCast.Stream";
constexpr uint pointerHidden = 0;
constexpr uint pointerEmbedded = 1;

QDBusMessage callTo(const QString &path, const char *interface, const char *method, const QVariantList &arguments) {
    auto call = QDBusMessage::createMethodCall(service, path, QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

QDBusMessage askOn(const QDBusConnection &bus, const QDBusMessage &call) {
    return bus.call(call, QDBus::Block, static_cast<int>(std::chrono::milliseconds(longestAnswer).count()));
}

} // namespace

MutterCast::MutterCast(const QRect &display, double scale)
    : m_display(display), m_scale(scale), m_name(QStringLiteral("cast-") + freshUuidString()),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name)) {}

MutterCast::~MutterCast() {
    QDBusConnection::disconnectFromBus(m_name);
}

QString MutterCast::make(const QString &path, const char *interface, const char *method,
                         const QVariantList &arguments) {
    const QDBusMessage answer = askOn(m_bus, callTo(path, interface, method, arguments));
    return answer.arguments().value(0).value<QDBusObjectPath>().path();
}

void MutterCast::added(uint node) {
    m_node = node;
    if (m_waiting)
        m_waiting->quit();
}

std::optional<double> MutterCast::fineness() {
    const auto monitors = mutterMonitors::read(askOn(m_bus, mutterMonitors::question(service)));
    const auto found = std::ranges::find(monitors, m_display.topLeft(), &MutterMonitor::corner);
    return found == monitors.end() ? std::nullopt : std::optional(found->fineness);
}

std::variant<QString, Cast> MutterCast::open(const StreamPlan &plan, const ScreenStreamConfiguration &configuration) {
    if (!m_bus.isConnected())
        return QStringLiteral("There is no session bus to ask for the screen.");
    const auto fine = fineness();
    const auto wanted = fine ? castAreaOf(configuration, m_display, *fine, m_scale) : std::nullopt;
    if (!wanted)
        return QStringLiteral("The display has changed.");
    const auto refused = QStringLiteral("This desktop does not show its screen.");
    const QString session =
        make(QStringLiteral("/org/gnome/Mutter/ScreenCast"), castInterface, "CreateSession", {QVariantMap()});
    if (session.isEmpty())
        return refused;
    const QRect &area = wanted->plane;
    const QVariantMap options{{QStringLiteral("cursor-mode"), plan.showsPointer ? pointerEmbedded : pointerHidden}};
    const QString stream =
        make(session, sessionInterface, "RecordArea", {area.x(), area.y(), area.width(), area.height(), options});
    if (stream.isEmpty() || !m_bus.connect(service, stream, QLatin1String(streamInterface),
                                           QStringLiteral("PipeWireStreamAdded"), this, SLOT(added(uint))))
        return refused;
    if (askOn(m_bus, callTo(session, sessionInterface, "Start", {})).type() != QDBusMessage::ReplyMessage)
        return refused;
    if (!m_node) {
        QEventLoop loop;
        m_waiting = &loop;
        QTimer::singleShot(longestAnswer, &loop, &QEventLoop::quit);
        loop.exec();
        m_waiting = nullptr;
    }
    if (!m_node)
        return refused;
    return Cast{.node = *m_node, .pictures = wanted->pictures, .area = wanted->area};
}

} // namespace tavrine
