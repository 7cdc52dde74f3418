#pragma once

#include "look/PanelSurface.h"

namespace tavrine {

class ScreenRecorder;

/// The bar with the time and the buttons of a recording under way. Main thread; the recorder outlives it.
class FloatingStopBarView final : public look::PanelSurface {
    Q_OBJECT

public:
    explicit FloatingStopBarView(ScreenRecorder &recorder);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// What it says needs another size.
    void fittingSizeChanged(const QSize &size);

private:
    class Clock;
    class Dot;
    class SilenceHint;

    void addButtons();
    void refresh();

    ScreenRecorder &m_recorder;
    Clock *m_clock;
    SilenceHint *m_hint;
};

} // namespace tavrine
