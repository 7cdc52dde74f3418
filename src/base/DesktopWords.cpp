#include "base/DesktopWords.h"

#include "base/Catalogue.h"

#include <QHash>

#include <algorithm>
#include <vector>

namespace tavrine {
namespace {

struct Words {
    const char *ours;
    const char *shown; ///< {desktop} is the desktop's name
};

constexpr Words wholeTexts[] = {
    // The first run.
    {"Your Mac. Simplified.", "Your computer. Simplified."},
    {"The Utility Layer of Your Mac", "The Utility Layer of Your Computer"},
    {"You can change these anytime in System Settings.", "You can change these anytime in Settings."},
    // The tools and their pages.
    {"Prevent your Mac from sleeping on demand", "Prevent your computer from sleeping on demand"},
    {"Lock the keyboard while cleaning your Mac", "Lock the keyboard while cleaning your computer"},
    {"Double Option", "Double Alt"},
    {"Hide or show the Tavrine menu bar icon", "Hide or show the Tavrine tray icon"},
    {"Show in Menu Bar", "Show in Tray"},
    {"Live upload and download speeds in the menu bar", "Live upload and download speeds in the tray"},
    {"Replace the menu bar icon with the live speed", "Replace the tray icon with the live speed"},
    {"Menu bar indicator settings", "Tray indicator settings"},
    {"Menu Bar Indicator", "Tray Indicator"},
    {"Colour the menu bar icon when Keep Awake is on", "Colour the tray icon when Keep Awake is on"},
    {"Background colour applied to the menu bar icon", "Background colour applied to the tray icon"},
    {"Your data stays on your Mac. Nothing is ever uploaded.",
     "Your data stays on your computer. Nothing is ever uploaded."},
    {"Clipboard history, screenshots, and settings are stored only on this Mac and are never sent to any server.",
     "Clipboard history, screenshots, and settings are stored only on this computer and are never sent to any server."},
    {"Clear on Mac Restart", "Clear on Restart"},
    {"Wipe history when your Mac reboots", "Wipe history when your computer reboots"},
    {"Using custom audio file from your Mac", "Using custom audio file from your computer"},
    {"Copy video file directly to macOS clipboard (Cmd+V to paste anywhere)",
     "Copy video file directly to the clipboard (Ctrl+V to paste anywhere)"},
    // Keep Awake.
    {"Reliability varies by Mac model & macOS version.", "Reliability varies by computer model & system version."},
    {"Lid Closed mode is active but your Mac is now on battery. Connect power to maintain full performance.",
     "Lid Closed mode is active but your computer is now on battery. Connect power to maintain full performance."},
    {"Lid Closed mode requires AC power on Apple Silicon. Keep Awake will activate automatically when your charger is "
     "connected.",
     "Lid Closed mode requires AC power. Keep Awake will activate automatically when your charger is connected."},
    // Permissions.
    {"To capture screenshots, this app needs Screen Recording access. Please grant access in System Settings > "
     "Privacy & Security > Screen Recording.",
     "To capture screenshots, this app needs Screen Recording access. Please grant access in Settings > Privacy & "
     "Security > Screen Recording."},
    {"Tavrine needs Microphone access to record audio during screen recording. Please grant access in System Settings "
     "> Privacy & Security > Microphone.",
     "Tavrine needs Microphone access to record audio during screen recording. Please grant access in Settings > "
     "Privacy & Security > Microphone."},
    {"Clean Mode requires Accessibility permission to block keyboard input.\n\nGo to System Settings → Privacy & "
     "Security → Accessibility and enable Tavrine.",
     "Clean Mode requires Accessibility permission to block keyboard input.\n\nGo to Settings → Privacy & Security → "
     "Accessibility and enable Tavrine."},
    {"Open System Settings", "Open Settings"},
    // Keys.
    {"macOS's screenshot shortcut (⌘⇧3)", "{desktop}'s screenshot shortcut (Super+Shift+3)"},
    {"macOS's screenshot shortcut (⌘⇧4)", "{desktop}'s screenshot shortcut (Super+Shift+4)"},
    {"macOS's Screenshot app shortcut (⌘⇧5)", "{desktop}'s Screenshot app shortcut (Super+Shift+5)"},
    {"⌥ twice", "Alt twice"},
    {"⌘← ⌘→ Category", "Ctrl+← Ctrl+→ Category"},
    {"Show Details ↵ | Actions ⌘", "Show Details ↵ | Actions Ctrl"},
    {"⌘", "Ctrl"},
    {"⌥", "Alt"},
    {"⇧", "Shift"},
};

/// %1 stands for any text of one character and more, which is looked up in its turn.
constexpr Words openTexts[] = {
    {"Default is ⌘⇧%1", "Default is Super+Shift+%1"},
    {"Tap Option twice quickly to %1", "Tap Alt twice quickly to %1"},
    {"Clipboard History uses ⌘⇧%1", "Clipboard History uses Super+Shift+%1"},
    {"Emoji Picker uses ⌘⇧%1", "Emoji Picker uses Super+Shift+%1"},
    {"Snipper uses ⌘⇧%1", "Snipper uses Super+Shift+%1"},
    {"Screen Record uses ⌘⇧%1", "Screen Record uses Super+Shift+%1"},
    {"%1 already uses ⌥ twice — pick a different shortcut", "%1 already uses Alt twice — pick a different shortcut"},
    {"Another program uses ⌘⇧%1", "Another program uses Super+Shift+%1"},
    {"Conflicts with %1 — pick a different key", "Conflicts with %1 — pick a different key"},
    {"%1 — pick a different key", "%1 — pick a different key"},
    {"%1 — can't be saved", "%1 — can't be saved"},
};

/// %1 is one key.
constexpr Words keys[] = {
    {"⌘⇧%1", "Super+Shift+%1"},
    {"⌘%1", "Ctrl+%1"},
    {"⌥%1", "Alt+%1"},
    {"⇧%1", "Shift+%1"},
};

struct Pattern {
    QString before;
    QString after;
    QString shown;
    qsizetype longest; ///< of what %1 stands for

