#pragma once

#include "shell/Triggers.h"

#include <QMap>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

/// What stands in the way of a shortcut.
struct ShortcutConflict {
    enum class Kind {
        desktopKey, ///< the desktop has the key for itself
        toolKey,    ///< another tool has it
        doubleTap,  ///< another tool has the double tap
    };
    Kind kind;
    QString message;
    bool operator==(const ShortcutConflict &) const = default;
};

/// The keys that the editor of `editor` may not choose, each with what stands in the way. Flags play no part: a tool
/// that is switched off keeps its key.
[[nodiscard]] QMap<QString, ShortcutConflict> keyConflicts(const UserDefaults &defaults, Trigger editor);

/// What keeps the editor of `editor` from choosing the double tap: a tool that is switched on and has it.
[[nodiscard]] std::optional<ShortcutConflict> doubleTapConflict(const UserDefaults &defaults, Trigger editor,
                                                                const std::function<bool(Trigger)> &isFeatureOn);

} // namespace tavrine
