#pragma once

#include "ports/HotKeys.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QObject>

#include <map>
#include <memory>
#include <optional>

namespace tavrine {

class KGlobalAccelClaim;

/// Hot keys that Plasma's own service keeps, without a dialog. They stand in its settings under the program's name,
/// where the person may give them other keys.
///
/// Lives on the main thread; nothing waits for the bus or the service. A registration is given at once and asked for
/// when the bus is there, again when the service was restarted. `setOnHeld` tells what came of it. The keys that the
/// person has set over there hold until the program itself asks for others.
class KGlobalAccelHotKeys final : public QObject, public HotKeys {
    Q_OBJECT

public:
    KGlobalAccelHotKeys();
    ~KGlobalAccelHotKeys() override;

    void installHandler(Handler handler) override;
    void removeHandler() override;
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;
    [[nodiscard]] HotKeyTraits traits() const override;
    void setTitle(HotKeyId id, const QString &title) override;
    void setOnHeld(std::function<void(HotKeyRef, bool)> handler) override;

    /// Whether the service has answered for every registration. For tests, and for who shows what this desktop allows.
    [[nodiscard]] bool isSettled() const;

private Q_SLOTS:
    void pressed(const QString &component, const QString &action, qlonglong timestamp);
    void released(const QString &component, const QString &action, qlonglong timestamp);

private:
    void onBusOpen(const QDBusConnection &bus);
    void claimAll();
    void settle(HotKeyRef ref, bool isHeld);
    [[nodiscard]] bool isClaimed(const QString &action) const;

    Handler m_handler;
    std::function<void(HotKeyRef, bool)> m_onHeld;
    std::map<HotKeyRef, std::unique_ptr<KGlobalAccelClaim>> m_claims;
    std::map<quint32, QString> m_titles;
    std::map<QString, QElapsedTimer> m_held; ///< since the last press of each action whose key is down
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    HotKeyRef m_lastRef = 0;
};

} // namespace tavrine
