#include "adapters/gnome/GnomeHotKeys.h"

#include "base/VirtualKeys.h"

#include <algorithm>

namespace tavrine {
namespace {

/// As the shell spells it, with the key by its position; none for a key that has none an X server can name.
std::optional<QString> acceleratorOf(int keyCode, quint32 modifiers) {
    const auto keycode = xKeycode(keyCode);
    if (!keycode || *keycode > 255)
        return std::nullopt;
    QString text;
    if (modifiers & hotKeyModifier::control)
        text += QLatin1String("<Control>");
    if (modifiers & hotKeyModifier::option)
        text += QLatin1String("<Alt>");
    if (modifiers & hotKeyModifier::shift)
        text += QLatin1String("<Shift>");
    if (modifiers & hotKeyModifier::command)
        text += QLatin1String("<Super>");
    return text + QStringLiteral("0x%1").arg(*keycode, 2, 16, QLatin1Char('0'));
}

} // namespace

GnomeHotKeys::GnomeHotKeys(GnomeShell &shell) : m_shell(shell) {
    connect(&shell, &GnomeShell::attached, this, [this] {
        for (const auto &registration : m_registrations)
            grab(registration.first);
    });
    connect(&shell, &GnomeShell::detached, this, [this] {
        const auto registrations = m_registrations; // whoever is told may register anew
        for (const auto &registration : registrations)
            if (registration.second.action != 0)
                hold(registration.first, 0);
    });
    connect(&shell, &GnomeShell::keyPressed, this, &GnomeHotKeys::onPress);
}

std::optional<HotKeyRef> GnomeHotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    const auto accelerator = acceleratorOf(keyCode, modifiers);
    const auto isSame = [&accelerator](const auto &other) { return other.second.accelerator == *accelerator; };
    if (!accelerator || std::ranges::any_of(m_registrations, isSame))
        return std::nullopt;
    const HotKeyRef ref = ++m_lastRef;
    m_registrations[ref] = {*accelerator, id};
    grab(ref);
    return ref;
}

void GnomeHotKeys::grab(HotKeyRef ref) {
    m_shell.grabKey(m_registrations.at(ref).accelerator, this, [this, ref](quint32 action) {
        if (m_registrations.contains(ref))
            hold(ref, action);
        else if (action != 0) // taken back before the shell had answered
            m_shell.ungrabKey(action);
    });
}

void GnomeHotKeys::hold(HotKeyRef ref, quint32 action) {
    const auto found = m_registrations.find(ref);
    if (found == m_registrations.end())
        return;
    found->second.action = action;
    if (m_onHeld)
        m_onHeld(ref, action != 0);
}

HotKeyTraits GnomeHotKeys::traits() const {
    return {.availability = m_shell.isAttached() ? HotKeyAvailability::there : HotKeyAvailability::none,
            .isKnownAtOnce = false,
            .keepsKeyboard = false};
}

void GnomeHotKeys::unregisterHotKey(HotKeyRef ref) {
    const auto found = m_registrations.find(ref);
    if (found == m_registrations.end())
        return;
    if (found->second.action != 0)
        m_shell.ungrabKey(found->second.action);
    m_registrations.erase(found);
}

void GnomeHotKeys::onPress(quint32 action) {
    const auto found = std::ranges::find_if(
        m_registrations, [action](const auto &each) { return each.second.action == action && action != 0; });
    if (found == m_registrations.end())
        return;
    if (const Handler handler = m_handler) // a copy: it may register anew
        static_cast<void>(handler(HotKeyId(found->second.id)));
}

} // namespace tavrine
