#pragma once

#include "ports/EdgeWindow.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace tavrine {

/// The toolkit's window of a window at the edge, as every desktop has it: it has the largest size, and its content lies
/// within it where something is shown, and grows there. Owned by its window; main thread.
///
/// A frame's upper edge and its middle say where the window is; what changes of a frame's size is shown within it.
class EdgeView : public QWidget {
public:
    explicit EdgeView(const EdgeWindowDescription &description);

    /// Takes it over; null for none.
    void setContent(QWidget *content);
    /// In the plane of `Screens`, which hangs on the first screen's lower edge: where that moves, an equal frame lies
    /// elsewhere, and the window goes there. At another place, and while hidden, it is there at once.
    void setFrame(const QRectF &frame, std::chrono::milliseconds duration);
    [[nodiscard]] const QRectF &frame() const { return m_frame; }
    [[nodiscard]] bool ignoresMouseEvents() const { return m_ignoresMouseEvents; }
    void setIgnoresMouseEvents(bool ignores);

protected:
    /// Gives the window its place, in the toolkit's plane.
    virtual void putAt(const QRect &place) { setGeometry(place); }
    /// Says where it takes the mouse: in `takingPart`, if it does.
    virtual void shapeInput() = 0;
    /// What is shown of it has changed.
    virtual void partChanged() {}
    void hideEvent(QHideEvent *event) override;

    /// Goes where its frame lies now. Every kind begins with this.
    void follow();
    /// In whole points of the window: what is shown now, and what is shown at the end of the present change.
    [[nodiscard]] QRect shownPart() const;
    [[nodiscard]] QRect takingPart() const;
    [[nodiscard]] bool isChanging() const { return m_steps.isActive(); }

    const EdgeWindowDescription m_description;

private:
    [[nodiscard]] QRect placeFor(const QRectF &frame) const;
    void followFirstScreen();
    void step();
    void showPart(const QRectF &part);

    QPointer<QWidget> m_content;
    QRectF m_frame; ///< where it goes
    QRectF m_from;  ///< the rest in the window's own coordinates: what was shown when the present change began,
    QRectF m_part;  ///< what is shown now,
    QRectF m_to;    ///< what is shown after it
    std::chrono::milliseconds m_duration{};
    QElapsedTimer m_sinceBegin;
    QTimer m_steps;
    QMetaObject::Connection m_screenMoves;
    bool m_ignoresMouseEvents = true;
};

} // namespace tavrine
