#include "adapters/wayland/WaylandEventPoster.h"

#include "adapters/wayland/PrimaryText.h"
#include "adapters/wayland/Typist.h"
#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"

#include <utility>

namespace tavrine {

WaylandEventPoster::WaylandEventPoster(std::shared_ptr<WaylandWindows> windows, std::function<QString()> text,
                                       std::shared_ptr<WaylandReader> reader)
    : m_client(std::move(reader)), m_windows(std::move(windows)), m_text(std::move(text)) {
    if (!m_client.isConnected())
        return;
    m_typist = Typist::virtualKeyboard(m_client);
    if (!m_typist)
        m_typist = Typist::fakeInput(m_client);
}

WaylandEventPoster::~WaylandEventPoster() = default;

void WaylandEventPoster::postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) {
    if (canPost())
        release(); // also of a chord whose key-up never came
    if (!isKeyDown)
        return;
    m_isHeldBack = false;
    m_failure = canPost() ? QString() : QStringLiteral("the compositor takes no keys from this program");
    if (!canPost())
        return;
    m_isHeldBack = flags != 0 && !(m_windows->refresh() && m_typist->isReady());
    if (m_isHeldBack) {
        m_failure = QStringLiteral("the compositor does not answer");
        return;
    }
    if (keyCode == virtualKey::v && (flags & modifierFlag::deviceIndependent) == modifierFlag::command) {
        m_failure = pressPaste();
        return;
    }
    const WaylandChord chord{.key = evdevPosition(keyCode).value_or(0),
                             .hasShift = (flags & modifierFlag::shift) != 0,
                             .hasControl = (flags & (modifierFlag::control | modifierFlag::command)) != 0,
                             .hasAlt = (flags & modifierFlag::option) != 0};
    m_isPressed = chord.key != 0 && m_typist->press(chord);
}

QString WaylandEventPoster::pressPaste() {
    const int insert = *evdevPosition(virtualKey::insert);
    const PasteChord paste = pasteChordOfTarget();
    if (paste.pastesPrimary && !m_primary->own(m_text().toUtf8())) // it would paste what was selected last
        return QStringLiteral("the compositor gives this program no primary selection");
    m_isPressed = m_typist->press({.key = paste.isInsert ? insert : 0,
                                   .letter = 'v',
                                   .hasShift = paste.hasShift,
                                   .hasControl = paste.hasControl});
    if (!m_isPressed) // the layout has no such letter
        m_isPressed = m_typist->press({.key = insert, .hasShift = true});
    return m_isPressed ? QString() : QStringLiteral("no keys can be typed");
}

void WaylandEventPoster::release() {
    if (std::exchange(m_isPressed, false))
        m_typist->release();
}

PasteChord WaylandEventPoster::pasteChordOfTarget() {
    const WaylandWindow *const target = m_windows->active();
    if (!target)
        return {};
    PasteChord chord = pasteChordFor({}, target->applicationId.toUtf8());
    if (chord.pastesPrimary && !m_primary)
        m_primary = std::make_unique<PrimaryText>(m_client);
    return chord;
}

} // namespace tavrine
