#include "adapters/linux/PortalAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <cmath>

namespace tavrine {
namespace {

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.interface");

// Portals have been seen to wrap a value once more than they say.
QVariant unwrapped(QVariant value) {
    for (int i = 0; i < 4 && value.userType() == qMetaTypeId<QDBusVariant>(); ++i)
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<QColor> colour(const QVariant &value) {
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(ddd)"))
        return {};
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    // Out of the range from 0 to 1 is the portal's way to say that there is none; NaN is nobody's way.
    for (const double channel : {red, green, blue}) {
        if (!(channel >= 0 && channel <= 1))
            return {};
    }
    return QColor::fromRgbF(float(red), float(green), float(blue)).toRgb();
}

DesktopAppearance with(DesktopAppearance settings, const QString &group, const QString &key, const QVariant &wrapped) {
    const QVariant value = unwrapped(wrapped);
    if (group == appearance && key == QLatin1String("color-scheme")) {
        const uint scheme = value.toUInt();
        settings.colorScheme = scheme <= 2 ? ColorScheme(scheme) : ColorScheme::noPreference;
    } else if (group == appearance && key == QLatin1String("accent-color")) {
        settings.accent = colour(value);
    } else if (group == appearance && key == QLatin1String("reduced-motion")) {
        settings.reducesMotion = value.toUInt() == 1;
    } else if (group == gnome && key == QLatin1String("enable-animations") && value.userType() == QMetaType::Bool) {
        settings.reducesMotion = !value.toBool();
    }
    return settings;
}

} // namespace

PortalAppearance::PortalAppearance(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), m_bus(bus), m_watcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    m_bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                if (owner.isEmpty()) {
                    ++m_reading;
                    take({}, false);
                } else {
                    read();
                }
            });
    read();
}

void PortalAppearance::read() {
    auto message = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    message << QStringList{appearance, gnome};
    message.setAutoStartService(false);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, number = ++m_reading](QDBusPendingCallWatcher *call) {
                call->deleteLater();
                const QDBusPendingReply<QMap<QString, QVariantMap>> reply = *call;
                if (number != m_reading || reply.isError())
                    return; // no portal, or one without settings: everything stays as it is
                DesktopAppearance settings;
                const auto groups = reply.value();
                for (const QString &group : {gnome, appearance}) {
                    const QVariantMap values = groups.value(group);
                    for (auto value = values.begin(); value != values.end(); ++value)
                        settings = with(settings, group, value.key(), value.value());
                }
                take(settings, true);
            });
}

void PortalAppearance::settingChanged(const QString &group, const QString &key, const QDBusVariant &value) {
    take(with(m_settings, group, key, value.variant()), true);
}

void PortalAppearance::take(const DesktopAppearance &settings, bool hasAnswered) {
    const bool isNews = hasAnswered != m_hasAnswered || settings != m_settings;
    m_hasAnswered = hasAnswered;
    m_settings = settings;
    if (isNews && m_onChange)
        m_onChange();
}

} // namespace tavrine
