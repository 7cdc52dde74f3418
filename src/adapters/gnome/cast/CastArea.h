#pragma once

#include "ports/ScreenStream.h"

#include <QRect>

#include <optional>

namespace tavrine {

/// What is asked of a compositor that casts parts of its plane, and which of the pixels that come are wanted.
struct CastArea {
    QRect plane;    ///< what it casts
    QSize pictures; ///< the pixels of that
    QRect area;     ///< of them: what is wanted
};

/// For a display that lies there on the plane, has `fineness` pixels for one of it and `scale` of it for a point. What
/// is cast begins and ends where a pixel does, which is not everywhere on a plane of larger steps. None when the
/// configuration was made for another scale.
[[nodiscard]] std::optional<CastArea> castAreaOf(const ScreenStreamConfiguration &configuration, const QRect &display,
                                                 double fineness, double scale);

} // namespace tavrine
