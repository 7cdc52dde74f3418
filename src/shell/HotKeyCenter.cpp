#include "shell/HotKeyCenter.h"

#include "base/DesktopWords.h"
#include "base/Print.h"
#include "base/Time.h"
#include "base/UserDefaults.h"

#include <algorithm>
#include <iterator>

namespace tavrine {
namespace {

constexpr Trigger tappable[] = {Trigger::clipboard, Trigger::emojiPicker, Trigger::screenRecorder};

} // namespace

HotKeyCenter::HotKeyCenter(HotKeys &hotKeys, EventMonitors &monitors, UserDefaults &defaults, Time &time,
                           Actions actions, QObject *parent)
    : QObject(parent), m_hotKeys(hotKeys), m_monitors(monitors), m_defaults(defaults), m_time(time),
      m_actions(std::move(actions)) {
    for (const Trigger trigger : allTriggers)
        m_hotKeys.setTitle({signature, traits(trigger).hotKeyId}, inDesktopWords(QString(traits(trigger).title)));
    m_hotKeys.setOnHeld([this](HotKeyRef ref, bool isHeld) { hotKeyHeld(ref, isHeld); });
}

HotKeyCenter::~HotKeyCenter() {
    m_hotKeys.setOnHeld({});
    m_hotKeys.removeHandler();
    for (const auto &ref : m_hotKeyRefs)
        if (ref)
            m_hotKeys.unregisterHotKey(*ref);
}

void HotKeyCenter::registerHotkeys() {
    for (const auto &ref : m_hotKeyRefs)
        if (ref)
            m_hotKeys.unregisterHotKey(*ref);
    m_hotKeyRefs.clear();
    m_taken.clear();
    m_triggers.clear();
    m_hotKeys.removeHandler();
    m_hotKeys.installHandler([this](HotKeyId id) { return handleHotKey(id.id); });
    for (const Trigger trigger : allTriggers)
        if (m_actions.isFeatureOn(trigger) && storedMode(m_defaults, trigger) == triggerMode::commandShift)
            registerHotKey(trigger);

    updateMonitors(Trigger::emojiPicker);
    m_actions.refreshEmojiMenuEntry();
    updateMonitors(Trigger::clipboard);
    m_actions.refreshClipboardMenuEntry();
    updateMonitors(Trigger::screenRecorder);
}

void HotKeyCenter::registerHotKey(Trigger trigger) {
    const quint32 id = traits(trigger).hotKeyId;
    const auto ref = m_hotKeys.registerHotKey(keyCode(storedCharacter(m_defaults, trigger)),
                                              hotKeyModifier::command | hotKeyModifier::shift, {signature, id});
    printLine((ref ? QStringLiteral("DEBUG: Hotkey registered successfully for ID: %1")
                   : QStringLiteral("DEBUG: Failed to register hotkey ID: %1"))
                  .arg(id));
    m_hotKeyRefs.push_back(ref);
    if (ref)
        m_triggers[*ref] = trigger;
    else
        m_taken.insert(trigger);
}

void HotKeyCenter::hotKeyHeld(HotKeyRef ref, bool isHeld) {
    const auto found = m_triggers.find(ref);
    if (found == m_triggers.end())
        return;
    if (isHeld)
        m_taken.erase(found->second);
    else if (m_taken.insert(found->second).second)
        printLine(QStringLiteral("DEBUG: Failed to register hotkey ID: %1").arg(traits(found->second).hotKeyId));
    Q_EMIT heldChanged();
}

KeyboardNext HotKeyCenter::handleHotKey(quint32 id) {
    printLine(QStringLiteral("DEBUG: Hotkey Handler Triggered for ID: %1").arg(id));
    const auto pressed = std::find_if(std::begin(allTriggers), std::end(allTriggers),
                                      [id](Trigger trigger) { return traits(trigger).hotKeyId == id; });
    // A press may have been under way when its tool was switched off.
    if (pressed == std::end(allTriggers) || !m_actions.isFeatureOn(*pressed))
        return KeyboardNext::asBefore;
    switch (*pressed) {
    case Trigger::clipboard:
    case Trigger::emojiPicker:
        m_actions.open(*pressed);
        // Keys that wait for our window would have the keystroke of a paste wait with them.
        return m_actions.isPasting() ? KeyboardNext::asBefore : KeyboardNext::ourWindow;
    case Trigger::capture:
        printLine(QStringLiteral("DEBUG: Screen Snipping"));
        if (m_actions.mayCaptureScreen())
            m_actions.open(*pressed);
        break;
    case Trigger::screenRecorder:
        printLine(QStringLiteral("DEBUG: Screen Recording"));
        m_actions.open(*pressed); // asks for the permission itself
        break;
    }
    return KeyboardNext::asBefore;
}

void HotKeyCenter::updateMonitors(Trigger trigger) {
    DoubleTap &tap = m_doubleTaps[trigger];
    if (!m_actions.isFeatureOn(trigger) || storedMode(m_defaults, trigger) != triggerMode::doubleOption) {
        tap = {};
        return;
    }
    if (tap.globalMonitor || tap.localMonitor)
        return;
    tap.globalMonitor = m_monitors.addGlobalMonitor(eventMask::flagsChanged, [this, trigger](const InputEvent &event) {
        m_time.async(this, [this, trigger, flags = event.modifierFlags] { handleFlagsChanged(trigger, flags); });
    });
    tap.localMonitor = m_monitors.addLocalMonitor(eventMask::flagsChanged, [this, trigger](const InputEvent &event) {
        handleFlagsChanged(trigger, event.modifierFlags);
        return false;
    });
}

void HotKeyCenter::optionTapped() {
    m_areTapsTold = true;
    for (const Trigger trigger : tappable) {
        count(trigger, modifierFlag::option);
        count(trigger, 0);
    }
}

void HotKeyCenter::handleFlagsChanged(Trigger trigger, quint32 flags) {
    if (!m_areTapsTold)
        count(trigger, flags);
}

void HotKeyCenter::count(Trigger trigger, quint32 flags) {
    if (!m_actions.isFeatureOn(trigger) || storedMode(m_defaults, trigger) != triggerMode::doubleOption)
        return;
    // The editors keep two tools from sharing the double tap; of tools that share it all the same, none opens.
    for (const Trigger other : tappable)
        if (other != trigger && storedMode(m_defaults, other) == triggerMode::doubleOption)
            return;
    if (!m_doubleTaps[trigger].detector.flagsChanged(flags, m_time.now()))
        return;
    m_actions.open(trigger);
}

} // namespace tavrine
