#include "adapters/linux/QtKeychainStore.h"

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

constexpr auto secretService = "org.freedesktop.secrets";
constexpr auto secretLibrary = "libsecret-1.so.0";
constexpr int answerMilliseconds = 5000;

using Answer = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

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

/// GLib's shared connection, which is the library's too. Held for good, but for one that has ended: GLib ends the whole
/// process when the bus goes away under a connection that was not told otherwise, and one that the library made for
/// itself would not be. For the library's thread.
GDBusConnection *heldBus = nullptr;

/// Null without a bus.
GDBusConnection *sessionBus() {
    return heldBus && !g_dbus_connection_is_closed(heldBus) ? heldBus : nullptr;
}

/// None where the call fails. Takes the arguments over.
Answer call(GDBusConnection *bus, const char *service, const char *path, const char *interface, const char *method,
            GVariant *arguments, const char *type) {
    return {g_dbus_connection_call_sync(bus, service, path, interface, method, arguments, G_VARIANT_TYPE(type),
                                        G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, nullptr, nullptr),
            &g_variant_unref};
}

/// Before each call, so that the Secret Service's library begins anew. It keeps its session with a service that has
/// ended, and every call to the next one would fail by it; and of a session that it uses for a second call it never
/// lets go, nor of the connection behind it. Never within a call, which would not end then. The library is only spoken
/// to where it is loaded: other desktops have another store.
void disconnectLibrary() {
    void *library = dlopen(secretLibrary, RTLD_LAZY | RTLD_NOLOAD);
    if (!library)
        return;
    using Disconnect = void (*)();
    if (const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library, "secret_service_disconnect")))
        disconnect();
    dlclose(library);
}

/// Before each call, as the bus may come later than the first, and come back after its end: GLib connects anew as soon
/// as nobody holds what has ended. Null without a bus.
GDBusConnection *connectedBus() {
    if (heldBus && g_dbus_connection_is_closed(heldBus))
        g_clear_object(&heldBus);
    if (!heldBus)
        heldBus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (heldBus)
        g_dbus_connection_set_exit_on_close(heldBus, FALSE);
    return sessionBus();
}

/// Lives on the library's thread. Left to the end of the process: the thread may be within a call to the bus.
QObject *worker() {
    static QObject *const object = [] {
        auto *made = new QObject;
        auto *thread = new QThread;
        thread->setObjectName(QStringLiteral("keychain"));
        made->moveToThread(thread);
        thread->start();
        return made;
    }();
    return object;
}

/// Whether the Secret Service holds the item, locked or not. None where it does not say.
std::optional<bool> isInService(const KeychainItem &item) {
    GVariantBuilder attributes;
    g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&attributes, "{ss}", "user", item.account.toUtf8().constData());
    g_variant_builder_add(&attributes, "{ss}", "server", item.service.toUtf8().constData());
    const Answer found = call(sessionBus(), secretService, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service",
                              "SearchItems", g_variant_new("(a{ss})", &attributes), "(aoao)");
    if (!found)
        return std::nullopt;
    const auto count = [&](gsize list) {
        return g_variant_n_children(Answer(g_variant_get_child_value(found.get(), list), &g_variant_unref).get());
    };
    return count(0) > 0 || count(1) > 0;
}

/// Whether the Secret Service is what the library asks: on its own desktop that is KWallet.
bool asksSecretService() {
    static const bool asks = !qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(QLatin1String("KDE")) &&
                             !qEnvironmentVariableIsSet("KDE_FULL_SESSION") && dlopen(secretLibrary, RTLD_LAZY);
    return asks;
}

/// What is known before the library is asked for an item, which is all but where it is: after a search in vain the
/// library never lets go of its connection.
std::optional<KeychainStatus> knownStatusOf(const KeychainItem &item) {
    if (!asksSecretService())
        return std::nullopt;
    const auto isThere = isInService(item);
    if (!isThere)
        return KeychainStatus::failure; // who cannot ask does not know
    return *isThere ? std::nullopt : std::optional(KeychainStatus::itemNotFound);
}

/// Whether the Secret Service holds the item after all. The library calls an item absent whose key ring the person
/// declined to unlock.
bool isHeldBack(const KeychainItem &item) {
    if (!sessionBus())
        return true;
    // Without a Secret Service the library asked another store, and its word stands.
    return isInService(item).value_or(false);
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
    disconnectLibrary();
    std::optional<KeychainStatus> known;
    if (!connectedBus())
        known = KeychainStatus::failure;
    else if (question->action == Action::read)
        known = knownStatusOf(question->item);
    if (known) {
        const std::lock_guard lock(wait->mutex);
        question->answer.emplace(*known);
        wait->changed.notify_all();
        return;
    }
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
