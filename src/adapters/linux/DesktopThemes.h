#pragma once

#include <QString>

#include <optional>

namespace tavrine {

/// Which icons and sounds the desktop's toolkits use; empty for what it does not say.
struct DesktopThemes {
    QString icons;
    QString sounds;
    std::optional<bool> hasEventSounds = std::nullopt;
};

} // namespace tavrine
