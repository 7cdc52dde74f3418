#pragma once

#include "ports/Keychain.h"

#include <QHash>
#include <QStringDecoder>
#include <QStringList>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace tavrine {

/// A key ring in memory, with its service and the person at its prompt played by the test. Any thread.
class FakeKeychain final : public Keychain {
public:
    [[nodiscard]] Data copyMatching(const KeychainItem &item) override {
        std::unique_lock lock(m_mutex);
        if (!answers(lock, QStringLiteral("read")))
            return KeychainStatus::failure;
        const auto found = m_items.constFind(nameOf(item));
        return found == m_items.constEnd() ? Data(KeychainStatus::itemNotFound) : Data(*found);
    }
    [[nodiscard]] KeychainStatus update(const KeychainItem &item, const QByteArray &data) override {
        std::unique_lock lock(m_mutex);
        if (!answers(lock, QStringLiteral("update")) || !isText(data))
            return KeychainStatus::failure;
        const auto found = m_items.find(nameOf(item));
        if (found == m_items.end())
            return KeychainStatus::itemNotFound;
        *found = data;
        return KeychainStatus::success;
    }
    [[nodiscard]] KeychainStatus add(const KeychainItem &item, const QByteArray &data) override {
        std::unique_lock lock(m_mutex);
        if (!answers(lock, QStringLiteral("add")) || !isText(data) || m_items.contains(nameOf(item)))
            return KeychainStatus::failure;
        m_items.insert(nameOf(item), data);
        return KeychainStatus::success;
    }
    [[nodiscard]] KeychainStatus remove(const KeychainItem &item) override {
        std::unique_lock lock(m_mutex);
        if (!answers(lock, QStringLiteral("remove")))
            return KeychainStatus::failure;
        return m_items.remove(nameOf(item)) ? KeychainStatus::success : KeychainStatus::itemNotFound;
    }
    void cancel() override {
        const std::lock_guard lock(m_mutex);
        m_isCancelled = true;
        m_changed.notify_all();
    }

    /// No service, or one that answers again. Its items outlive it.
    void setRunning(bool isRunning) { change(m_isRunning, isRunning); }
    /// Calls wait from now on, as at a prompt that nobody answers, until `release` or `cancel`.
    void hold() { change(m_isHeld, true); }
    void release() { change(m_isHeld, false); }
    /// The next call fails.
    void failNext() { change(m_failsNext, true); }

    /// What stands in the key ring, and what another program puts there, of whatever bytes.
    [[nodiscard]] QByteArray stored(const KeychainItem &item) const {
        const std::lock_guard lock(m_mutex);
        return m_items.value(nameOf(item));
    }
    void store(const KeychainItem &item, const QByteArray &data) {
        const std::lock_guard lock(m_mutex);
        m_items.insert(nameOf(item), data);
    }
    /// "read", "update", "add" and "remove", in the order in which they arrived.
    [[nodiscard]] QStringList calls() const {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

private:
    static QString nameOf(const KeychainItem &item) { return item.service + QChar(u'\0') + item.account; }
    static bool isText(const QByteArray &data) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        static_cast<void>(QString(decoder(data)));
        return !data.isEmpty() && !data.contains('\0') && !decoder.hasError();
    }
    void change(bool &knob, bool value) {
        const std::lock_guard lock(m_mutex);
        knob = value;
        m_changed.notify_all();
    }
    bool answers(std::unique_lock<std::mutex> &lock, const QString &call) {
        m_calls.append(call);
        m_changed.wait(lock, [this] { return !m_isHeld || m_isCancelled; });
        return !m_isCancelled && m_isRunning && !std::exchange(m_failsNext, false);
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    QHash<QString, QByteArray> m_items;
    QStringList m_calls;
    bool m_isRunning = true;
    bool m_isHeld = false;
    bool m_isCancelled = false;
    bool m_failsNext = false;
};

} // namespace tavrine
