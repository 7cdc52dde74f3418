#include "adapters/x11/X11KeyboardHold.h"

#include "adapters/x11/X11Keyboard.h"
#include "adapters/x11/XkbHeader.h"

#include <algorithm>
#include <array>

#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace tavrine {
namespace {

constexpr quint8 allModifiers = 0xff;
constexpr quint16 lockParts = XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_GROUP_LOCK;
constexpr quint32 allAids = 0x1fff; // XCB_XKB_BOOL_CTRL_*
constexpr quint32 enabledAids = XCB_XKB_CONTROL_CONTROLS_ENABLED;

} // namespace

X11KeyboardHold::X11KeyboardHold(XcbClient &client) : m_client(client) {
    if (!client.isConnected())
        return;
    const auto *extension = client.link().extension(xcb_input_id);
    if (!extension ||
        !client.reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(client.connection(), 2, 2)))
        return;
    m_inputOpcode = extension->major_opcode;
    struct {
        xcb_input_event_mask_t head;
        quint32 mask;
    } const selection{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
    xcb_input_xi_select_events(client.connection(), client.root(), 1, &selection.head);
    m_firstXkbEvent = selectKeyboardNotices(client);
}

std::vector<quint16> X11KeyboardHold::masters() {
    std::vector<quint16> devices;
    const auto answer = m_client.reply<xcb_input_xi_query_device_reply_t>(
        xcb_input_xi_query_device(m_client.connection(), XCB_INPUT_DEVICE_ALL_MASTER));
    if (!answer)
        return devices;
    for (auto each = xcb_input_xi_query_device_infos_iterator(answer.get()); each.rem > 0;
         xcb_input_xi_device_info_next(&each))
        if (each.data->type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD)
            devices.push_back(each.data->deviceid);
    return devices;
}

bool X11KeyboardHold::grab(quint16 device) {
    const quint32 mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto answer = m_client.reply<xcb_input_xi_grab_device_reply_t>(xcb_input_xi_grab_device(
        m_client.connection(), m_client.root(), XCB_CURRENT_TIME, XCB_NONE, device, XCB_INPUT_GRAB_MODE_22_ASYNC,
        XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, 1, &mask));
    return answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
}

bool X11KeyboardHold::grabAll(const std::vector<quint16> &devices) {
    return !devices.empty() && std::all_of(devices.begin(), devices.end(), [this](quint16 each) { return grab(each); });
}

void X11KeyboardHold::ungrabAll(const std::vector<quint16> &devices) {
    for (const quint16 each : devices)
        xcb_input_xi_ungrab_device(m_client.connection(), XCB_CURRENT_TIME, each);
}

