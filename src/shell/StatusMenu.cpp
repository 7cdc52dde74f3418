#include "shell/StatusMenu.h"

#include "base/DesktopWords.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "look/MenuStyle.h"
#include "shell/FeatureFlags.h"

#include <QKeyEvent>
#include <QMenu>

#include <algorithm>

namespace tavrine {
namespace {

bool canFire(const StatusMenuEntry &entry) {
    return entry.isEnabled && entry.action;
}

} // namespace

QString label(KeyEquivalent keyEquivalent) {
    if (keyEquivalent.character.isNull())
        return {};
    return QStringLiteral("⌘") + (keyEquivalent.hasShift ? QStringLiteral("⇧") : QString()) +
           keyEquivalent.character.toUpper();
}

StatusMenu::StatusMenu(const UserDefaults &defaults, const FeatureFlags &flags,
                       const ClipboardExperienceSettings &experienceSettings, Actions actions, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_flags(flags), m_experienceSettings(experienceSettings) {
    const auto add = [this](StatusMenuItem item, const QString &title, std::function<void()> action) {
        m_entries.push_back({.item = item, .title = title, .keyEquivalent = {}, .action = std::move(action)});
    };
    const auto addSeparator = [this] { m_entries.push_back({}); };
    addSeparator();
    add(StatusMenuItem::clipboard, QStringLiteral("Classic Clipboard"), std::move(actions.onHotKeyPressed));
    refreshClipboardMenuItem();
    add(StatusMenuItem::emojiPicker, QStringLiteral("Emoji Picker"), std::move(actions.onEmojiPickerHotKeyPressed));
    refreshEmojiMenuItem();
    addSeparator();
    add(StatusMenuItem::checkForUpdates, QStringLiteral("Check for Updates…"), std::move(actions.checkForUpdates));
    addSeparator();
    add(StatusMenuItem::quit, QStringLiteral("Quit"), std::move(actions.quitApp));
    entry(StatusMenuItem::quit).keyEquivalent = {QLatin1Char('q')};
}

StatusMenu::~StatusMenu() = default;

StatusMenuEntry &StatusMenu::entry(StatusMenuItem item) {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [item](const auto &each) { return each.item == item; });
    Q_ASSERT(found != m_entries.end());
    return *found;
}

KeyEquivalent StatusMenu::commandShiftKey(Trigger trigger) const {
    if (storedMode(m_defaults, trigger) != triggerMode::commandShift)
        return {};
    return {storedCharacter(m_defaults, trigger).front(), true};
}

void StatusMenu::refreshClipboardMenuItem() {
    StatusMenuEntry &item = entry(StatusMenuItem::clipboard);
    item.title = m_experienceSettings.selectedExperience() == ClipboardExperience::search
                     ? QStringLiteral("Clipboard Search")
                     : QStringLiteral("Classic Clipboard");
    item.isEnabled = m_flags.isOn(Feature::clipboardHistory);
    item.keyEquivalent = commandShiftKey(Trigger::clipboard);
}

void StatusMenu::refreshEmojiMenuItem() {
    StatusMenuEntry &item = entry(StatusMenuItem::emojiPicker);
    item.isEnabled = m_flags.isOn(Feature::emojiPicker);
    item.keyEquivalent = commandShiftKey(Trigger::emojiPicker);
}

void StatusMenu::popUp(QPoint place) {
    if (!m_menu)
        build();
    show();
    m_menu->popup(place);
}

void StatusMenu::cancelTracking() {
    if (m_menu)
        m_menu->hide();
}

void StatusMenu::build() {
    m_menu = std::make_unique<QMenu>();
    look::dress(*m_menu);
    m_menu->setSeparatorsCollapsible(true);
    m_menu->installEventFilter(this);
    for (size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].item == StatusMenuItem::separator) {
            m_menu->addSeparator();
            continue;
        }
        QAction *action = m_menu->addAction(QString());
        connect(action, &QAction::triggered, this, [this, i] {
            if (canFire(m_entries[i]))
                m_entries[i].action();
        });
    }
}

/// Brings the actions in line with the entries.
void StatusMenu::show() {
    const auto actions = m_menu->actions();
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const StatusMenuEntry &entry = m_entries[i];
        if (entry.item == StatusMenuItem::separator)
            continue;
        QString text = entry.title;
        text.replace(QLatin1Char('&'), QLatin1String("&&"));
        const QString keys = inDesktopWords(label(entry.keyEquivalent));
        QAction *action = actions[static_cast<qsizetype>(i)];
        action->setText(keys.isEmpty() ? text : text + QLatin1Char('\t') + keys);
        action->setEnabled(entry.isEnabled);
    }
}

bool StatusMenu::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const auto modifiers = key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier | Qt::ShiftModifier);
    const bool hasShift = modifiers.testFlag(Qt::ShiftModifier);
    const auto command = modifiers & ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    if (command != Qt::ControlModifier && command != Qt::MetaModifier)
        return false;
    for (const StatusMenuEntry &entry : m_entries) {
        const KeyEquivalent equivalent = entry.keyEquivalent;
        if (canFire(entry) && !equivalent.character.isNull() && equivalent.hasShift == hasShift &&
            key->key() == equivalent.character.toUpper().unicode()) {
            cancelTracking();
            entry.action();
            return true;
        }
    }
    return false;
}

} // namespace tavrine
