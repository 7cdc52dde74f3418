#include "adapters/gnome/MutterMonitors.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace tavrine::mutterMonitors {
namespace {

constexpr size_t mostMonitors = 64;
constexpr double mostFine = 8;
constexpr uint inPixels = 2; // the layout mode in which the plane has each pixel of each monitor

} // namespace

QDBusMessage question(const QString &service) {
    auto call = QDBusMessage::createMethodCall(service, QLatin1String(path), QLatin1String(interface),
                                               QStringLiteral("GetCurrentState"));
    call.setAutoStartService(false);
    return call;
}

std::vector<MutterMonitor> read(const QDBusMessage &answer) {
    const auto arguments = answer.arguments();
    if (answer.signature() != QLatin1String("ua((ssss)a(siiddada{sv})a{sv})a(iiduba(ssss)a{sv})a{sv}"))
        return {};
    const auto properties = qdbus_cast<QVariantMap>(arguments.at(3));
    const bool isInPixels = properties.value(QStringLiteral("layout-mode")).toUInt() == inPixels;
    std::vector<MutterMonitor> monitors;
    const auto list = arguments.at(2).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd() && monitors.size() < mostMonitors) {
        int x = 0;
        int y = 0;
        double scale = 1;
        list.beginStructure();
        list >> x >> y >> scale;
        list.endStructure();
        const bool isScale = scale >= 1 && scale <= mostFine;
        monitors.push_back({QPoint(x, y), isInPixels || !isScale ? 1 : scale});
    }
    list.endArray();
    return monitors;
}

} // namespace tavrine::mutterMonitors
