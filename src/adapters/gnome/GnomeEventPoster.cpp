#include "adapters/gnome/GnomeEventPoster.h"

#include "adapters/linux/PasteChord.h"
#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"

namespace tavrine {
namespace {

// X symbols, by which the shell finds the keys in the layout of the moment.
constexpr quint32 controlKey = X11Keyboard::controlL;
constexpr quint32 shiftKey = X11Keyboard::shiftL;
constexpr quint32 insertKey = X11Keyboard::insert;

} // namespace

GnomeEventPoster::GnomeEventPoster(GnomeShell &shell, const std::function<QString()> &text)
    : m_shell(shell), m_onX(text), m_text(text) {}

void GnomeEventPoster::postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) {
    const bool isPaste = keyCode == virtualKey::v && (flags & modifierFlag::deviceIndependent) == modifierFlag::command;
    const bool isOnX = !m_shell.isAttached() || !isPaste;
    m_isOnX = isKeyDown ? isOnX : m_isOnX;
    if (isOnX) {
        m_onX.postKeyboardEvent(keyCode, isKeyDown, flags);
        return;
    }
    if (!isKeyDown)
        return; // the chord is typed as one
    const GnomeWindow target = m_shell.focusedWindow().value_or(GnomeWindow());
    const PasteChord chord = pasteChordFor(target.application.toUtf8(), target.windowClass.toUtf8());
    if (chord.pastesPrimary)
        m_onX.ownPrimary(m_text());
    std::vector<quint32> keys;
    if (chord.hasControl)
        keys.push_back(controlKey);
    if (chord.hasShift)
        keys.push_back(shiftKey);
    keys.push_back(chord.isInsert ? insertKey : quint32('v'));
    m_shell.typeChord(keys);
}

} // namespace tavrine
