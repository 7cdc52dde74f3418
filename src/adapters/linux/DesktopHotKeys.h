#pragma once

#include "ports/HotKeys.h"

#include <QDBusConnection>
#include <QObject>

#include <map>
#include <memory>
#include <optional>

namespace tavrine {

/// Hot keys where no program may take keys for itself: those of Plasma's service where the compositor keeps it, else
/// those of the portal, which may have none.
///
/// Lives on the main thread; nothing waits. What is registered before the bus has told who keeps hot keys is registered
/// with the keeper then. That Plasma's service could be started proves nothing: without its compositor it hears no
/// keys.
class DesktopHotKeys final : public QObject, public HotKeys {
    Q_OBJECT

public:
    DesktopHotKeys();
    ~DesktopHotKeys() override;

    void installHandler(Handler handler) override;
    void removeHandler() override;
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;
    [[nodiscard]] HotKeyTraits traits() const override;
    void setTitle(HotKeyId id, const QString &title) override;
    void setOnHeld(std::function<void(HotKeyRef, bool)> handler) override;

private:
    struct Registration {
        int keyCode;
        quint32 modifiers;
        HotKeyId id;
        std::optional<HotKeyRef> kept; ///< as the keeper numbers it
    };

    void onBusOpen(const QDBusConnection &bus);
    void choose(std::unique_ptr<HotKeys> keeper);
    void told(HotKeyRef kept, bool isHeld);
    void tell(HotKeyRef ref, bool isHeld);

    Handler m_handler;
    std::function<void(HotKeyRef, bool)> m_onHeld;
    std::map<HotKeyRef, Registration> m_registrations;
    std::map<quint32, QString> m_titles;
    std::unique_ptr<HotKeys> m_keeper; ///< null until it is known who keeps them
    HotKeyRef m_lastRef = 0;
    bool m_hasBus = true; ///< as far as is known
};

} // namespace tavrine
