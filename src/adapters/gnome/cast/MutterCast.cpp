#include "adapters/gnome/cast/MutterCast.h"

#include "adapters/gnome/MutterMonitors.h"
#include "adapters/gnome/cast/CastArea.h"

#include <QDBusObjectPath>

#include <algorithm>

namespace tavrine {
namespace {

const auto service = QStringLiteral("org.gnome.Mutter.ScreenCast");
constexpr auto castInterface = "org.gnome.Mutter.ScreenCast";
constexpr auto sessionInterface = "org.gnome.Mutter.ScreenCast.Session";
constexpr auto streamInterface = "org.gnome.Mutter.ScreenCast.Stream";
constexpr uint pointerHidden = 0;
constexpr uint pointerEmbedded = 1;

QDBusMessage callTo(const QString &compositor, const QString &path, const char *interface, const char *method,
                    const QVariantList &arguments) {
    auto call = QDBusMessage::createMethodCall(compositor, path, QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

} // namespace

QString MutterCast::make(const QString &path, const char *interface, const char *method,
                         const QVariantList &arguments) {
    const QDBusMessage answer = m_bus->ask(callTo(m_compositor, path, interface, method, arguments), m_longestAnswer);
    return answer.arguments().value(0).value<QDBusObjectPath>().path();
}

std::optional<double> MutterCast::fineness() {
    const QDBusMessage answer = m_bus->ask(mutterMonitors::question(service), m_longestAnswer);
    m_compositor = answer.service();
    const auto monitors = mutterMonitors::read(answer);
    const auto found = std::ranges::find(monitors, m_display.topLeft(), &MutterMonitor::corner);
    return found == monitors.end() ? std::nullopt : std::optional(found->fineness);
}

std::variant<QString, Cast> MutterCast::open(const StreamPlan &plan, const ScreenStreamConfiguration &configuration,
                                             const ThreadedScreenStream::Session &session) {
    m_bus.emplace(session);
    if (!m_bus->isOpen())
        return QStringLiteral("There is no session bus to ask for the screen.");
    const auto fine = fineness();
    const auto wanted = fine ? castAreaOf(configuration, m_display, *fine, m_scale) : std::nullopt;
    if (!wanted)
        return QStringLiteral("The display has changed.");
    const auto refused = QStringLiteral("This desktop does not show its screen.");
    const QString cast =
        make(QStringLiteral("/org/gnome/Mutter/ScreenCast"), castInterface, "CreateSession", {QVariantMap()});
    if (cast.isEmpty())
        return refused;
    const QRect &area = wanted->plane;
    const QVariantMap options{{QStringLiteral("cursor-mode"), plan.showsPointer ? pointerEmbedded : pointerHidden}};
    const QString stream =
        make(cast, sessionInterface, "RecordArea", {area.x(), area.y(), area.width(), area.height(), options});
    // By its own name: for another the toolkit asks who has it, and waits.
    if (stream.isEmpty() ||
        !m_bus->connection().connect(m_compositor, stream, QLatin1String(streamInterface),
                                     QStringLiteral("PipeWireStreamAdded"), this, SLOT(added(uint))))
        return refused;
    if (m_bus->ask(callTo(m_compositor, cast, sessionInterface, "Start", {}), m_longestAnswer).type() !=
            QDBusMessage::ReplyMessage ||
        !m_bus->waitUntil([this] { return m_node.has_value(); }, m_longestAnswer))
        return refused;
    return Cast::of(*m_node, wanted->pictures, wanted->area);
}

} // namespace tavrine
