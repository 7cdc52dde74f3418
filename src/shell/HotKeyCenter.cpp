#include "shell/HotKeyCenter.h"

#include "base/Print.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "ports/Access.h"

namespace tavrine {
namespace {

constexpr Trigger tappable[] = {Trigger::clipboard, Trigger::emojiPicker, Trigger::screenRecorder};

} // namespace

HotKeyCenter::HotKeyCenter(HotKeys &hotKeys, EventMonitors &monitors, Access &access, UserDefaults &defaults,
                           Time &time, Actions actions, QObject *parent)
    : QObject(parent), m_hotKeys(hotKeys), m_monitors(monitors), m_access(access), m_defaults(defaults), m_time(time),
      m_actions(std::move(actions)) {}

HotKeyCenter::~HotKeyCenter() {
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
}

KeyboardNext HotKeyCenter::handleHotKey(quint32 id) {
    printLine(QStringLiteral("DEBUG: Hotkey Handler Triggered for ID: %1").arg(id));
    // A press may have been under way when its tool was switched off.
    if (id == traits(Trigger::clipboard).hotKeyId && m_actions.isFeatureOn(Trigger::clipboard)) {
        m_actions.toggleClipboardPanel();
        return KeyboardNext::ourWindow;
    }
    if (id == traits(Trigger::emojiPicker).hotKeyId && m_actions.isFeatureOn(Trigger::emojiPicker)) {
        m_actions.toggleEmojiPanel();
        return KeyboardNext::ourWindow;
    }
    if (id == traits(Trigger::capture).hotKeyId && m_actions.isFeatureOn(Trigger::capture)) {
        printLine(QStringLiteral("DEBUG: Screen Snipping"));
        capture();
    } else if (id == traits(Trigger::screenRecorder).hotKeyId && m_actions.isFeatureOn(Trigger::screenRecorder)) {
        printLine(QStringLiteral("DEBUG: Screen Recording"));
        m_actions.startScreenRecording(); // asks for the permission itself
    }
    return KeyboardNext::asBefore;
}

void HotKeyCenter::capture() {
    if (m_access.isScreenCaptureGranted())
        m_actions.startSnip();
    else if (!m_access.requestScreenCapture())
        m_actions.explainScreenCapture();
    // Granted just now: the person presses again.
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

void HotKeyCenter::handleFlagsChanged(Trigger trigger, quint32 flags) {
    if (!m_actions.isFeatureOn(trigger) || storedMode(m_defaults, trigger) != triggerMode::doubleOption)
        return;
    // The editors keep two tools from sharing the double tap; of tools that share it all the same, none opens.
    for (const Trigger other : tappable)
        if (other != trigger && storedMode(m_defaults, other) == triggerMode::doubleOption)
            return;
    if (!m_doubleTaps[trigger].detector.flagsChanged(flags, m_time.now()))
        return;
    if (trigger == Trigger::clipboard)
        m_actions.toggleClipboardPanel();
    else if (trigger == Trigger::emojiPicker)
        m_actions.toggleEmojiPanel();
    else
        m_actions.startScreenRecording();
}

} // namespace tavrine
