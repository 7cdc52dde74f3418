#include "shell/ShortcutEditor.h"

#include "base/Time.h"

namespace tavrine {
namespace {

constexpr Seconds savingLength{0.9};
constexpr Seconds savedLength{1.4};

} // namespace

ShortcutEditor::ShortcutEditor(Trigger trigger, UserDefaults &defaults, Time &time, Actions actions, QObject *parent)
    : QObject(parent), m_trigger(trigger), m_defaults(defaults), m_time(time), m_actions(std::move(actions)) {
    load();
}

void ShortcutEditor::load() {
    m_draftMode = m_committedMode = storedMode(m_defaults, m_trigger);
    m_draftKey = m_committedKey = storedCharacter(m_defaults, m_trigger);
    check();
    Q_EMIT changed();
}

void ShortcutEditor::setDraftKey(const QString &text) {
    if (text.isEmpty())
        return;
    m_draftKey = firstUppercase(text);
    checkKey();
    Q_EMIT changed();
}

void ShortcutEditor::setDraftMode(const QString &mode) {
    m_draftMode = mode;
    check();
    Q_EMIT changed();
}

void ShortcutEditor::checkKey() {
    const auto conflicts = keyConflicts(m_defaults, m_trigger);
    const auto found = conflicts.constFind(m_draftKey);
    m_conflict = found == conflicts.cend() ? std::nullopt : std::optional(*found);
}

void ShortcutEditor::check() {
    if (m_draftMode != triggerMode::commandShift)
        m_conflict = doubleTapConflict(m_defaults, m_trigger, m_actions.isFeatureOn);
    else if (!m_draftKey.isEmpty())
        checkKey();
    else
        m_conflict.reset();
}

QString ShortcutEditor::defaultKeyText() const {
    return QStringLiteral("Default is ⌘⇧") + firstUppercase(traits(m_trigger).character.fallbackValue());
}

std::optional<ShortcutEditor::Banner> ShortcutEditor::banner() const {
    if (!m_conflict)
        return takenBanner();
    const auto &[kind, message] = *m_conflict;
    switch (kind) {
    case ShortcutConflict::Kind::desktopKey:
        return Banner{message + QStringLiteral(" — can't be saved"), true};
    case ShortcutConflict::Kind::toolKey:
        return Banner{QStringLiteral("Conflicts with ") + message + QStringLiteral(" — pick a different key"), false};
    case ShortcutConflict::Kind::doubleTap:
        break;
    }
    return Banner{message, false};
}

std::optional<ShortcutEditor::Banner> ShortcutEditor::takenBanner() const {
    const bool showsStored = m_draftMode == m_committedMode && m_draftKey == m_committedKey;
    if (!showsStored || m_draftMode != triggerMode::commandShift || !m_actions.isTakenElsewhere(m_trigger))
        return std::nullopt;
    return Banner{QStringLiteral("Another program uses ⌘⇧") + m_draftKey + QStringLiteral(" — pick a different key"),
                  false};
}

bool ShortcutEditor::hasChanges() const {
    if (m_conflict)
        return false;
    if (m_trigger == Trigger::capture)
        return !m_draftKey.isEmpty() && m_draftKey != m_committedKey;
    return m_draftMode != m_committedMode || (m_draftMode == triggerMode::commandShift && m_draftKey != m_committedKey);
}

void ShortcutEditor::save() {
    if (m_conflict)
        return;
    setSaveState(HotkeySaveState::saving);
    const auto &fixed = traits(m_trigger);
    if (m_draftKey.isEmpty())
        m_draftKey = firstUppercase(fixed.character.fallbackValue());
    if (fixed.mode)
        fixed.mode->set(m_defaults, m_draftMode);
    if (m_trigger == Trigger::clipboard)
        m_actions.setHotkeyCharacter(m_draftKey);
    else
        fixed.character.set(m_defaults, m_draftKey);
    m_committedMode = m_draftMode;
    m_committedKey = m_draftKey;
    m_actions.registerHotkeys();
    m_time.asyncAfter(savingLength, this, [this] {
        setSaveState(HotkeySaveState::saved);
        m_time.asyncAfter(savedLength, this, [this] { setSaveState(HotkeySaveState::idle); });
    });
}

void ShortcutEditor::setSaveState(HotkeySaveState state) {
    m_saveState = state;
    Q_EMIT changed();
}

} // namespace tavrine
