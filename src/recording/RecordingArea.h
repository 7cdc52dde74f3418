#pragma once

#include "ports/Screens.h"

namespace tavrine {

/// What a person chose to record.
struct RecordingArea {
    QRectF appKitRect;     ///< points, relative to the screen, origin at its bottom left
    QRectF rawSwiftUIRect; ///< the same as the selection shows it, origin at the top left
    Screen screen;
    bool includeAudio = false;
    bool operator==(const RecordingArea &) const = default;
};

} // namespace tavrine
