#include "upload/CustomUploadManager.h"

#include "base/Program.h"
#include "base/Time.h"
#include "ports/Keychain.h"

#include <QPointer>
#include <QStringDecoder>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace tavrine {

namespace {

KeychainItem scriptItem() {
    return {ownBundleIdentifier, QStringLiteral("cloudUploadScript")};
}

/// Empty for whatever is not a text. A byte order mark is part of one.
QString textOf(const Keychain::Data &found) {
    const auto *data = std::get_if<QByteArray>(&found);
    if (!data)
        return {};
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(*data);
    return decoder.hasError() ? QString() : text;
}

/// What goes wrong here is not told: the stored script stays as it was.
void writeScript(Keychain &keychain, const QString &script) {
    if (script.isEmpty()) {
        static_cast<void>(keychain.remove(scriptItem()));
        return;
    }
    const QByteArray data = script.toUtf8();
    if (keychain.update(scriptItem(), data) == KeychainStatus::itemNotFound)
        static_cast<void>(keychain.add(scriptItem(), data));
}

} // namespace

struct CustomUploadManager::Writes {
    std::mutex mutex;
    std::condition_variable ended;
    int underWay = 0;
};

CustomUploadManager::CustomUploadManager(Ports ports, QObject *parent)
    : QObject(parent), m_ports(ports), m_isEnabled(preference::cloudUploadEnabled.get(ports.defaults)),
      m_writes(std::make_shared<Writes>()), m_keychainQueue(QStringLiteral("com.tavrine.cloudUploadKeychain")) {
    load();
}

CustomUploadManager::~CustomUploadManager() {
    {
        std::unique_lock lock(m_writes->mutex);
        m_writes->ended.wait_for(lock, longestGoodbye, [this] { return m_writes->underWay == 0; });
    }
    m_ports.keychain.cancel();
}

bool CustomUploadManager::isConfigured() const {
    return m_isEnabled && !m_savedScript.trimmed().isEmpty();
}

void CustomUploadManager::setEnabled(bool isEnabled) {
    m_isEnabled = isEnabled;
    preference::cloudUploadEnabled.set(m_ports.defaults, isEnabled);
    Q_EMIT changed();
}

void CustomUploadManager::takePreference() {
    const bool isEnabled = preference::cloudUploadEnabled.get(m_ports.defaults);
    if (std::exchange(m_isEnabled, isEnabled) != isEnabled)
        Q_EMIT changed();
}

void CustomUploadManager::setScript(const QString &script) {
    m_source = Source::person;
    m_savedScript = script;
    persistScript();
    Q_EMIT changed();
}

void CustomUploadManager::loadAgainIfFailed() {
    if (m_source == Source::failedToLoad)
        load();
}

void CustomUploadManager::load() {
    m_source = Source::loading;
    m_keychainQueue.async([&ports = m_ports, self = QPointer(this)] {
        const Keychain::Data found = ports.keychain.copyMatching(scriptItem());
        ports.time.async([self, found] {
            if (!self || self->m_source != Source::loading)
                return;
            self->m_source = found == Keychain::Data(KeychainStatus::failure) ? Source::failedToLoad : Source::keychain;
            self->applyLoaded(textOf(found));
        });
    });
}

void CustomUploadManager::applyLoaded(const QString &script) {
    m_isApplyingLoadedScript = true;
    m_savedScript = script;
    persistScript();
    m_isApplyingLoadedScript = false; // before others hear of it: what they save by it is to be written
    Q_EMIT changed();
}

void CustomUploadManager::persistScript() {
    if (m_isApplyingLoadedScript)
        return;
    const std::lock_guard lock(m_writes->mutex);
    ++m_writes->underWay;
    m_keychainQueue.async([&keychain = m_ports.keychain, script = m_savedScript, writes = m_writes] {
        writeScript(keychain, script);
        const std::lock_guard endLock(writes->mutex);
        --writes->underWay;
        writes->ended.notify_all();
    });
}

} // namespace tavrine
