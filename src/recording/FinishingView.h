#pragma once

#include "look/PanelSurface.h"

namespace tavrine {

/// Stands where the stop bar was while the end of a movie is still being written. Main thread.
class FinishingView final : public look::PanelSurface {
    Q_OBJECT

public:
    FinishingView();

    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace tavrine
