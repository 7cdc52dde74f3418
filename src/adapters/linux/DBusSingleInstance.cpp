#include "adapters/linux/DBusSingleInstance.h"

#include "adapters/linux/InstanceLock.h"
#include "adapters/linux/SessionBus.h"
#include "adapters/linux/XdgFolders.h"
#include "base/Program.h"

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

} // namespace

class DBusSingleInstance::Private : public QObject {
public:
    Private(StartRequest asked, StartIdentifiers given)
        : request(std::move(asked)), identifiers(std::move(given)),
          lock(runtimeFolder(), ownBundleIdentifier + u'-' + displayName()) {}

    /// As the first one: takes the name as soon as there is a bus, and again of every bus that takes its place.
    void takeName(OnReopen onReopen) {
        m_object = std::make_unique<ApplicationObject>(std::move(onReopen), request.isByBus);
        sessionBus::follow(this, [this](const QDBusConnection &bus) {
            if (!bus.isConnected())
                return;
            // Before the name: whoever finds the name finds the object.
            m_object->registerOn(bus);
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

    const StartRequest request;
    const StartIdentifiers identifiers;
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
        // What the bus was called for it hands on itself, as soon as somebody has the name.
        const QString method = request.isByBus            ? QStringLiteral("Ping")
                               : request.action.isEmpty() ? QStringLiteral("Activate")
                                                          : QStringLiteral("ActivateAction");
        auto call = QDBusMessage::createMethodCall(ownName, ApplicationObject::path(),
                                                   request.isByBus ? QStringLiteral("org.freedesktop.DBus.Peer")
                                                                   : QStringLiteral("org.freedesktop.Application"),
                                                   method);
        call.setAutoStartService(false);
        if (request.isByBus)
            return call;
        if (!request.action.isEmpty())
            call << request.action << QVariantList();
        QVariantMap platformData;
        if (!identifiers.startupId.isEmpty())
            platformData.insert(QStringLiteral("desktop-startup-id"), QString::fromUtf8(identifiers.startupId));
        if (!identifiers.activationToken.isEmpty())
            platformData.insert(QStringLiteral("activation-token"), QString::fromUtf8(identifiers.activationToken));
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
                if (!reply.isError()) {
                    std::fputs("Tavrine is running already, on another display of this bus, and goes on there.\n",
                               stderr);
                    end(EXIT_SUCCESS);
                }
                if (isNobody(reply.error()))
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

    std::unique_ptr<ApplicationObject> m_object; ///< of the first one
};

DBusSingleInstance::DBusSingleInstance(StartRequest request, StartIdentifiers identifiers)
    : d(std::make_unique<Private>(std::move(request), std::move(identifiers))) {}

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
    return Start::first;
}

void DBusSingleInstance::listen(OnReopen onReopen) {
    d->takeName(std::move(onReopen));
}

} // namespace tavrine
