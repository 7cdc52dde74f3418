#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "ports/HotKeys.h"

#include <map>

namespace tavrine {

/// Hot keys that the shell watches over, through the extension.
///
/// Lives on the main thread. The shell answers later than a registration can, and `setOnHeld` tells what it said. While
/// there is no extension a registration stands and is made good as soon as there is one. Keys are positions, as X
/// servers number them.
class GnomeHotKeys final : public QObject, public HotKeys {
public:
    explicit GnomeHotKeys(GnomeShell &shell);

    void installHandler(Handler handler) override { m_handler = std::move(handler); }
    void removeHandler() override { m_handler = nullptr; }
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;
    [[nodiscard]] HotKeyTraits traits() const override;
    void setOnHeld(std::function<void(HotKeyRef, bool)> handler) override { m_onHeld = std::move(handler); }

private:
    struct Registration {
        QString accelerator;
        HotKeyId id;
        quint32 action = 0; ///< the shell's number; 0 while it has none
    };

    void grab(HotKeyRef ref);
    void hold(HotKeyRef ref, quint32 action);
    void onPress(quint32 action);

    GnomeShell &m_shell;
    Handler m_handler;
    std::function<void(HotKeyRef, bool)> m_onHeld;
    std::map<HotKeyRef, Registration> m_registrations;
    HotKeyRef m_lastRef = 0;
};

} // namespace tavrine
