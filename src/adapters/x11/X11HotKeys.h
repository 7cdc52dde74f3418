#pragma once

#include "ports/HotKeys.h"

#include <QObject>
#include <QThread>

#include <map>
#include <memory>

namespace tavrine {

class KeyboardSilence;
class X11KeyGrabs;

/// Hot keys as passive grabs on the root window, which are kept on a thread of their own (see X11KeyGrabs).
///
/// Lives on the main thread and waits for that other one in bounded time. Command is the Super key. Without an X server
/// no hot key can be registered.
class X11HotKeys final : public HotKeys {
public:
    /// In `silence`, where there is one, no press counts.
    explicit X11HotKeys(std::shared_ptr<const KeyboardSilence> silence = {});
    ~X11HotKeys() override;

    void installHandler(Handler handler) override { m_handler = std::move(handler); }
    void removeHandler() override { m_handler = nullptr; }
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;

private:
    struct Registration {
        quint8 keycode = 0;
        quint32 modifiers = 0;
        HotKeyId id;
    };

    void post(std::function<void(X11KeyGrabs &)> work);
    void onPress(HotKeyRef ref, quint32 press);

    QObject m_mainThread; ///< where presses are told
    QThread m_thread;
    QObject *m_onThread;            ///< where the grabs are told
    X11KeyGrabs *m_grabs = nullptr; ///< made, used and destroyed on the thread only
    Handler m_handler;
    std::map<HotKeyRef, Registration> m_registrations;
    HotKeyRef m_lastRef = 0;
};

} // namespace tavrine
