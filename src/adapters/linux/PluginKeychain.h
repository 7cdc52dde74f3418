#pragma once

#include "ports/Keychain.h"

#include <functional>
#include <mutex>

namespace tavrine {

/// The key ring as a plugin that is loaded, on the calling queue, with the first question. Without the plugin every
/// call is a failure.
class PluginKeychain final : public Keychain {
public:
    /// Finds the key ring; may give null. Called once.
    using Load = std::function<Keychain *()>;

    explicit PluginKeychain(Load load);

    [[nodiscard]] Data copyMatching(const KeychainItem &item) override;
    [[nodiscard]] KeychainStatus update(const KeychainItem &item, const QByteArray &data) override;
    [[nodiscard]] KeychainStatus add(const KeychainItem &item, const QByteArray &data) override;
    [[nodiscard]] KeychainStatus remove(const KeychainItem &item) override;
    void cancel() override;

private:
    /// Null when there is none, or no more.
    [[nodiscard]] Keychain *keychain();

    std::mutex m_mutex;
    Load m_load;
    Keychain *m_loaded = nullptr;
    bool m_isCancelled = false;
};

} // namespace tavrine
