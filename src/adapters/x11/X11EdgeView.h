#pragma once

#include "ports/EdgeWindow.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace tavrine {

/// The toolkit's window of a window at the edge: it has the largest size, and its content lies within it where
/// something is shown. Owned by its window; main thread.
///
/// A frame's upper edge and its middle say where the window is; what changes of a frame's size is shown within it.
class X11EdgeView final : public QWidget {
public:
    explicit X11EdgeView(const EdgeWindowDescription &description);

    /// Takes it over; null for none.
    void setContent(QWidget *content);
    /// In the toolkit's plane. Elsewhere, and while hidden, it is there at once.
    void setFrame(const QRectF &frame, std::chrono::milliseconds duration);
    [[nodiscard]] bool ignoresMouseEvents() const { return m_ignoresMouseEvents; }
    void setIgnoresMouseEvents(bool ignores);
    void setComposited(bool isComposited);
    /// Sends what was asked of the server, without waiting.
    void flush();

protected:
    void hideEvent(QHideEvent *event) override;

private:
    [[nodiscard]] QRect placeFor(const QRectF &frame) const;
    [[nodiscard]] double scale() const;
    void step();
    void showPart(const QRectF &part);
    void shapeInput();
    void cut();

    const EdgeWindowDescription m_description;
    QPointer<QWidget> m_content;
    QRectF m_frame; ///< where it goes
    QRectF m_from;  ///< the rest in the window's own coordinates: what was shown when the present change began,
    QRectF m_part;  ///< what is shown now,
    QRectF m_to;    ///< what is shown after it
    std::chrono::milliseconds m_duration{};
    QElapsedTimer m_sinceBegin;
    QTimer m_steps;
    bool m_ignoresMouseEvents = true;
    bool m_isComposited = true;
    bool m_isCut = false;
};

} // namespace tavrine
