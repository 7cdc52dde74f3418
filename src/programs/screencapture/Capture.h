#pragma once

#include "adapters/frozen/FrozenScreen.h"
#include "programs/screencapture/CommandLine.h"
#include "programs/screencapture/Narration.h"
#include "programs/screencapture/OverlayPainter.h"

#include <memory>
#include <optional>

namespace tavrine {

/// One capture from start to file. Owned by `main`, lives on its thread.
class Capture {
public:
    /// `stopDescriptor` becomes readable when the process is asked to end.
    Capture(CommandLine line, int stopDescriptor) : m_line(std::move(line)), m_stopDescriptor(stopDescriptor) {}

    /// The exit status: 0 when there is a picture, 1 when there is none and no file.
    [[nodiscard]] int run();

private:
    void showFirst();
    [[nodiscard]] std::optional<QRect> letPersonChoose();
    void handle(const OverlayEvent &event, SelectionModel &model);
    void handOn(const OverlayEvent &event, SelectionModel &model);
    void beginNarration(const SelectionModel &model);
    void repaint(const SelectionModel &model);
    [[nodiscard]] int save(const QRect &area);

    CommandLine m_line;
    int m_stopDescriptor;
    std::unique_ptr<FrozenScreen> m_screen;
    std::optional<Narration> m_narration; ///< while the person chooses
    OverlayPainter m_painter;
    OverlayScene m_scene;
    bool m_isAimKnown = false; ///< before that nothing is painted at the pointer
};

} // namespace tavrine
