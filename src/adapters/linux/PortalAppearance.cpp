#include "adapters/linux/PortalAppearance.h"

#include "adapters/linux/PlasmaSettingsFile.h"
#include "adapters/linux/PortalRequest.h"
#include "adapters/linux/PortalSettings.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <cmath>

namespace tavrine {
namespace {

const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.interface");
const auto plasma = QStringLiteral("org.kde.kdeglobals.KDE");

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

} // namespace

void PortalAppearance::Told::take(const QString &group, const QString &key, const QVariant &wrapped) {
    const QVariant value = portalSettings::unwrapped(wrapped);
    if (group == appearance && key == QLatin1String("color-scheme")) {
        const uint scheme = value.toUInt();
        colours.colorScheme = scheme <= 2 ? ColorScheme(scheme) : ColorScheme::noPreference;
    } else if (group == appearance && key == QLatin1String("accent-color")) {
        colours.accent = colour(value);
    } else if (group == appearance && key == QLatin1String("reduced-motion")) {
        isMotionReduced = value.toUInt() == 1;
    } else if (group == gnome && key == QLatin1String("enable-animations") && value.userType() == QMetaType::Bool) {
        isStillInGnome = !value.toBool();
    } else if (group == plasma && key == QLatin1String("AnimationDurationFactor")) {
        isStillInPlasma = isNoDuration(value);
    }
}

DesktopAppearance PortalAppearance::Told::settings() const {
    DesktopAppearance settings = colours;
    settings.reducesMotion = isMotionReduced || isStillInGnome || isStillInPlasma;
    return settings;
}

PortalAppearance::PortalAppearance(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), m_bus(bus), m_watcher(PortalRequest::service, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    portalSettings::followChanges(m_bus, this, SLOT(settingChanged(QString, QString, QDBusVariant)));
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
    QDBusMessage message = portalSettings::question(QStringLiteral("ReadAll"));
    message << QStringList{appearance, gnome, plasma};
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, number = ++m_reading](QDBusPendingCallWatcher *call) {
                call->deleteLater();
                const QDBusPendingReply<QMap<QString, QVariantMap>> reply = *call;
                if (number != m_reading || reply.isError())
                    return; // no portal, or one without settings: everything stays as it is
                Told told;
                const auto groups = reply.value();
                for (auto group = groups.begin(); group != groups.end(); ++group) {
                    for (auto value = group->begin(); value != group->end(); ++value)
                        told.take(group.key(), value.key(), value.value());
                }
                take(told, true);
            });
}

void PortalAppearance::settingChanged(const QString &group, const QString &key, const QDBusVariant &value) {
    Told told = m_told;
    told.take(group, key, value.variant());
    take(told, true);
}

void PortalAppearance::take(const Told &told, bool hasAnswered) {
    const bool isNews = hasAnswered != m_hasAnswered || told.settings() != m_told.settings();
    m_hasAnswered = hasAnswered;
    m_told = told;
    if (isNews && m_onChange)
        m_onChange();
}

} // namespace tavrine
