#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// Brings the windows before screen readers once one is there and all that stands behind it answers.
///
/// Left to itself, Qt asks for one when the first widget gets an accessible name, and waits on the main thread for the
/// session bus and for the owner of org.a11y.Bus, 25 s a call. This object has Qt's bridge made without a question and
/// asks itself, without waiting: whether anybody wants it, and whether the accessibility bus and its registry answer.
/// Who hangs is heard on coming to itself. Made on the main thread right after the application and before anything
/// opens a bus, since making the bridge waits for whoever opens one; lives as long.
class LateAccessibility final : public QObject {
    Q_OBJECT

public:
    /// `begin` is called once, on the main thread, with the address of the accessibility bus.
    using Begin = std::function<void(const QString &address)>;

    /// With Qt's bridge.
    LateAccessibility();
    explicit LateAccessibility(Begin begin);

    /// True when Qt's bridge was made and waits for its address. It is only where there are screen readers: on X11.
    [[nodiscard]] bool hasBridge() const { return m_bridge != nullptr; }

private Q_SLOTS:
    void ask();

private:
    void makeBridge();
    void followBus();
    void onBusOpen(const QDBusConnection &bus);
    void askForAddress();
    void openBus(const QString &address);
    void askRegistry(const QDBusConnection &bus, const QString &address);

    Begin m_begin;
    QString m_fixedAddress; ///< that the person has set in the environment
    QPointer<QObject> m_bridge;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    int m_question = 0; ///< the number of the last one: answers to older ones are dropped
    bool m_isUnderWay = false;
};

} // namespace tavrine