void X11KeyboardHold::releaseKeys(const std::vector<quint8> &keys) {
    for (const quint8 key : keys)
        xcb_test_fake_input(m_client.connection(), XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void X11KeyboardHold::remember(quint16 device) {
    Settings &settings = m_held[device];
    if (m_firstXkbEvent == 0)
        return;
    xcb_xkb_select_events_details_t details{};
    details.affectState = details.stateDetails = lockParts;
    details.affectCtrls = details.ctrlDetails = enabledAids;
    xcb_xkb_select_events_aux(m_client.connection(), device,
                              XCB_XKB_EVENT_TYPE_STATE_NOTIFY | XCB_XKB_EVENT_TYPE_CONTROLS_NOTIFY, 0, 0, 0, 0,
                              &details);
    const auto state = xcb_xkb_get_state(m_client.connection(), device);
    const auto controls = xcb_xkb_get_controls(m_client.connection(), device);
    if (const auto answer = m_client.reply<xcb_xkb_get_state_reply_t>(state)) {
        settings.lockedModifiers = answer->lockedMods;
        settings.lockedGroup = static_cast<quint8>(answer->lockedGroup);
    }
    if (const auto answer = m_client.reply<xcb_xkb_get_controls_reply_t>(controls))
        settings.aids = answer->enabledControls;
}

void X11KeyboardHold::putBack(quint16 device, const Settings &settings) {
    if (settings.aids) {
        const std::array<quint8, 32> repeats{}; // one bit for each key; nothing is changed by it
        xcb_xkb_set_controls(m_client.connection(), device, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, allAids,
                             *settings.aids & allAids, enabledAids, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                             repeats.data());
    }
    xcb_xkb_latch_lock_state(m_client.connection(), device, allModifiers, settings.lockedModifiers, 1,
                             settings.lockedGroup, allModifiers, 1, 0);
}

bool X11KeyboardHold::take() {
    if (!isUsable())
        return false;
    const std::vector<quint16> devices = masters();
    // Nobody gets the keyboard between the steps.
    xcb_grab_server(m_client.connection());
    const std::vector<quint8> down = keysDown(m_client);
    bool isTaken = grabAll(devices);
    if (isTaken && !down.empty()) {
        ungrabAll(devices);
        releaseKeys(down);
        isTaken = grabAll(devices);
    }
    if (isTaken)
        for (const quint16 each : devices)
            remember(each);
    else
        ungrabAll(devices);
    xcb_ungrab_server(m_client.connection());
    m_client.flush();
    return isTaken;
}

bool X11KeyboardHold::takeNew() {
    const std::vector<quint16> devices = masters();
    if (devices.empty())
        return true; // the server was late; it tells again
    std::erase_if(m_held, [&](const auto &held) {
        return std::find(devices.begin(), devices.end(), held.first) == devices.end();
    });
    bool isWhole = true;
    for (const quint16 each : devices) {
        if (m_held.contains(each))
            continue;
        if (grab(each))
            remember(each);
        else
            isWhole = false;
    }
    m_client.flush();
    return isWhole;
}

void X11KeyboardHold::giveBack() {
    if (m_held.empty() || !m_client.isConnected())
        return;
    // What is down is let go while the keyboards are still held: it would go on repeating, for somebody else.
    releaseKeys(keysDown(m_client));
    for (const auto &[device, settings] : m_held) {
        if (m_firstXkbEvent != 0)
            putBack(device, settings);
        xcb_input_xi_ungrab_device(m_client.connection(), XCB_CURRENT_TIME, device);
    }
    m_held.clear();
    m_client.link().finish();
}

X11KeyboardHold::Notice X11KeyboardHold::take(const xcb_generic_event_t &event) {
    Notice notice;
    if (eventType(event) == XCB_GE_GENERIC) {
        const auto &generic = eventAs<xcb_input_key_press_event_t>(event);
        if (generic.extension != m_inputOpcode)
            return notice;
        notice.isKey = generic.event_type == XCB_INPUT_KEY_PRESS || generic.event_type == XCB_INPUT_KEY_RELEASE;
        notice.isHierarchy = generic.event_type == XCB_INPUT_HIERARCHY;
        notice.time = generic.time;
        return notice;
    }
    if (m_firstXkbEvent != 0 && eventType(event) == m_firstXkbEvent)
        followRequest(event);
    return notice;
}

/// A lock, a layout or an aid that no key has set: a program did, for the person, and it stays.
void X11KeyboardHold::followRequest(const xcb_generic_event_t &event) {
    const auto settingsOf = [this](quint8 device, quint8 keycode) {
        const auto held = keycode == 0 ? m_held.find(device) : m_held.end();
        return held == m_held.end() ? nullptr : &held->second;
    };
    if (event.pad0 == XCB_XKB_STATE_NOTIFY) {
        const auto &state = eventAs<xcb_xkb_state_notify_event_t>(event);
        if (Settings *settings = settingsOf(state.deviceID, state.keycode)) {
            settings->lockedModifiers = state.lockedMods;
            settings->lockedGroup = state.lockedGroup;
        }
    } else if (event.pad0 == XCB_XKB_CONTROLS_NOTIFY) {
        const auto &controls = eventAs<xcb_xkb_controls_notify_event_t>(event);
        Settings *settings = settingsOf(controls.deviceID, controls.keycode);
        if (settings && settings->aids) // those that it did not change may be a key's doing
            *settings->aids = (*settings->aids & ~controls.enabledControlChanges) |
                              (controls.enabledControls & controls.enabledControlChanges);
    }
}

} // namespace tavrine
