#pragma once

#include "ports/EventMonitors.h"
#include "ports/HotKeys.h"
#include "shell/DoubleTapDetector.h"
#include "shell/Triggers.h"

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

class Access;
class Time;
class UserDefaults;

/// The global triggers: hot keys and double taps of Option, and what they open.
///
/// Lives on the main thread; owned by the application's delegate. Editors never touch a hot key: they write the
/// preferences and call `registerHotkeys`.
class HotKeyCenter : public QObject {
    Q_OBJECT

public:
    /// 'GSCs': whose hot keys these are.
    static constexpr quint32 signature = 0x47534373;

    struct Actions {
        std::function<bool(Trigger)> isFeatureOn;
        std::function<void()> toggleClipboardPanel;
        std::function<void()> toggleEmojiPanel;
        std::function<void()> startSnip;
        std::function<void()> startScreenRecording;
        /// Asks for the screen's contents, to be listed among those who want them, and shows the alert.
        std::function<void()> explainScreenCapture;
        std::function<void()> refreshEmojiMenuEntry;
        std::function<void()> refreshClipboardMenuEntry;
    };

    HotKeyCenter(HotKeys &hotKeys, EventMonitors &monitors, Access &access, UserDefaults &defaults, Time &time,
                 Actions actions, QObject *parent = nullptr);
    ~HotKeyCenter() override;

    /// Brings hot keys, monitors and menu entries in line with flags and preferences.
    void registerHotkeys();

    /// What a press of the hot key does, and who gets the keys after it. Every other number does nothing.
    KeyboardNext handleHotKey(quint32 id);

    /// The menu entries take the way of hot keys 1 and 2; a disabled entry cannot be chosen, so no flag is asked.
    void onHotKeyPressed() { m_actions.toggleClipboardPanel(); }
    void onEmojiPickerHotKeyPressed() { m_actions.toggleEmojiPanel(); }

private:
    struct DoubleTap {
        std::unique_ptr<EventMonitor> globalMonitor;
        std::unique_ptr<EventMonitor> localMonitor;
        DoubleTapDetector detector;
    };

    void registerHotKey(Trigger trigger);
    void updateMonitors(Trigger trigger);
    void handleFlagsChanged(Trigger trigger, quint32 flags);
    void capture();

    HotKeys &m_hotKeys;
    EventMonitors &m_monitors;
    Access &m_access;
    UserDefaults &m_defaults;
    Time &m_time;
    Actions m_actions;
    std::vector<std::optional<HotKeyRef>> m_hotKeyRefs; ///< a registration that failed is an empty entry
    std::map<Trigger, DoubleTap> m_doubleTaps;
};

} // namespace tavrine
