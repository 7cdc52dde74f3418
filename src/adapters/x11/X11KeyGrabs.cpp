#include "adapters/x11/X11KeyGrabs.h"

#include "ports/HotKeys.h"

#include <xcb/xinput.h>

namespace tavrine {
namespace {

constexpr quint32 allModifiers[] = {hotKeyModifier::command, hotKeyModifier::shift, hotKeyModifier::option,
                                    hotKeyModifier::control};

// All combinations of the bits, none of them included.
std::vector<quint16> combinations(const std::vector<quint16> &bits) {
    std::vector<quint16> all{0};
    for (const quint16 bit : bits) {
        const size_t count = all.size();
        for (size_t i = 0; i < count; ++i)
            all.push_back(static_cast<quint16>(all[i] | bit));
    }
    return all;
}

} // namespace

X11KeyGrabs::X11KeyGrabs(quint32 ownWindows, std::shared_ptr<const KeyboardSilence> silence, OnPress onPress,
                         QObject *parent)
    : QObject(parent), m_onPress(std::move(onPress)), m_silence(std::move(silence)),
      m_client([this](const xcb_generic_event_t &event) { handle(event); }), m_map(m_client, [this] { onMap(); }),
      m_ownWindows(ownWindows) {
    m_again.setSingleShot(true);
    m_again.callOnTimeout([this] { grabAnew(); });
    m_focusCheck.setTimerType(Qt::PreciseTimer);
    m_focusCheck.callOnTimeout([this] { waitForFocus(); });
    m_deadline.setTimerType(Qt::PreciseTimer);
    m_deadline.callOnTimeout([this] {
        if (--m_ticksLeft <= 0)
            thaw();
    });
    if (!m_client.isConnected())
        return;
    m_ownMask = xcb_get_setup(m_client.connection())->resource_id_mask;
    const auto *extension = xcb_get_extension_data(m_client.connection(), &xcb_input_id);
    // Clients of an earlier version get no raw events while another client holds a grab.
    if (extension && extension->present &&
        m_client.reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(m_client.connection(), 2, 2)))
        m_inputOpcode = extension->major_opcode;
    m_map.start();
    m_client.flush();
}

X11KeyGrabs::Result X11KeyGrabs::add(Key key, quint8 keycode, quint32 modifiers) {
    if (!m_client.isConnected())
        return Result::taken;
    Grab &added = m_grabs[key];
    added = {keycode, modifiers, {}};
    const Result result = grab(added);
    if (result == Result::taken)
        m_grabs.erase(key);
    selectRawKeys();
    return result;
}

void X11KeyGrabs::remove(Key key) {
    const auto found = m_grabs.find(key);
    if (found == m_grabs.end())
        return;
    ungrab(found->second);
    m_grabs.erase(found);
    selectRawKeys();
}

void X11KeyGrabs::selectRawKeys() {
    if (m_inputOpcode != 0) {
        struct {
            xcb_input_event_mask_t head;
            quint32 mask;
        } const selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                          m_grabs.empty() ? 0U : quint32{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS}};
        xcb_input_xi_select_events(m_client.connection(), m_client.root(), 1, &selection.head);
        m_modifiers = keyboardState(m_client).modifiers;
    }
    m_client.flush();
}

std::optional<quint16> X11KeyGrabs::stateOf(quint32 modifiers) const {
    quint16 state = 0;
    for (const quint32 modifier : allModifiers) {
        if (!(modifiers & modifier))
            continue;
        const quint16 mask = m_map.keyboard().stateMask(modifier);
        if (!mask)
            return std::nullopt; // the layout has no such key: a grab without it would take another combination
        state |= mask;
    }
    return state;
}

X11KeyGrabs::Result X11KeyGrabs::grab(Grab &grab) {
    if (!m_map.isKnown())
        return Result::pending; // made when the map is there
    const auto state = stateOf(grab.modifiers);
    if (!state)
        return Result::taken;
    grab.states.clear();
    std::vector<xcb_void_cookie_t> requests;
    for (const quint16 locks : combinations(m_map.keyboard().lockMasks())) {
        grab.states.push_back(static_cast<quint16>(*state | locks));
        requests.push_back(xcb_grab_key_checked(m_client.connection(), 1, m_client.root(), grab.states.back(),
                                                grab.keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC));
    }
    Result result = Result::held;
    for (const xcb_void_cookie_t request : requests) {
        if (result == Result::pending) {
            xcb_discard_reply(m_client.connection(), request.sequence);
            continue;
        }
        const auto isRefused = m_client.link().isRefused(request); // another program has this state of it
        if (isRefused != false)
            result = isRefused ? Result::taken : Result::pending;
    }
    if (result == Result::taken)
        ungrab(grab);
    if (result == Result::pending)
        m_again.start(X11KeyboardMap::betweenTries); // the grabs are most likely made, and that is to be known
    return result;
}

void X11KeyGrabs::ungrab(Grab &grab) {
    for (const quint16 exact : grab.states)
        xcb_ungrab_key(m_client.connection(), grab.keycode, m_client.root(), exact);
    grab.states.clear();
}

std::vector<quint16> X11KeyGrabs::meaning() const {
    std::vector<quint16> masks = m_map.keyboard().lockMasks();
    for (const quint32 modifier : allModifiers)
        masks.push_back(m_map.keyboard().stateMask(modifier));
    return masks;
}

void X11KeyGrabs::onMap() {
    // The notice also comes when the person merely changes from one keyboard to another.
    if (auto now = meaning(); now != m_meaning) {
        m_meaning = std::move(now);
        grabAnew();
    }
}

void X11KeyGrabs::grabAnew() {
    for (auto &[key, each] : m_grabs)
        ungrab(each);
    for (auto &[key, each] : m_grabs)
        (void)grab(each); // one that another program took meanwhile is tried again with the next change
    m_client.flush();
}

} // namespace tavrine
