#include "adapters/wayland/ToolkitScale.h"

#include "adapters/linux/PortalRequest.h"
#include "adapters/linux/PortalSettings.h"
#include "adapters/linux/SessionBus.h"
#include "adapters/wayland/text/TextScale.h"

#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <cmath>

#include <private/qhighdpiscaling_p.h>

namespace tavrine {
namespace {

const auto group = QStringLiteral("org.gnome.desktop.interface");
const auto key = QStringLiteral("text-scaling-factor");
constexpr double same = 0.001;

double ownFactor() {
    const double told = qEnvironmentVariable("QT_SCALE_FACTOR").toDouble();
    return told > 0 ? told : 1;
}

/// The toolkit advises against a change while there are windows: theirs are given their places anew.
void setFactor(double factor) {
    const QtMessageHandler usual =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QHighDpiScaling::setGlobalFactor(factor);
    qInstallMessageHandler(usual);
}

} // namespace

ToolkitScale::ToolkitScale(std::function<void()> onChange) : m_onChange(std::move(onChange)), m_own(ownFactor()) {
    if (!qEnvironmentVariableIsEmpty("QT_WAYLAND_FORCE_DPI"))
        return;
    show(textScaleOfFiles().value_or(1));
    if (textScaleOfPlasmaFile()) // goes before what a portal says of GNOME's settings
        return;
    sessionBus::follow(this, [this](const QDBusConnection &bus) {
        m_watcher.reset();
        if (bus.isConnected())
            follow(bus);
    });
}

ToolkitScale::~ToolkitScale() = default;

void ToolkitScale::follow(const QDBusConnection &bus) {
    m_watcher =
        std::make_unique<QDBusServiceWatcher>(PortalRequest::service, bus, QDBusServiceWatcher::WatchForRegistration);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceRegistered, this, [this, bus] { ask(bus); });
    portalSettings::followChanges(bus, this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(bus);
}

void ToolkitScale::ask(const QDBusConnection &bus) {
    QDBusMessage call = portalSettings::question(QStringLiteral("Read"));
    call << group << key;
    sessionBus::ask(bus, call, this, [this](const QDBusPendingCall &answer) {
        const QVariantList values = answer.isError() ? QVariantList() : answer.reply().arguments();
        if (!values.isEmpty())
            take(values.first());
    });
}

void ToolkitScale::settingChanged(const QString &changedGroup, const QString &changedKey, const QDBusVariant &value) {
    if (changedGroup == group && changedKey == key)
        take(value.variant());
}

void ToolkitScale::take(const QVariant &value) {
    const QVariant plain = portalSettings::unwrapped(value);
    const auto told = plain.userType() == QMetaType::Double ? sensibleTextScale(plain.toDouble()) : std::nullopt;
    if (told)
        show(*told);
}

void ToolkitScale::show(double scale) {
    if (std::abs(scale - m_shown) < same)
        return;
    m_shown = scale;
    setFactor(m_own * scale);
    m_onChange();
}

} // namespace tavrine
