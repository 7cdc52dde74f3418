#pragma once

#include "adapters/linux/CastPortal.h"
#include "ports/DesktopAbilities.h"
#include "ports/HotKeys.h"

#include <functional>

namespace tavrine {

/// Abilities as a desktop's ports tell them, asked anew each time. Lives as long as the desktop; main thread.
class TriedAbilities final : public DesktopAbilities {
public:
    using Find = std::function<AbilityReport(Ability)>;
    explicit TriedAbilities(Find find) : m_find(std::move(find)) {}

    [[nodiscard]] std::vector<AbilityReport> reports() const override {
        std::vector<AbilityReport> reports;
        for (const Ability ability : allAbilities)
            reports.push_back(m_find(ability));
        return reports;
    }

private:
    Find m_find;
};

/// What is found wanting, in the words that the person reads.
namespace abilityReport {

[[nodiscard]] AbilityReport there(Ability ability);
/// No keys can be typed into other programs, no picture of the screen be had, no tray shows the icon, …
[[nodiscard]] AbilityReport missing(Ability ability);
/// By what the keeper of hot keys says of itself, where it is not this program.
[[nodiscard]] AbilityReport hotKeys(const HotKeyTraits &traits);
/// Of a desktop that tells no program of keys: Plasma where its service keeps the hot keys, else one like sway.
[[nodiscard]] AbilityReport doubleTap(const HotKeyTraits &traits);
/// Where only the portal shows the screen, by what it says of itself. `isRemembered`: it asks the person no more.
[[nodiscard]] AbilityReport recording(CastPortal::Answer portal, bool isRemembered);
/// Of GNOME without this program's extension.
[[nodiscard]] AbilityReport withoutExtension(Ability ability);

} // namespace abilityReport
} // namespace tavrine
