#pragma once

#include <QString>

#include <array>
#include <vector>

namespace tavrine {

/// What this program can only do as far as the desktop lets it.
enum class Ability { history, hotKeys, doubleTap, paste, capture, recording, shelf, tray };

inline constexpr std::array allAbilities{Ability::history, Ability::hotKeys,   Ability::doubleTap, Ability::paste,
                                         Ability::capture, Ability::recording, Ability::shelf,     Ability::tray};

enum class AbilityState { there, limited, missing };

/// How far the desktop lets it, as was found by trying.
struct AbilityReport {
    Ability ability = Ability::history;
    AbilityState state = AbilityState::there;
    QString reason;      ///< a sentence; empty where nothing is wanting
    QString step;        ///< what the person can do about it, a sentence; empty where nobody can do anything
    QString linesToCopy; ///< that the step speaks of: for a configuration or a terminal; empty for none
    bool operator==(const AbilityReport &) const = default;
};

/// What this desktop allows. Lives on the main thread, as long as the process.
class DesktopAbilities {
public:
    virtual ~DesktopAbilities() = default;

    /// One for each, in their order, as it is at this moment. Waits for nobody: what is still being asked for is
    /// limited.
    [[nodiscard]] virtual std::vector<AbilityReport> reports() const = 0;
};

} // namespace tavrine
