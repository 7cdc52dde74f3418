#include "adapters/linux/QtKeychainStore.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QStringDecoder>
#include <QThread>
#include <qt6keychain/keychain.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include <dlfcn.h>
#include <gio/gio.h>

namespace tavrine {

namespace {

using Attributes = QMap<QString, QString>;

QString secretService() {
    return QStringLiteral("org.freedesktop.secrets");
}

/// None where the library would not hand back what is written: it works with texts that end at a zero byte. A byte
/// order mark is part of the text.
std::optional<QString> textOf(const QByteArray &data) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(data);
    if (text.isEmpty() || text.contains(QChar::Null) || decoder.hasError())
        return std::nullopt;
    return text;
}

/// GLib ends the whole process when the bus goes away, unless it is told otherwise. Only for the library: its
/// connection is GLib's shared one, which stays.
void outliveTheBus() {
    if (GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr))
        g_dbus_connection_set_exit_on_close(bus, FALSE);
}

/// Before each call, on the library's thread. The Secret Service's library keeps its session with a service that has
/// ended, and every call to the next one would fail by it. Never within a call, which would not end then. The library
/// is only spoken to where it is loaded: other desktops have another store.
void forgetAnEndedService() {
    static QString lastOwner;
    const QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    const QString owner = bus ? bus->serviceOwner(secretService()).value() : QString();
    if (owner == std::exchange(lastOwner, owner))
        return;
    void *library = dlopen("libsecret-1.so.0", RTLD_LAZY | RTLD_NOLOAD);
    if (!library)
        return;
    using Disconnect = void (*)();
    if (const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library, "secret_service_disconnect")))
        disconnect();
    dlclose(library);
}

/// Lives on the library's thread. Left to the end of the process: the thread may be within a call to the bus.
QObject *worker() {
    static QObject *const object = [] {
        qDBusRegisterMetaType<Attributes>();
        auto *made = new QObject;
        auto *thread = new QThread;
        thread->setObjectName(QStringLiteral("keychain"));
        made->moveToThread(thread);
        thread->start();
        QMetaObject::invokeMethod(made, &outliveTheBus, Qt::QueuedConnection);
        return made;
    }();
    return object;
}

/// Whether the Secret Service holds the item after all. The library calls an item absent whose key ring the person
/// declined to unlock.
bool isHeldBack(const KeychainItem &item) {
    QDBusMessage search =
        QDBusMessage::createMethodCall(secretService(), QStringLiteral("/org/freedesktop/secrets"),
                                       QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SearchItems"));
    search << QVariant::fromValue(
        Attributes{{QStringLiteral("user"), item.account}, {QStringLiteral("server"), item.service}});
    const QDBusMessage answer = QDBusConnection::sessionBus().call(search, QDBus::Block, 5000);
    // Without a Secret Service the library asked another store, and its word stands.
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("aoao"))
        return false;
    const QVariantList lists = answer.arguments();
    return !qdbus_cast<QList<QDBusObjectPath>>(lists.at(0)).isEmpty() ||
           !qdbus_cast<QList<QDBusObjectPath>>(lists.at(1)).isEmpty();
}

KeychainStatus statusFor(const QKeychain::Job &job, const KeychainItem &item) {
    switch (job.error()) {
    case QKeychain::NoError:
        return KeychainStatus::success;
    case QKeychain::EntryNotFound:
        return isHeldBack(item) ? KeychainStatus::failure : KeychainStatus::itemNotFound;
    default:
        return KeychainStatus::failure;
    }
}

} // namespace

/// What callers wait on. Shared with the library's thread, which may answer after the caller has gone.
struct QtKeychainStore::Wait {
    std::mutex mutex;
    std::condition_variable changed;
    bool isCancelled = false;
};

/// One call of the library.
struct QtKeychainStore::Question {
    Action action;
    KeychainItem item;
    QByteArray data;
    std::optional<Data> answer{};  // under the mutex
    QKeychain::Job *job = nullptr; // from here on: on the library's thread
    bool isAbandoned = false;
    bool isReported = false;

