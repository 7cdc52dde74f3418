#pragma once

#include "shell/Triggers.h"

#include <QMap>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

/// The keys that the editor of `editor` may not choose, each with what stands in the way. Flags play no part: a tool
/// that is switched off keeps its key.
[[nodiscard]] QMap<QString, QString> keyConflicts(const UserDefaults &defaults, Trigger editor);

/// What keeps the editor of `editor` from choosing the double tap: a tool that is switched on and has it.
[[nodiscard]] std::optional<QString> doubleTapConflict(const UserDefaults &defaults, Trigger editor,
                                                       const std::function<bool(Trigger)> &isFeatureOn);

} // namespace tavrine
