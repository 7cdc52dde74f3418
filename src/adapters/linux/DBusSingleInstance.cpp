#include "adapters/linux/DBusSingleInstance.h"

#include "adapters/linux/SessionBus.h"
#include "base/Program.h"

#include <QDBusAbstractAdaptor>
#include <QDBusError>
#include <QDeadlineTimer>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <cstdio>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const QString ownName = ownBundleIdentifier;
const QString ownPath = u'/' + QString(ownName).replace(u'.', u'/');
const auto interfaceName = QStringLiteral("org.freedesktop.Application");
constexpr auto longestWait = 2s;

/// What launchers and later starts call. The program opens no files and offers no actions by name, so all three bring
/// it forward.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    ApplicationAdaptor(QObject *exported, std::function<void()> onReopen)
        : QDBusAbstractAdaptor(exported), m_onReopen(std::move(onReopen)) {}

public Q_SLOTS:
    void Activate(const QVariantMap &) { reopen(); }
    void Open(const QStringList &, const QVariantMap &) { reopen(); }
    void ActivateAction(const QString &, const QVariantList &, const QVariantMap &) { reopen(); }

private:
    // In a later turn: the caller waits for the answer, and opening a window takes its time.
    void reopen() {
        QMetaObject::invokeMethod(
            this, [this] { m_onReopen(); }, Qt::QueuedConnection);
    }

    std::function<void()> m_onReopen;
};

} // namespace

class DBusSingleInstance::Private : public QObject {
public:
    enum class Name { taken, ours, unknown };

    explicit Private(std::function<void()> onReopen) { new ApplicationAdaptor(this, std::move(onReopen)); }

    [[nodiscard]] static Name requestName(const QDBusConnection &bus, QDeadlineTimer deadline) {
        constexpr uint doNotQueue = 4;
        constexpr uint exists = 3;
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
        call << ownName << doNotQueue;
        const QDBusMessage reply = bus.call(call, QDBus::Block, remaining(deadline));
        if (reply.type() != QDBusMessage::ReplyMessage)
            return Name::unknown;
        return reply.arguments().value(0).toUInt() == exists ? Name::taken : Name::ours;
    }

    [[nodiscard]] static QDBusMessage activateOther(const QDBusConnection &bus, QDeadlineTimer deadline) {
        auto call = QDBusMessage::createMethodCall(ownName, ownPath, interfaceName, QStringLiteral("Activate"));
        call.setAutoStartService(false);
        call << QVariantMap();
        return bus.call(call, QDBus::Block, remaining(deadline));
    }

private:
    static int remaining(QDeadlineTimer deadline) {
        return static_cast<int>(qMax<qint64>(1, deadline.remainingTime()));
    }
};

DBusSingleInstance::DBusSingleInstance(std::function<void()> onReopen)
    : d(std::make_unique<Private>(std::move(onReopen))) {}

DBusSingleInstance::~DBusSingleInstance() = default;

DBusSingleInstance::Start DBusSingleInstance::start() {
    QDBusConnection bus = sessionBus::open(longestWait);
    if (!bus.isConnected())
        return Start::first;
    // Before the name: whoever finds the name finds the object.
    bus.registerObject(ownPath, d.get(), QDBusConnection::ExportAdaptors);
    const QDeadlineTimer deadline(longestWait);
    do {
        if (Private::requestName(bus, deadline) != Private::Name::taken)
            return Start::first;
        const QDBusMessage answer = Private::activateOther(bus, deadline);
        if (answer.type() == QDBusMessage::ReplyMessage)
            return Start::handedOver;
        // The other one may have ended between the two questions; then the name is free by now.
        const auto error = QDBusError(answer).type();
        if (error != QDBusError::ServiceUnknown && error != QDBusError::NoReply)
            break;
    } while (!deadline.hasExpired());
    std::fputs("Tavrine is running already and does not answer.\n", stderr);
    return Start::otherIsSilent;
}

} // namespace tavrine

#include "DBusSingleInstance.moc"
