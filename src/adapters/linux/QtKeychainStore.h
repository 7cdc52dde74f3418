#pragma once

#include "ports/Keychain.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace tavrine {

/// The key ring behind QtKeychain: the Secret Service, or KWallet on its own desktop. Built as a plugin: the libraries
/// behind it cost several megabytes, which the program pays with its first question.
///
/// The library's work happens on one thread of its own that stays as long as the process, because the library ties
/// itself to the thread that uses it first. A call only waits for that thread, so that a service which never answers
/// holds nobody longer than `longest`, and nobody at all after `cancel`.
class QtKeychainStore final : public QObject, public Keychain {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_KEYCHAIN)
    Q_INTERFACES(tavrine::Keychain)

public:
    /// As long as a person may take to notice and answer the question for the password.
    static constexpr std::chrono::milliseconds timeToUnlock = std::chrono::minutes(2);

    explicit QtKeychainStore(std::chrono::milliseconds longest = timeToUnlock);
    ~QtKeychainStore() override;

    [[nodiscard]] Data copyMatching(const KeychainItem &item) override;
    [[nodiscard]] KeychainStatus update(const KeychainItem &item, const QByteArray &data) override;
    [[nodiscard]] KeychainStatus add(const KeychainItem &item, const QByteArray &data) override;
    [[nodiscard]] KeychainStatus remove(const KeychainItem &item) override;
    void cancel() override;

private:
    struct Wait;
    struct Question;
    enum class Action { read, write, remove };

    static void start(const std::shared_ptr<Question> &question, const std::shared_ptr<Wait> &wait);
    static void abandon(Question &question);
    [[nodiscard]] Data ask(Action action, const KeychainItem &item, const QByteArray &data = {});
    [[nodiscard]] KeychainStatus statusOf(const KeychainItem &item);

    std::chrono::milliseconds m_longest;
    std::shared_ptr<Wait> m_wait;
};

} // namespace tavrine
