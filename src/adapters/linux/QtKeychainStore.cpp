#include "adapters/linux/QtKeychainStore.h"

#include <QStringDecoder>
#include <QThread>
#include <qt6keychain/keychain.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <gio/gio.h>

namespace tavrine {

namespace {

constexpr auto secretService = "org.freedesktop.secrets";
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

/// GLib's shared connection, which is the library's too; null without a bus. Asked for before each call, as the bus may
/// come later than the first, and kept for good: GLib ends the whole process when the bus goes away under a connection
/// that was not told otherwise, and one that the library made for itself would not be. For the library's thread.
GDBusConnection *sessionBus() {
    static GDBusConnection *bus = nullptr;
    if (!bus)
        bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus)
        g_dbus_connection_set_exit_on_close(bus, FALSE);
    return bus && !g_dbus_connection_is_closed(bus) ? bus : nullptr;
}

/// None where the call fails. Takes the arguments over.
Answer call(GDBusConnection *bus, const char *service, const char *path, const char *interface, const char *method,
            GVariant *arguments, const char *type) {
    return {g_dbus_connection_call_sync(bus, service, path, interface, method, arguments, G_VARIANT_TYPE(type),
                                        G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, nullptr, nullptr),
            &g_variant_unref};
}

/// Before each call. The Secret Service's library keeps its session with a service that has ended, and every call to
/// the next one would fail by it. Never within a call, which would not end then. The library is only spoken to where it
/// is loaded: other desktops have another store.
void forgetAnEndedService(GDBusConnection *bus) {
    static std::string lastOwner;
    const Answer answer = call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "GetNameOwner", g_variant_new("(s)", secretService), "(s)");
    const char *name = "";
    if (answer)
        g_variant_get(answer.get(), "(&s)", &name);
    if (const std::string owner = name; owner == std::exchange(lastOwner, owner))
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
        auto *made = new QObject;
        auto *thread = new QThread;
        thread->setObjectName(QStringLiteral("keychain"));
        made->moveToThread(thread);
        thread->start();
        return made;
    }();
    return object;
}

/// Whether the Secret Service holds the item after all. The library calls an item absent whose key ring the person
/// declined to unlock.
bool isHeldBack(const KeychainItem &item) {
    GDBusConnection *bus = sessionBus();
    if (!bus)
        return true; // who cannot ask does not know
    GVariantBuilder attributes;
    g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&attributes, "{ss}", "user", item.account.toUtf8().constData());
    g_variant_builder_add(&attributes, "{ss}", "server", item.service.toUtf8().constData());
    const Answer found = call(bus, secretService, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service",
                              "SearchItems", g_variant_new("(a{ss})", &attributes), "(aoao)");
    // Without a Secret Service the library asked another store, and its word stands.
    if (!found)
        return false;
    const auto count = [&](gsize list) {
        return g_variant_n_children(Answer(g_variant_get_child_value(found.get(), list), &g_variant_unref).get());
    };
    return count(0) > 0 || count(1) > 0;
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
    GDBusConnection *bus = sessionBus();
    if (!bus) {
        const std::lock_guard lock(wait->mutex);
        question->answer.emplace(KeychainStatus::failure);
        wait->changed.notify_all();
        return;
    }
    forgetAnEndedService(bus);
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
