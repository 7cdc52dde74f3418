#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

#include <optional>

namespace tavrine::test {

/// A service of the session that holds something off for who asks, plays any of those that give numbers: it forgets
/// callers that go, as they all do.
class InhibitService final : public QDBusVirtualObject {
public:
    explicit InhibitService(const QString &name) : m_name(name) { start(); }
    ~InhibitService() override { end(); }

    bool isHanging = false;
    bool isRefusing = false;
    int asked = 0;

    /// The arguments of what is held off, each as one line.
    [[nodiscard]] QStringList held() const {
        QStringList lines;
        for (const auto &each : m_held)
            lines.append(each.arguments);
        return lines;
    }
    /// Answers what it did not.
    void goOn() {
        isHanging = false;
        for (const QDBusMessage &message : std::exchange(m_unanswered, {}))
            answer(message);
    }
    void start() {
        m_bus.emplace(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName()));
        m_bus->registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        m_bus->registerService(m_name);
        m_callers.emplace();
        m_callers->setConnection(*m_bus);
        m_callers->setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        QObject::connect(&*m_callers, &QDBusServiceWatcher::serviceUnregistered, this,
                         [this](const QString &caller) { forget(caller); });
    }
    /// As a crash: it has forgotten everything when it comes back, and begins to count anew.
    void end() {
        m_callers.reset(); // it keeps the connection open
        m_held.clear();
        m_unanswered.clear();
        m_last = 0;
        m_bus.reset();
        QDBusConnection::disconnectFromBus(connectionName());
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override {
        if (!message.member().toLower().endsWith(QLatin1String("inhibit")))
            return false;
        if (isHanging) {
            message.setDelayedReply(true);
            m_unanswered.append(message);
            return true;
        }
        answer(message);
        return true;
    }

private:
    struct Held {
        QString caller;
        QString arguments;
    };

    [[nodiscard]] QString connectionName() const { return QStringLiteral("test-") + m_name; }
    void forget(const QString &caller) {
        m_held.removeIf([&](auto each) { return each.value().caller == caller; });
    }
    void answer(const QDBusMessage &message) {
        if (message.member() != QLatin1String("Inhibit")) {
            m_held.remove(message.arguments().value(0).toUInt());
            m_bus->send(message.createReply());
            return;
        }
        ++asked;
        if (isRefusing) {
            m_bus->send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("not you")));
            return;
        }
        QStringList words;
        for (const QVariant &argument : message.arguments())
            words.append(argument.toString());
        m_callers->addWatchedService(message.service());
        m_held.insert(++m_last, {message.service(), words.join(QLatin1String(", "))});
        m_bus->send(message.createReply(m_last));
    }

    QString m_name;
    std::optional<QDBusConnection> m_bus;
    std::optional<QDBusServiceWatcher> m_callers;
    QHash<uint, Held> m_held;
    QList<QDBusMessage> m_unanswered;
    uint m_last = 0;
};

} // namespace tavrine::test
