#pragma once

#include "capture/editor/DrawViewModel.h"
#include "capture/editor/DrawingTool.h"

namespace tavrine {

/// Drawing without a pointer: puts an annotation into the middle of what is seen, where the keys then move it, change
/// its size or remove it; and goes through the annotations in their order. Fed with steps and free of windows. Owned by
/// `DrawView`; main thread only.
///
///  1. What is put there is what a drag, or a click, of the present tool would leave. The eraser has none: what is
///     selected is removed.
///  2. No step takes a point of an annotation over the canvas' edge that was within it.
///  3. The selection is known by its annotation's identity: one that goes, however that comes, is none.
class CanvasKeys {
public:
    /// What arrow keys do with the selection: all of it, or its last point. A text and a number are moved by both.
    enum class Step { move, resize };

    /// The model outlives it.
    explicit CanvasKeys(DrawViewModel &model) : m_model(model) {}

    /// Return: puts an annotation into the middle of `seen`, in the view's coordinates, and selects it; where one is
    /// selected, it is let go. False when neither was done.
    bool enter(const QRectF &seen);
    /// The next annotation; before the first and behind the last there is none, and the answer is false.
    bool selectNext(bool isForward);
    /// False without a selection, as the two below.
    bool step(Step step, QPointF by);
    bool remove();
    bool letGo();

    /// None while it is typed into.
    [[nodiscard]] std::optional<DrawingPath> selected() const;
    /// What a screen reader is told of it: "Rectangle, 2 of 3". Empty without a selection.
    [[nodiscard]] QString words() const;

private:
    [[nodiscard]] std::vector<DrawingPath> drawings() const;
    [[nodiscard]] std::optional<size_t> place(const std::vector<DrawingPath> &drawings) const;
    [[nodiscard]] QPointF kept(const std::vector<QPointF> &points, QPointF by) const;

    DrawViewModel &m_model;
    std::optional<QString> m_selected;
};

} // namespace tavrine
