#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <array>
#include <functional>
#include <optional>

namespace tavrine {

/// The choice of what is recorded and how: an area that is dragged, and then the setup card. Coordinates are points of
/// the overlay, origin at its top left. Main thread; held by the overlay's view and by its flow.
///
///  1. A drag that gives no area of more than 10 by 10 points gives the flow up; one that does opens the card, and
///     from then on no drag counts until the card is closed.
///  2. The area never leaves the overlay, whatever a drag or a key does.
///  3. Keys select as well: they move a cross, which stands in the middle first, set a corner where it is, and take the
///     area from there to where they have moved it. One that is too small is not taken, and gives nothing up; a drag
///     takes the cross away with its corner.
class ScreenRecorderSelectionModel final : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> onMic;   ///< the switch of the microphone was pressed
        std::function<void()> onStart; ///< with the area and the switches as they are
        std::function<void()> onCancel;
        std::function<void()> onStop = {}; ///< none while nothing is recorded
    };

    static constexpr double leastSide = 10; ///< an area is wider and higher than that
    static constexpr std::array<int, 3> delays{0, 3, 5};

    /// `scale`: device pixels per point.
    ScreenRecorderSelectionModel(QSizeF size, double scale, Actions actions);

    /// A drag that began at `start` is at `location` now.
    void drag(QPointF start, QPointF location);
    void endDrag();
    void cancel() { m_actions.onCancel(); }
    /// Of the recording that is under way, for who has no pointer. Nothing where there is none.
    void stopRecording();
    [[nodiscard]] bool canStopRecording() const { return m_actions.onStop != nullptr; }
    /// For who has no pointer: the whole screen, while there is no area yet.
    void selectAll();
    /// By points; the first shows the cross.
    void moveCross(QPointF by);
    /// The corner is set where the cross stands; the next takes the area.
    void setCorner();
    /// None unless keys have shown it.
    [[nodiscard]] const std::optional<QPointF> &cross() const { return m_cross; }
    [[nodiscard]] bool hasCorner() const { return m_cross && m_startPoint; }

    // The card.
    void pressMic() { m_actions.onMic(); }
    void flipMic();
    void flipSystemAudio();
    void setTimerDelay(int seconds);
    void start();
    /// Back to the drag; the switches stay.
    void closeCard();
    /// Of the confirmed area, by points.
    void move(QPointF by);
    void resize(QPointF by);

    [[nodiscard]] QSizeF size() const { return m_size; }
    /// None before a drag.
    [[nodiscard]] std::optional<QRectF> selection() const;
    /// The movie's size for the area: "1280 × 720".
    [[nodiscard]] QString sizeText() const;
    [[nodiscard]] bool isConfirming() const { return m_isConfirming; }
    [[nodiscard]] bool includesMic() const { return m_includeMic; }
    [[nodiscard]] bool includesSystemAudio() const { return m_includeSystemAudio; }
    [[nodiscard]] int timerDelay() const { return m_timerDelay; }
    [[nodiscard]] static QString delayLabel(int seconds);

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QPointF within(QPointF point) const;
    [[nodiscard]] bool isLargeEnough() const;
    void setSelection(const QRectF &area);

    QSizeF m_size;
    double m_scale;
    Actions m_actions;
    std::optional<QPointF> m_startPoint;
    std::optional<QPointF> m_currentPoint;
    std::optional<QPointF> m_cross;
    bool m_isConfirming = false;
    bool m_includeMic = false;
    bool m_includeSystemAudio = false;
    int m_timerDelay = 0;
};

} // namespace tavrine
