#include "upload/CustomUploadManager.h"

#include "base/Time.h"
#include "base/UserDefaults.h"
#include "ports/Keychain.h"

#include <QPointer>
#include <QStringDecoder>

namespace tavrine {

namespace {

const QString enabledKey = QStringLiteral("cloudUploadEnabled");

KeychainItem scriptItem() {
    return {QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("cloudUploadScript")};
}

/// Empty for whatever is not a text.
QString readScript(Keychain &keychain) {
    const Keychain::Data found = keychain.copyMatching(scriptItem());
    const auto *data = std::get_if<QByteArray>(&found);
    if (!data)
        return {};
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
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

CustomUploadManager::CustomUploadManager(Ports ports, QObject *parent)
    : QObject(parent), m_ports(ports), m_isEnabled(ports.defaults.get<bool>(enabledKey, false)),
      m_keychainQueue(QStringLiteral("com.tavrine.cloudUploadKeychain")) {
    load();
}

bool CustomUploadManager::isConfigured() const {
    return m_isEnabled && !m_savedScript.trimmed().isEmpty();
}

void CustomUploadManager::setEnabled(bool isEnabled) {
    m_isEnabled = isEnabled;
    m_ports.defaults.set(enabledKey, isEnabled);
    Q_EMIT changed();
}

void CustomUploadManager::setScript(const QString &script) {
    m_savedScript = script;
    Q_EMIT changed();
    persistScript();
}

void CustomUploadManager::load() {
    m_keychainQueue.async([&ports = m_ports, self = QPointer(this)] {
        const QString script = readScript(ports.keychain);
        ports.time.async([self, script] {
            if (self)
                self->apply(script);
        });
    });
}

void CustomUploadManager::apply(const QString &loadedScript) {
    m_isApplyingLoadedScript = true;
    setScript(loadedScript);
    m_isApplyingLoadedScript = false;
}

void CustomUploadManager::persistScript() {
    if (m_isApplyingLoadedScript)
        return;
    m_keychainQueue.async([&keychain = m_ports.keychain, script = m_savedScript] { writeScript(keychain, script); });
}

} // namespace tavrine
