#include "adapters/linux/PackageKitUpdates.h"

#include "adapters/linux/SystemBus.h"

#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

#include <utility>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Answer = PackageUpdates::Answer;

const auto service = QStringLiteral("org.freedesktop.PackageKit");
const auto servicePath = QStringLiteral("/org/freedesktop/PackageKit");
const auto transactionInterface = QStringLiteral("org.freedesktop.PackageKit.Transaction");

// The service's own numbers: bits of its filters, and how a transaction ended.
constexpr qulonglong filterNone = 1ULL << 1;
constexpr qulonglong filterInstalled = 1ULL << 2;
constexpr uint exitSuccess = 1;

/// A daemon that has to be started first reads its lists before it answers. Who asks waits less.
constexpr auto longestCall = 2min;

// No system has as many updates, and no package such a name; what says so is out of its mind.
constexpr int mostPackages = 100'000;
constexpr qsizetype longestIdentifier = 1000;
constexpr qsizetype mostVersions = 16;

bool isAbsence(const QString &error) {
    return error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
           error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

/// Two transactions of the daemon, one after the other: which version is installed, and which updates there are. Each
/// is an object of the daemon's that tells of packages by signals until it has finished.
class PackageKitQuestion final : public QObject, public PackageUpdates::Question {
    Q_OBJECT

public:
    PackageKitQuestion(QString package, PackageUpdates::Start start, std::function<void(const Answer &)> answered)
        : m_package(std::move(package)), m_start(start), m_answered(std::move(answered)) {
        systemBus::whenOpen(this, [this](const QDBusConnection &bus) {
            m_bus = bus;
            if (bus.isConnected())
                create();
            else
                answerAbsent();
        });
    }
    ~PackageKitQuestion() override {
        if (!m_transaction.isEmpty())
            m_bus->send(callOf(QStringLiteral("Cancel")));
    }

private Q_SLOTS:
    void onPackage(const QDBusMessage &signal) {
        if (signal.path() != m_transaction)
            return;
        const QVariantList arguments = signal.arguments();
        const QString identifier = arguments.value(1).toString();
        if (signal.signature() != QLatin1String("uss") || ++m_told > mostPackages ||
            identifier.size() > longestIdentifier)
            return answer({});
        // Name, version, architecture, origin.
        const QStringList parts = identifier.split(u';');
        constexpr qsizetype count = 4;
        if (parts.size() != count)
            return answer({});
        if (parts.front() == m_package && !parts.at(1).isEmpty() && m_versions.size() < mostVersions)
            m_versions.append(parts.at(1));
    }

    void onFinished(const QDBusMessage &signal) {
        if (signal.path() != m_transaction)
            return;
        m_transaction.clear(); // it is none any more, and needs no cancelling
        if (signal.signature() != QLatin1String("uu") || signal.arguments().value(0).toUInt() != exitSuccess)
            return answer({});
        const QStringList versions = std::exchange(m_versions, {});
        if (m_installed.isEmpty() && versions.isEmpty())
            return answer({Answer::Kind::unavailable});
        if (!m_installed.isEmpty())
            return answer({Answer::Kind::versions, m_installed, versions});
        m_installed = versions.front();
        create();
    }

    /// Before it has finished: every transaction is destroyed in the end.
    void onDestroy(const QDBusMessage &signal) {
        if (signal.path() == m_transaction)
            answer({});
    }

private:
    void create() {
        auto call = QDBusMessage::createMethodCall(service, servicePath, service, QStringLiteral("CreateTransaction"));
        call.setAutoStartService(m_start == PackageUpdates::Start::ifNeeded);
        systemBus::ask(
            *m_bus, call, this, [this](const QDBusPendingCall &reply) { onCreated(reply); }, longestCall);
    }

    void onCreated(const QDBusPendingCall &call) {
        const QDBusMessage reply = call.reply();
        if (call.isError() && isAbsence(reply.errorName()))
            return answerAbsent();
        if (call.isError() || reply.signature() != QLatin1String("o"))
            return answer({});
        m_owner = reply.service();
        m_transaction = reply.arguments().constFirst().value<QDBusObjectPath>().path();
        m_told = 0;
        m_watcher = std::make_unique<QDBusServiceWatcher>(m_owner, *m_bus, QDBusServiceWatcher::WatchForUnregistration);
        connect(m_watcher.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] { answer({}); });
        listen();
        const bool isBackground = m_start == PackageUpdates::Start::never;
        auto hints = callOf(QStringLiteral("SetHints"));
        hints << QStringList{QStringLiteral("interactive=false"),
                             isBackground ? QStringLiteral("background=true") : QStringLiteral("background=false")};
        m_bus->send(hints);
        auto role = callOf(m_installed.isEmpty() ? QStringLiteral("Resolve") : QStringLiteral("GetUpdates"));
        if (m_installed.isEmpty())
            role << filterInstalled << QStringList(m_package);
        else
            role << filterNone;
        systemBus::ask(
            *m_bus, role, this,
            [this, transaction = m_transaction](const QDBusPendingCall &begun) {
                if (begun.isError() && transaction == m_transaction)
                    answer({});
            },
            longestCall);
    }

    /// For the signals of this transaction, from its daemon alone.
    void listen() {
        const struct {
            const char *signal;
            const char *slot;
        } rows[] = {{"Package", SLOT(onPackage(QDBusMessage))},
                    {"Finished", SLOT(onFinished(QDBusMessage))},
                    {"Destroy", SLOT(onDestroy(QDBusMessage))}};
        for (const auto &row : rows)
            m_bus->connect(m_owner, m_transaction, transactionInterface, QLatin1String(row.signal), this, row.slot);
    }

    [[nodiscard]] QDBusMessage callOf(const QString &method) const {
        auto call = QDBusMessage::createMethodCall(m_owner, m_transaction, transactionInterface, method);
        call.setAutoStartService(false);
        return call;
    }

    void answerAbsent() {
        const bool isAsleepMaybe = m_start == PackageUpdates::Start::never;
        answer({isAsleepMaybe ? Answer::Kind::noAnswer : Answer::Kind::unavailable});
    }
    void answer(const Answer &answer) {
        if (const auto answered = std::exchange(m_answered, nullptr))
            answered(answer); // and with that, most likely, this is gone
    }

    const QString m_package;
    const PackageUpdates::Start m_start;
    std::function<void(const Answer &)> m_answered;
    std::optional<QDBusConnection> m_bus;
    QString m_owner;       ///< the daemon, by its own name on the bus
    QString m_transaction; ///< its object; empty for none
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    QString m_installed;    ///< empty until it is known
    QStringList m_versions; ///< of this program, told of by this transaction
    int m_told = 0;
};

} // namespace

std::unique_ptr<PackageUpdates::Question> PackageKitUpdates::ask(Start start,
                                                                 std::function<void(const Answer &)> answered) {
    return std::make_unique<PackageKitQuestion>(m_package, start, std::move(answered));
}

} // namespace tavrine

#include "PackageKitUpdates.moc"
