#include "adapters/linux/DBusSingleInstance.h"

#include "adapters/linux/InstanceLock.h"
#include "adapters/linux/SessionBus.h"
#include "adapters/linux/XdgFolders.h"
#include "base/Program.h"

#include <QDBusAbstractAdaptor>
#include <QDBusError>
#include <QDeadlineTimer>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const QString ownName = ownBundleIdentifier;
const QString ownPath = u'/' + QString(ownName).replace(u'.', u'/');
const auto startupIdKey = QStringLiteral("desktop-startup-id"); ///< in the platform data of a call
const auto interfaceName = QStringLiteral("org.freedesktop.Application");
constexpr auto longestWait = 2s;
constexpr auto betweenTries = 20ms;

int reportSilence() {
    std::fputs("Tavrine is running already and does not answer.\n", stderr);
    return EXIT_FAILURE;
}

/// True when nobody has the name that was called. Buses say it in two ways.
bool isNobody(const QDBusError &error) {
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

/// What launchers and later starts call. The program opens no files: to be asked to is to be brought forward.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    ApplicationAdaptor(QObject *exported, DBusSingleInstance::OnReopen onReopen)
        : QDBusAbstractAdaptor(exported), m_onReopen(std::move(onReopen)) {}

public Q_SLOTS:
    void Activate(const QVariantMap &platformData) { reopen(platformData); }
    void Open(const QStringList &, const QVariantMap &platformData) { reopen(platformData); }
    void ActivateAction(const QString &action, const QVariantList &, const QVariantMap &platformData) {
        reopen(platformData, action);
    }

private:
    // In a later turn: the caller waits for the answer, and opening a window takes its time.
    void reopen(const QVariantMap &platformData, const QString &action = {}) {
        const QByteArray startupId = platformData.value(startupIdKey).toString().toUtf8();
        QMetaObject::invokeMethod(
            this, [this, startupId, action] { m_onReopen(startupId, action); }, Qt::QueuedConnection);
    }

    DBusSingleInstance::OnReopen m_onReopen;
};

} // namespace

class DBusSingleInstance::Private : public QObject {
public:
    Private(QByteArray id, QString asked, OnReopen onReopen)
        : startupId(std::move(id)), action(std::move(asked)),
          lock(runtimeFolder(), ownBundleIdentifier + u'-' + displayName()) {
        new ApplicationAdaptor(this, std::move(onReopen));
    }

    /// As the first one: takes the name as soon as there is a bus, and again of every bus that takes its place.
    void takeName() {
        sessionBus::follow(this, [this](QDBusConnection bus) {
            if (!bus.isConnected())
                return;
            // Before the name: whoever finds the name finds the object.
            bus.registerObject(ownPath, this, QDBusConnection::ExportAdaptors);
            requestName(bus);
        });
    }

    /// As a later one: brings the first forward. None while nobody can be asked.
    [[nodiscard]] std::optional<Start> activateOther(const QDBusConnection &bus, QDeadlineTimer deadline) const {
        const auto left = static_cast<int>(qMax<qint64>(1, deadline.remainingTime()));
        const QDBusMessage answer = bus.call(activation(), QDBus::Block, left);
        if (answer.type() == QDBusMessage::ReplyMessage)
            return Start::handedOver;
        // It has the lock already and not the name yet, or not any more.
        if (isNobody(QDBusError(answer)))
            return std::nullopt;
        return Start::otherIsSilent;
    }

    const QByteArray startupId;
    const QString action;
    InstanceLock lock;

private:
    [[nodiscard]] static QString runtimeFolder() {
        const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
        return folder.startsWith(u'/') ? folder : xdgFolders().temporary;
    }

    /// The display without its screen, in signs that a file's name may have.
    [[nodiscard]] static QString displayName() {
        QString display = qEnvironmentVariable("DISPLAY", qEnvironmentVariable("WAYLAND_DISPLAY"));
        if (const auto dot = display.lastIndexOf(u'.'); dot > display.lastIndexOf(u':'))
            display.truncate(dot);
        return QString::fromLatin1(QUrl::toPercentEncoding(display));
    }

    [[nodiscard]] QDBusMessage activation() const {
        auto call = QDBusMessage::createMethodCall(ownName, ownPath, interfaceName,
                                                   action.isEmpty() ? QStringLiteral("Activate")
                                                                    : QStringLiteral("ActivateAction"));
        call.setAutoStartService(false);
        if (!action.isEmpty())
            call << action << QVariantList();
        QVariantMap platformData;
        if (!startupId.isEmpty())
            platformData.insert(startupIdKey, QString::fromUtf8(startupId));
        call << platformData;
        return call;
    }

    void requestName(const QDBusConnection &bus) {
        constexpr uint doNotQueue = 4;
        constexpr uint exists = 3;
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
        call << ownName << doNotQueue;
        sessionBus::ask(bus, call, this, [this, bus](const QDBusPendingCall &reply) {
            if (!reply.isError() && reply.reply().arguments().value(0).toUInt() == exists)
                giveWay(bus);
        });
    }

    /// A program of another display is the first one on this bus.
    void giveWay(const QDBusConnection &bus) {
        sessionBus::ask(
            bus, activation(), this,
            [this, bus](const QDBusPendingCall &reply) {
                if (!reply.isError())
                    end(EXIT_SUCCESS);
                else if (isNobody(reply.error()))
                    requestName(bus); // it has ended meanwhile
                else
                    end(reportSilence());
            },
            longestWait);
    }

    [[noreturn]] static void end(int status) {
        std::fflush(nullptr);
        std::_Exit(status); // as a kill, which is a usual way to end
    }
};

DBusSingleInstance::DBusSingleInstance(QByteArray startupId, QString action, OnReopen onReopen)
    : d(std::make_unique<Private>(std::move(startupId), std::move(action), std::move(onReopen))) {}

DBusSingleInstance::~DBusSingleInstance() = default;

DBusSingleInstance::Start DBusSingleInstance::start() {
    std::optional<QDBusConnection> bus;
    std::optional<QDeadlineTimer> deadline;
    // Without a place for the lock, the bus name alone decides.
    while (d->lock.take() == InstanceLock::Holder::another) {
        if (!bus) {
            bus = sessionBus::open(longestWait);
            deadline.emplace(longestWait);
        }
        if (!bus || !bus->isConnected() || deadline->hasExpired()) {
            reportSilence();
            return Start::otherIsSilent;
        }
        const auto outcome = d->activateOther(*bus, *deadline);
        if (outcome == Start::otherIsSilent)
            reportSilence();
        if (outcome)
            return *outcome;
        std::this_thread::sleep_for(betweenTries);
    }
    d->takeName();
    return Start::first;
}

} // namespace tavrine

#include "DBusSingleInstance.moc"
