#include "adapters/desktops/TriedAbilities.h"

#include "adapters/linux/ApplicationObject.h"
#include "base/Program.h"

namespace tavrine::abilityReport {
namespace {

// Keys that sway's own configuration leaves free.
const auto swayKeys = QStringLiteral("bindsym $mod+Shift+v exec tavrine --clipboard\n"
                                     "bindsym $mod+period exec tavrine --emoji\n"
                                     "bindsym $mod+Shift+s exec tavrine --capture\n"
                                     "bindsym $mod+Shift+r exec tavrine --record\n");
const auto swayTap = QStringLiteral("bindsym --release Alt_L exec tavrine --alt-tap\n");

/// Has KWin call this program at each tap of Alt alone.
QString plasmaTap() {
    return QStringLiteral("kwriteconfig5 --file kwinrc --group ModifierOnlyShortcuts --key Alt \"%1,%2,%3,AltTap\"\n"
                          "qdbus org.kde.KWin /KWin reconfigure\n")
        .arg(ownBundleIdentifier, ApplicationObject::triggersPath(), ApplicationObject::triggersInterface());
}

bool isPlasmas(const HotKeyTraits &traits) {
    return traits.availability == HotKeyAvailability::there && !traits.isAskedOfPerson;
}

struct Words {
    const char *reason;
    const char *step;
};

Words wordsOf(Ability ability) {
    switch (ability) {
    case Ability::history:
        return {"This desktop shows its clipboard to nobody in the background.", ""};
    case Ability::paste:
        return {"This desktop lets no program type into others, or only one that is installed.",
                "What you choose is on the clipboard: paste it yourself. On Plasma, install Tavrine as a package."};
    case Ability::capture:
        return {"This desktop shows no program its screen, or only one that is installed.",
                "On Plasma, install Tavrine as a package."};
    case Ability::recording:
        return {
            "This desktop gives no moving picture of its screen, or only to a program that is installed.",
            "On Plasma, install Tavrine as a package; elsewhere, install your desktop's part of xdg-desktop-portal."};
    case Ability::shelf:
        return {"This desktop tells no program what is dragged.", ""};
    case Ability::tray:
        return {"No panel of this desktop shows tray icons.",
                "Add a tray to your panel; on GNOME, switch on the extension AppIndicator. Until then a start of "
                "Tavrine opens this window."};
    case Ability::hotKeys:
    case Ability::doubleTap:
        break;
    }
    return {"", ""};
}

} // namespace

AbilityReport there(Ability ability) {
    return {.ability = ability, .state = AbilityState::there, .reason = {}, .step = {}, .linesToCopy = {}};
}

AbilityReport missing(Ability ability) {
    const Words words = wordsOf(ability);
    return {.ability = ability,
            .state = AbilityState::missing,
            .reason = QLatin1String(words.reason),
            .step = QLatin1String(words.step),
            .linesToCopy = {}};
}

AbilityReport hotKeys(const HotKeyTraits &traits) {
    if (traits.availability == HotKeyAvailability::there)
        return there(Ability::hotKeys);
    if (traits.availability == HotKeyAvailability::asking)
        return {.ability = Ability::hotKeys,
                .state = AbilityState::limited,
                .reason = QStringLiteral("This desktop has not said yet whether Tavrine may have its keys."),
                .step = QStringLiteral("Answer its question, if it shows one."),
                .linesToCopy = {}};
    return {.ability = Ability::hotKeys,
            .state = AbilityState::missing,
            .reason = QStringLiteral("This desktop gives keys to no program."),
            .step = QStringLiteral("Bind commands to keys in its own settings. For sway, copy these lines into "
                                   "~/.config/sway/config."),
            .linesToCopy = swayKeys};
}

AbilityReport doubleTap(const HotKeyTraits &traits) {
    const bool isOnPlasma = isPlasmas(traits);
    return {.ability = Ability::doubleTap,
            .state = AbilityState::missing,
            .reason = QStringLiteral("This desktop tells no program of a tap of Alt."),
            .step = isOnPlasma ? QStringLiteral("Have KWin tell Tavrine: copy these lines into a terminal.")
                               : QStringLiteral("Bind a tap to a command. For sway, copy this line into "
                                                "~/.config/sway/config."),
            .linesToCopy = isOnPlasma ? plasmaTap() : swayTap};
}

AbilityReport recording(CastPortal::Answer portal, bool isRemembered) {
    if (portal == CastPortal::Answer::missing)
        return missing(Ability::recording);
    if (portal == CastPortal::Answer::there && isRemembered)
        return there(Ability::recording);
    const bool isAsking = portal == CastPortal::Answer::asking;
    return {.ability = Ability::recording,
            .state = AbilityState::limited,
            .reason = isAsking ? QStringLiteral("This desktop has not said yet whether it shows its screen.")
                               : QStringLiteral("This desktop asks you before it shows its screen."),
            .step = isAsking ? QString()
                             : QStringLiteral("Choose the screen when it asks, and let it remember your choice."),
            .linesToCopy = {}};
}

AbilityReport withoutExtension(Ability ability) {
    // Keys, and what is typed, at least reach the programs of the X server; of the screens nothing is to be had.
    const bool isSeeing = ability == Ability::capture || ability == Ability::recording;
    return {.ability = ability,
            .state = isSeeing ? AbilityState::missing : AbilityState::limited,
            .reason = isSeeing ? QStringLiteral("GNOME shows its screens to an extension alone.")
                               : QStringLiteral("GNOME lets only an extension do this everywhere."),
            .step = QStringLiteral("Log in anew after the installation, and switch on Tavrine among the extensions."),
            .linesToCopy = {}};
}

} // namespace tavrine::abilityReport
