#include "adapters/linux/AppearanceSettings.h"

#include "adapters/linux/SessionBus.h"

#include <QDBusServiceWatcher>

namespace tavrine {
namespace {

const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto settings = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colorScheme = QStringLiteral("color-scheme");

} // namespace

AppearanceSettings::AppearanceSettings(const QDBusConnection &bus, std::function<void()> onChange, QObject *parent)
    : QObject(parent), m_bus(bus), m_onChange(std::move(onChange)) {
    auto *watcher = new QDBusServiceWatcher(portal, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &AppearanceSettings::read);
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    m_bus.connect(QString(), portalPath, settings, QStringLiteral("SettingChanged"), this,
                  SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    read();
}

void AppearanceSettings::read() {
    auto call = QDBusMessage::createMethodCall(portal, portalPath, settings, QStringLiteral("Read"));
    call.setAutoStartService(false);
    call << appearance << colorScheme;
    sessionBus::ask(m_bus, call, this, [this](const QDBusPendingCall &reply) {
        const QDBusMessage message = reply.reply();
        if (!reply.isError() && !message.arguments().isEmpty())
            take(message.arguments().constFirst());
    });
}

void AppearanceSettings::onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value) {
    if (group == appearance && key == colorScheme)
        take(value.variant());
}

void AppearanceSettings::take(QVariant value) {
    constexpr uint light = 2; // 0 is no preference, 1 is dark
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    const bool prefersLight = value.toUInt() == light;
    if (std::exchange(m_prefersLight, prefersLight) != prefersLight)
        m_onChange();
}

} // namespace tavrine