    /// What %1 stands for; empty when `text` is not of this form.
    [[nodiscard]] QString inner(const QString &text) const {
        const qsizetype length = text.size() - before.size() - after.size();
        const bool isOfThisForm = length > 0 && length <= longest && text.startsWith(before) && text.endsWith(after);
        return isOfThisForm ? text.mid(before.size(), length) : QString();
    }
};

struct Table {
    QHash<QString, QString> whole;
    std::vector<Pattern> patterns;
    qsizetype longest = 0; ///< a text of twice that length is not ours

    Table() {
        for (const Words &row : wholeTexts)
            longest =
                std::max(longest, whole.insert(QString::fromUtf8(row.ours), QString::fromUtf8(row.shown)).key().size());
        for (const Words &row : openTexts)
            add(row, longest);
        for (const Words &row : keys)
            add(row, 1);
    }

private:
    void add(const Words &row, qsizetype longestInner) {
        const QString ours = QString::fromUtf8(row.ours);
        const qsizetype place = ours.indexOf(QLatin1String("%1"));
        patterns.push_back({ours.left(place), ours.mid(place + 2), QString::fromUtf8(row.shown), longestInner});
    }
};

using Translation = std::function<QString(const QString &text)>;

Translation &translationInUse() {
    static Translation inUse;
    return inUse;
}

} // namespace

QString desktopName(const QString &currentDesktop) {
    const QString last = currentDesktop.section(u':', -1);
    return last.startsWith(QLatin1String("X-")) ? last.mid(2) : last;
}

QString inDesktopWords(const QString &text, const QString &desktop) {
    static const Table table;
    if (text.isEmpty() || text.size() > 2 * table.longest)
        return text;
    if (const auto found = table.whole.constFind(text); found != table.whole.cend()) {
        QString shown = *found;
        return shown.replace(QLatin1String("{desktop}"), desktop.isEmpty() ? QStringLiteral("The desktop") : desktop);
    }
    for (const Pattern &pattern : table.patterns) {
        if (const QString inner = pattern.inner(text); !inner.isEmpty()) {
            QString shown = pattern.shown;
            return shown.replace(QLatin1String("%1"), inDesktopWords(inner, desktop));
        }
    }
    return text;
}

QString inDesktopWords(const QString &text) {
    static const QString desktop = desktopName(qEnvironmentVariable("XDG_CURRENT_DESKTOP"));
    const QString shown = inDesktopWords(text, desktop);
    return translationInUse() ? translationInUse()(shown) : shown;
}

void setTranslation(std::function<QString(const QString &text)> translation) {
    translationInUse() = std::move(translation);
}

void setTranslation(Catalogue catalogue) {
    translationInUse() = [catalogue = std::move(catalogue)](const QString &text) { return catalogue.shown(text); };
}

} // namespace tavrine
