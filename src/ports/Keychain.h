#pragma once

#include <QByteArray>
#include <QString>
#include <QtPlugin>

#include <variant>

namespace tavrine {

/// How a call to the key ring ended. Whatever is not one of the first two: no service, a locked key ring, an answer
/// that did not come in time, data that it cannot keep.
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
///  1. An absent service is a failure, never an absent item: who cannot ask does not know. So is a store that stays
///     locked.
///  2. `update` changes an item that exists and makes none; `add` makes one and changes none; `remove` tells when
///     there was none. What fails changes nothing.
///  3. The data is text in UTF-8 without a zero byte, and not empty. It comes back byte for byte; other data is
///  refused.
class Keychain {
public:
    using Data = std::variant<KeychainStatus, QByteArray>; ///< the secret, or why there is none

    virtual ~Keychain() = default;
    [[nodiscard]] virtual Data copyMatching(const KeychainItem &item) = 0;
    [[nodiscard]] virtual KeychainStatus update(const KeychainItem &item, const QByteArray &data) = 0;
    [[nodiscard]] virtual KeychainStatus add(const KeychainItem &item, const QByteArray &data) = 0;
    [[nodiscard]] virtual KeychainStatus remove(const KeychainItem &item) = 0;

    /// For the end of the program, on any thread: the call that waits at present and all that come fail at once.
    virtual void cancel() = 0;
};

} // namespace tavrine

#define TAVRINE_KEYCHAIN "tavrine.Keychain" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::Keychain, TAVRINE_KEYCHAIN)