    QKeychain::Job *makeJob() const {
        if (action == Action::read)
            return new QKeychain::ReadPasswordJob(item.service);
        if (action == Action::remove)
            return new QKeychain::DeletePasswordJob(item.service);
        auto *write = new QKeychain::WritePasswordJob(item.service);
        write->setTextData(textOf(data).value_or(QString()));
        return write;
    }
    [[nodiscard]] Data result() const {
        const KeychainStatus status = isAbandoned ? KeychainStatus::failure : statusFor(*job, item);
        if (action == Action::read && status == KeychainStatus::success)
            return static_cast<QKeychain::ReadPasswordJob *>(job)->binaryData();
        return status;
    }
};

QtKeychainStore::QtKeychainStore(std::chrono::milliseconds longest)
    : m_longest(longest), m_wait(std::make_shared<Wait>()) {}

QtKeychainStore::~QtKeychainStore() {
    cancel();
}

void QtKeychainStore::start(const std::shared_ptr<Question> &question, const std::shared_ptr<Wait> &wait) {
    forgetAnEndedService();
    QKeychain::Job *job = question->job = question->makeJob();
    job->setKey(question->item.account);
    job->setAutoDelete(false);
    QObject::connect(job, &QKeychain::Job::finished, job, [question, wait] {
        // A job that was abandoned stays for the library to end, which may never come.
        if (!std::exchange(question->isReported, true) && question->isAbandoned)
            return;
        question->job->deleteLater();
        const Data result = question->result();
        const std::lock_guard lock(wait->mutex);
        question->answer.emplace(result);
        wait->changed.notify_all();
    });
    job->start();
}

/// The library's own queue waits for ever behind a job that never ends, as one does whose prompt died with the service.
/// It is told that this one has.
void QtKeychainStore::abandon(Question &question) {
    if (!question.job || question.isReported)
        return;
    question.isAbandoned = true;
    question.job->emitFinishedWithError(QKeychain::OtherError, QString());
}

Keychain::Data QtKeychainStore::ask(Action action, const KeychainItem &item, const QByteArray &data) {
    const auto question = std::make_shared<Question>(Question{action, item, data});
    std::unique_lock lock(m_wait->mutex);
    if (m_wait->isCancelled)
        return KeychainStatus::failure;
    QMetaObject::invokeMethod(
        worker(), [question, wait = m_wait] { start(question, wait); }, Qt::QueuedConnection);
    m_wait->changed.wait_for(lock, m_longest, [&] { return m_wait->isCancelled || question->answer.has_value(); });
    if (question->answer)
        return *question->answer;
    QMetaObject::invokeMethod(
        worker(), [question] { abandon(*question); }, Qt::QueuedConnection);
    return KeychainStatus::failure;
}

KeychainStatus QtKeychainStore::statusOf(const KeychainItem &item) {
    const Data found = copyMatching(item);
    const auto *status = std::get_if<KeychainStatus>(&found);
    return status ? *status : KeychainStatus::success;
}

Keychain::Data QtKeychainStore::copyMatching(const KeychainItem &item) {
    return ask(Action::read, item);
}

KeychainStatus QtKeychainStore::update(const KeychainItem &item, const QByteArray &data) {
    if (!textOf(data))
        return KeychainStatus::failure;
    // The library only knows to write, and would make the item.
    if (const KeychainStatus status = statusOf(item); status != KeychainStatus::success)
        return status;
    return std::get<KeychainStatus>(ask(Action::write, item, data));
}

KeychainStatus QtKeychainStore::add(const KeychainItem &item, const QByteArray &data) {
    if (!textOf(data) || statusOf(item) != KeychainStatus::itemNotFound)
        return KeychainStatus::failure;
    return std::get<KeychainStatus>(ask(Action::write, item, data));
}

KeychainStatus QtKeychainStore::remove(const KeychainItem &item) {
    // The library calls it a success to remove what is not there.
    if (const KeychainStatus status = statusOf(item); status != KeychainStatus::success)
        return status;
    return std::get<KeychainStatus>(ask(Action::remove, item));
}

void QtKeychainStore::cancel() {
    const std::lock_guard lock(m_wait->mutex);
    m_wait->isCancelled = true;
    m_wait->changed.notify_all();
}

} // namespace tavrine
