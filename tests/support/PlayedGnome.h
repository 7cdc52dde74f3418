#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <algorithm>
#include <set>
#include <type_traits>
#include <vector>

namespace tavrine::test {

// What a compositor says of its monitors, as it is spelled on the bus.
struct PlayedConnector {
    QString connector, vendor, product, serial;
};
struct PlayedMode {
    QString name;
    int width = 0, height = 0;
    double rate = 60, scale = 1;
    QList<double> scales;
    QVariantMap properties;
};
struct PlayedMonitor {
    PlayedConnector connector;
    QList<PlayedMode> modes;
    QVariantMap properties;
};
struct PlayedLogicalMonitor {
    int x = 0, y = 0;
    double scale = 1;
    uint transform = 0;
    bool isPrimary = true;
    QList<PlayedConnector> connectors;
    QVariantMap properties;
};
/// A place or the pointer, with its state.
struct PlayedPointer {
    int x = 0, y = 0;
    uint state = 0;
};
struct PlayedWindow {
    QString application, windowClass;
    uint process = 0, number = 0;
};

template <class... Parts>
QDBusArgument &writeStructure(QDBusArgument &argument, const Parts &...parts) {
    argument.beginStructure();
    (argument << ... << parts);
    argument.endStructure();
    return argument;
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedConnector &one) {
    return writeStructure(to, one.connector, one.vendor, one.product, one.serial);
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedMode &one) {
    return writeStructure(to, one.name, one.width, one.height, one.rate, one.scale, one.scales, one.properties);
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedMonitor &one) {
    return writeStructure(to, one.connector, one.modes, one.properties);
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedLogicalMonitor &one) {
    return writeStructure(to, one.x, one.y, one.scale, one.transform, one.isPrimary, one.connectors, one.properties);
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedPointer &one) {
    return writeStructure(to, one.x, one.y, one.state);
}
inline QDBusArgument &operator<<(QDBusArgument &to, const PlayedWindow &one) {
    return writeStructure(to, one.application, one.windowClass, one.process, one.number);
}
// The other direction is asked for by the toolkit, and by nobody else.
template <class Type>
concept IsPlayed = std::is_same_v<Type, PlayedConnector> || std::is_same_v<Type, PlayedMode> ||
    std::is_same_v<Type, PlayedMonitor> || std::is_same_v<Type, PlayedLogicalMonitor> ||
    std::is_same_v<Type, PlayedPointer> || std::is_same_v<Type, PlayedWindow>;
const QDBusArgument &operator>>(const QDBusArgument &from, IsPlayed auto & /*one*/) {
    return from;
}

/// GNOME Shell with this program's extension, and its compositor with one monitor, played on the session bus: it
/// answers what is asked of it, but for what the test keeps for itself. Main thread.
class PlayedGnome final : public QDBusVirtualObject {
public:
    static QString shellName() { return QStringLiteral("org.gnome.Shell"); }
    static QString castName() { return QStringLiteral("org.gnome.Mutter.ScreenCast"); }

    PlayedGnome() {
        qDBusRegisterMetaType<PlayedConnector>();
        qDBusRegisterMetaType<PlayedMode>();
        qDBusRegisterMetaType<PlayedPointer>();
        qDBusRegisterMetaType<PlayedMonitor>();
        qDBusRegisterMetaType<PlayedLogicalMonitor>();
        qDBusRegisterMetaType<PlayedWindow>();
        qDBusRegisterMetaType<QList<PlayedConnector>>();
        qDBusRegisterMetaType<QList<PlayedMode>>();
        qDBusRegisterMetaType<QList<PlayedMonitor>>();
        qDBusRegisterMetaType<QList<PlayedLogicalMonitor>>();
        qDBusRegisterMetaType<QList<PlayedWindow>>();
    }
    ~PlayedGnome() override {
        giveUpCastName();
        m_bus.unregisterService(shellName());
        m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
        QDBusConnection::disconnectFromBus(QStringLiteral("played-gnome"));
    }

    /// What is kept is counted and not answered, until it is answered by hand. Said before it appears.
    std::set<QString> kept;
    std::set<QString> refused;
    std::vector<QDBusMessage> calls; ///< in the order in which they came

    void appear() {
        m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        m_bus.registerService(shellName());
        m_bus.registerService(castName());
    }
    void giveUpCastName() { m_bus.unregisterService(castName()); }

    [[nodiscard]] qsizetype asked(const QString &member) const {
        return std::ranges::count(calls, member, [](const QDBusMessage &each) { return each.member(); });
    }
    [[nodiscard]] QDBusMessage last(const QString &member) const {
        QDBusMessage found;
        for (const QDBusMessage &each : calls)
            if (each.member() == member)
                found = each;
        return found;
    }
    void answer(const QDBusMessage &call, const QVariantList &arguments) { m_bus.send(call.createReply(arguments)); }
    /// As it answers by itself.
    void answer(const QDBusMessage &call) { answer(call, usualAnswer(call)); }
    void tell(const QString &path, const QString &interface, const QString &member, const QVariantList &arguments) {
        auto signal = QDBusMessage::createSignal(path, interface, member);
        signal.setArguments(arguments);
        m_bus.send(signal);
    }
    void pressKey(uint action) {
        tell(QStringLiteral("/com/veltrane/Tavrine/Shell"), QStringLiteral("com.veltrane.Tavrine.Shell"),
             QStringLiteral("KeyPressed"), {action, 0U, QVariant::fromValue(PlayedPointer())});
    }

    QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &bus) override {
        calls.push_back(call);
        if (refused.contains(call.member()))
            return bus.send(call.createErrorReply(QDBusError::AccessDenied, QStringLiteral("No.")));
        if (!kept.contains(call.member()))
            bus.send(call.createReply(usualAnswer(call)));
        return true;
    }

private:
    QVariantList usualAnswer(const QDBusMessage &call) {
        const QString member = call.member();
        if (member == QLatin1String("Attach"))
            return {QVariant::fromValue(QList<PlayedWindow>()), 0U, QVariant::fromValue(PlayedPointer())};
        if (member == QLatin1String("GrabKey"))
            return {++m_lastAction};
        if (member == QLatin1String("GetCurrentState"))
            return {1U, QVariant::fromValue(QList<PlayedMonitor>()),
                    QVariant::fromValue(QList<PlayedLogicalMonitor>{PlayedLogicalMonitor()}), QVariantMap()};
        if (member == QLatin1String("CreateSession"))
            return {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/played/session")))};
        if (member == QLatin1String("RecordArea"))
            return {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/played/stream")))};
        return {};
    }

    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("played-gnome"));
    uint m_lastAction = 0;
};

} // namespace tavrine::test
