#pragma once

#include "adapters/frozen/OverlayEvent.h"
#include "adapters/frozen/OverlayMonitor.h"
#include "adapters/frozen/PictureFile.h"

#include <optional>
#include <vector>

namespace tavrine {

/// The screen as it was at one moment, shown over itself, with the pointer and the keyboard in our hands.
///
/// Owned by who shows it; one thread, no event loop. Destroying it gives everything back: windows, grabs, pictures.
///
///  1. The picture is taken before anything else is done, all monitors, device pixels, without the pointer. What is
///     open stays in it, menus of other programs too.
///  2. The canvas begins empty; its owner paints all of it before `show`.
///  3. Another program's grab is waited out: `tryGrabs` is called again until it holds both.
class FrozenScreen {
public:
    virtual ~FrozenScreen() = default;

    [[nodiscard]] virtual PixelsToRead picture() const = 0;
    [[nodiscard]] virtual PixelsToPaint canvas() const = 0;
    [[nodiscard]] virtual QRect rect() const = 0;
    [[nodiscard]] virtual const std::vector<OverlayMonitor> &monitors() const = 0;
    /// True when one rectangle may lie on several monitors: where things are differently large on them, a pixel beside
    /// another is not the same distance.
    [[nodiscard]] virtual bool isOnePlane() const { return true; }
    /// The pixels that an area of the plane stands for, which may be more than the plane has there.
    [[nodiscard]] virtual PictureCut cut(const QRect &area) const { return {picture(), area}; }
    /// Where the pointer was when the picture was taken; none where that is told with its first event.
    [[nodiscard]] virtual std::optional<QPoint> firstPointer() const = 0;

    /// Puts the canvas over everything.
    virtual void show() = 0;
    /// Puts these parts of the canvas; afterwards the canvas may be painted again.
    virtual void put(const std::vector<QRect> &areas) = 0;
    /// Takes the overlay off and gives the grabs back; the picture stays.
    virtual void hide() = 0;

    /// Asks for what of pointer and keyboard is not held yet. Cheap; to be called every few milliseconds.
    virtual void tryGrabs() = 0;
    [[nodiscard]] virtual bool hasPointer() const = 0;
    [[nodiscard]] virtual bool hasBoth() const = 0;

    /// Other programs' windows, the topmost first; none where nobody tells them.
    [[nodiscard]] virtual std::vector<QRect> windows() = 0;

    /// The next of what has arrived; none when there is nothing more now.
    [[nodiscard]] virtual std::optional<OverlayEvent> nextEvent() = 0;
    /// Becomes readable when something arrives.
    [[nodiscard]] virtual int fileDescriptor() const = 0;

    /// Aims at another pixel: where a program may not move the pointer, what it does next counts from there.
    virtual void movePointer(QPoint place) = 0;
};

} // namespace tavrine
