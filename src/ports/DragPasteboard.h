#pragma once

#include <functional>
#include <memory>

namespace tavrine {

/// What is being dragged on the desktop, whoever drags it. Lives on the main thread; watches as long as it is there.
///
///  1. `changeCount` grows by one for each drag that begins, whatever it carries, and keeps its value after the drag.
///  2. `holdsFileReference` speaks of the drag that `changeCount` counted last, and stays true after that drag's end:
///     what was dragged last stays here as on any pasteboard. It can become true a moment after the drag began, when
///     the program that drags has answered; one that answers nothing holds none.
///  3. `isDragging` is true from the moment a drag is known until its button is released, it is cancelled, or its
///  program
///     is gone. A stroke that drags no data, as over text, a slider or a title bar, never makes it true.
///  4. A drag that began in this program counts and is held like any other, but `isDragging` speaks of other programs:
///     it is false meanwhile.
///  5. None of the calls waits for another program.
class DragPasteboard {
public:
    virtual ~DragPasteboard() = default;

    [[nodiscard]] virtual int changeCount() const = 0;
    [[nodiscard]] virtual bool holdsFileReference() const = 0;
    [[nodiscard]] virtual bool isDragging() const = 0;

    /// Called in a turn of its own after one of the three has changed. It may destroy the pasteboard.
    virtual void setOnChange(std::function<void()> onChange) = 0;
};

/// Gives the drag pasteboard to who needs to watch it. Costs nothing while nobody does.
class DragPasteboards {
public:
    virtual ~DragPasteboards() = default;
    [[nodiscard]] virtual std::unique_ptr<DragPasteboard> watch() = 0;
};

} // namespace tavrine
