#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// One thing that is asked of a service on a bus and held until it is given back. Lives on the main thread.
///
/// A service that is started anew is asked again. One that does not answer is waited for: it may go on after a night.
/// While something else is asked for, what was held before is held until that is there.
class InhibitCall : public QObject {
    Q_OBJECT

public:
    /// What holds it: a descriptor or a number, as the service gave it.
    using Hold = QVariant;

    struct Service {
        QString name;
        std::function<void(QObject *, std::function<void(QDBusConnection)>)> follow; ///< the bus it is on
        /// Gives it back. Empty where letting go of the hold does.
        std::function<QDBusMessage(const Hold &)> giveBack;
    };

    /// `onChange` is called in a later turn than what brought the change about.
    InhibitCall(Service service, std::function<void()> onChange);
    ~InhibitCall() override;

    /// Asks by this call from now on; none gives back what is held. The same call again is no other.
    void want(const std::optional<QDBusMessage> &call);

    [[nodiscard]] bool isHeld() const { return m_isHeld; }
    [[nodiscard]] bool isAsking() const { return m_isAsking; }

private:
    void onBusOpen(const QDBusConnection &bus);
    void onOwnerChanged(const QString &newOwner);
    void ask();
    void onAnswer(const QDBusMessage &reply, int question);
    void giveBack(const std::optional<Hold> &hold) const;
    void forget();
    void tell();

    Service m_service;
    std::function<void()> m_onChange;
    bool m_isFollowing = false;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::optional<QDBusMessage> m_call;
    std::optional<Hold> m_hold; ///< while `m_isHeld` is not set, of a service that went
    bool m_isHeld = false;
    int m_question = 0;
    bool m_isAsking = false;
};

} // namespace tavrine
