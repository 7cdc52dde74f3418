#include "adapters/linux/ApplicationObject.h"

#include "base/Program.h"
#include "ports/Instance.h"

#include <QDBusAbstractAdaptor>
#include <QDBusError>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr qsizetype longestIdentifier = 1024; // what launchers make of one is a tenth of it
constexpr auto longestStart = 10s;            // the bus hands its calls on with the name, which a start takes soon

/// Text alone is an identifier.
QByteArray identifier(const QVariantMap &platformData, const char *key) {
    const QVariant found = platformData.value(QLatin1String(key));
    if (found.typeId() != QMetaType::QString)
        return {};
    const QByteArray text = found.toString().toUtf8();
    return text.size() > longestIdentifier ? QByteArray() : text;
}

class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(ApplicationObject &object) : QDBusAbstractAdaptor(&object), m_object(object) {}

public Q_SLOTS:
    void Activate(const QVariantMap &platformData) { m_object.called(platformData); }
    void Open(const QStringList &, const QVariantMap &platformData) { m_object.called(platformData); }
    void ActivateAction(const QString &action, const QVariantList &, const QVariantMap &platformData) {
        if (startAction::isKnown(action))
            m_object.called(platformData, action);
        else
            m_object.refuse(action);
    }

private:
    ApplicationObject &m_object;
};

class Triggers final : public QObject {
    Q_OBJECT

public:
    explicit Triggers(ApplicationObject &object) : QObject(&object), m_object(object) {}

public Q_SLOTS:
    void AltTap() { m_object.altTapped(); }

private:
    ApplicationObject &m_object;
};

} // namespace

QString ApplicationObject::path() {
    return u'/' + QString(ownBundleIdentifier).replace(u'.', u'/');
}

QString ApplicationObject::triggersPath() {
    return path() + QStringLiteral("/Triggers");
}

QString ApplicationObject::triggersInterface() {
    return ownBundleIdentifier + QStringLiteral(".Triggers");
}

ApplicationObject::ApplicationObject(OnCalled onCalled, bool isByBus)
    : m_onCalled(std::move(onCalled)), m_triggers(new Triggers(*this)) {
    new ApplicationAdaptor(*this);
    if (isByBus)
        m_untilStart.emplace(longestStart);
}

void ApplicationObject::registerOn(QDBusConnection bus) {
    bus.registerObject(path(), this, QDBusConnection::ExportAdaptors);
    bus.registerObject(triggersPath(), triggersInterface(), m_triggers, QDBusConnection::ExportAllSlots);
}

void ApplicationObject::called(const QVariantMap &platformData, const QString &action) {
    const auto untilStart = std::exchange(m_untilStart, std::nullopt);
    if (untilStart && !untilStart->hasExpired() && action.isEmpty())
        return; // the call that this process was started for
    const StartIdentifiers identifiers{.startupId = identifier(platformData, "desktop-startup-id"),
                                       .activationToken = identifier(platformData, "activation-token")};
    QMetaObject::invokeMethod(
        this, [this, identifiers, action] { m_onCalled(identifiers, action); }, Qt::QueuedConnection);
}

void ApplicationObject::refuse(const QString &action) {
    constexpr qsizetype shown = 40;
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no action named \"%1\".").arg(action.left(shown)));
}

void ApplicationObject::altTapped() {
    if (m_untilStart && !m_untilStart->hasExpired()) {
        std::fputs("Tavrine was started by a tap of Alt alone, and does not stay for it.\n", stderr);
        std::fflush(nullptr);
        std::_Exit(EXIT_SUCCESS); // as a kill, which is a usual way to end
    }
    called({}, startAction::altTap);
}

} // namespace tavrine

#include "ApplicationObject.moc"
