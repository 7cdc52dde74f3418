#include "adapters/linux/PluginKeychain.h"

#include <utility>

namespace tavrine {

PluginKeychain::PluginKeychain(Load load) : m_load(std::move(load)) {}

Keychain *PluginKeychain::keychain() {
    Load load;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isCancelled || !m_load)
            return m_isCancelled ? nullptr : m_loaded;
        load = std::exchange(m_load, nullptr);
    }
    // Without the lock: a disk that is slow must not hold up who cancels.
    Keychain *loaded = load();
    const std::lock_guard lock(m_mutex);
    m_loaded = loaded;
    return m_isCancelled ? nullptr : m_loaded;
}

Keychain::Data PluginKeychain::copyMatching(const KeychainItem &item) {
    Keychain *keychain = this->keychain();
    return keychain ? keychain->copyMatching(item) : KeychainStatus::failure;
}

KeychainStatus PluginKeychain::update(const KeychainItem &item, const QByteArray &data) {
    Keychain *keychain = this->keychain();
    return keychain ? keychain->update(item, data) : KeychainStatus::failure;
}

KeychainStatus PluginKeychain::add(const KeychainItem &item, const QByteArray &data) {
    Keychain *keychain = this->keychain();
    return keychain ? keychain->add(item, data) : KeychainStatus::failure;
}

KeychainStatus PluginKeychain::remove(const KeychainItem &item) {
    Keychain *keychain = this->keychain();
    return keychain ? keychain->remove(item) : KeychainStatus::failure;
}

void PluginKeychain::cancel() {
    const std::lock_guard lock(m_mutex);
    m_isCancelled = true;
    if (m_loaded)
        m_loaded->cancel();
}

} // namespace tavrine
