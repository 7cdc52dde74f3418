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
#include <set>
#include <vector>

namespace tavrine {

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
        /// Opens the tool behind a trigger whose switch is on.
        std::function<void(Trigger)> open;
        /// True to go on with a capture; otherwise the person has been asked, and presses again.
        std::function<bool()> mayCaptureScreen;
        /// True while a paste is still to be typed into the program that has the keyboard.
        std::function<bool()> isPasting;
        std::function<void()> refreshEmojiMenuEntry;
        std::function<void()> refreshClipboardMenuEntry;
    };

    HotKeyCenter(HotKeys &hotKeys, EventMonitors &monitors, UserDefaults &defaults, Time &time, Actions actions,
                 QObject *parent = nullptr);
    ~HotKeyCenter() override;

    /// Brings hot keys, monitors and menu entries in line with flags and preferences.
    void registerHotkeys();

    /// Whether the trigger should have a hot key and has none: another program holds the combination. On a desktop that
    /// gives no program any, none does.
    [[nodiscard]] bool isTakenElsewhere(Trigger trigger) const {
        return m_taken.contains(trigger) && m_hotKeys.traits().availability != HotKeyAvailability::none;
    }

    /// What the desktop gives of hot keys.
    [[nodiscard]] HotKeyTraits hotKeyTraits() const { return m_hotKeys.traits(); }

    /// What a press of the hot key does, and who gets the keys after it. Every other number does nothing.
    KeyboardNext handleHotKey(quint32 id);

    /// One tap of Option alone, told by a desktop that lets no program hear keys. From the first one on taps count as
    /// they are told: what the monitors hear while a window of this program has the keyboard is the same key.
    void optionTapped();

Q_SIGNALS:
    /// The desktop has said what became of a hot key.
    void heldChanged();

private:
    struct DoubleTap {
        std::unique_ptr<EventMonitor> globalMonitor;
        std::unique_ptr<EventMonitor> localMonitor;
        DoubleTapDetector detector;
    };

    void registerHotKey(Trigger trigger);
    void hotKeyHeld(HotKeyRef ref, bool isHeld);
    void updateMonitors(Trigger trigger);
    void handleFlagsChanged(Trigger trigger, quint32 flags);
    void count(Trigger trigger, quint32 flags);

    HotKeys &m_hotKeys;
    EventMonitors &m_monitors;
    UserDefaults &m_defaults;
    Time &m_time;
    Actions m_actions;
    std::vector<std::optional<HotKeyRef>> m_hotKeyRefs; ///< a registration that failed is an empty entry
    std::set<Trigger> m_taken;
    std::map<Trigger, DoubleTap> m_doubleTaps;
    std::map<HotKeyRef, Trigger> m_triggers; ///< of the registrations that were given
    bool m_areTapsTold = false;
};

} // namespace tavrine
