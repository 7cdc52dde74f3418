#pragma once

#include <QByteArray>
#include <QString>

#include <variant>

namespace tavrine {

/// How a call to the key ring ended. Whatever is not one of the first two: no service, a locked key ring, an answer
/// that did not come in time.
enum class KeychainStatus { success, itemNotFound, failure };

/// One secret of this person: a generic password, named by its service and its account.
struct KeychainItem {
    QString service;
    QString account;
    bool operator==(const KeychainItem &) const = default;
};

/// The desktop's store for secrets. Called on one queue that is not the main thread; a call may take as long as the
/// person needs to unlock the store, and ends with a failure after a bounded time.
///
///  1. An absent service is a failure, never an absent item: who cannot ask does not know.
///  2. `update` changes an item that exists and makes none; `add` makes one.
class Keychain {
public:
    using Data = std::variant<KeychainStatus, QByteArray>; ///< the secret, or why there is none

    virtual ~Keychain() = default;
    [[nodiscard]] virtual Data copyMatching(const KeychainItem &item) = 0;
    [[nodiscard]] virtual KeychainStatus update(const KeychainItem &item, const QByteArray &data) = 0;
    [[nodiscard]] virtual KeychainStatus add(const KeychainItem &item, const QByteArray &data) = 0;
    [[nodiscard]] virtual KeychainStatus remove(const KeychainItem &item) = 0;
};

} // namespace tavrine
