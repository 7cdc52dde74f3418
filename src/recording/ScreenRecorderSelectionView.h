#pragma once

#include <QPixmap>
#include <QWidget>

#include <memory>
#include <optional>

namespace tavrine {

class RecordingSetupCardView;
class ScreenRecorderSelectionModel;

/// The overlay on which an area is dragged, with the setup card over it. Fills its window; main thread.
///
/// Arrow keys move the confirmed area, with Shift they resize it, ten points at a time with Ctrl. Return starts; before
/// anything is selected it takes the whole screen, and the space bar ends a recording that is under way.
///
/// Before there is an area, arrow keys move a cross, by ten points with Shift or Ctrl; Return sets a corner there and
/// then takes the area up to it, and so does the space bar where it has nothing to end. Where that stands is what
/// screen readers are told as the view's description.
class ScreenRecorderSelectionView final : public QWidget {
    Q_OBJECT

public:
    /// `frozen`: what stands behind the overlay, for a desktop that cannot let it show through; null elsewhere.
    explicit ScreenRecorderSelectionView(std::shared_ptr<ScreenRecorderSelectionModel> model, QPixmap frozen = {});

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void refresh();
    void tell();
    void confirmByKey(int key);
    void moveByKey(QPointF direction, Qt::KeyboardModifiers modifiers);
    void placeCard();
    [[nodiscard]] QRect selection() const;
    void paintHints(QPainter &painter) const;
    void paintSelection(QPainter &painter) const;
    void paintCross(QPainter &painter) const;

    std::shared_ptr<ScreenRecorderSelectionModel> m_model;
    QPixmap m_frozen;
    RecordingSetupCardView *m_card;
    std::optional<QPointF> m_grip; ///< where the drag under way began
    QRect m_painted;               ///< the selection that is on the screen
    bool m_hasCross = false;       ///< on the screen
};

} // namespace tavrine
