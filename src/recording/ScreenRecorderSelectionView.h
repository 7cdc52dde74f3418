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
/// Arrow keys move the confirmed area, with Shift they resize it, ten points at a time with Ctrl. Return starts;
/// before there is an area it takes the whole screen, and the space bar ends a recording that is under way.
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
    void placeCard();
    [[nodiscard]] QRect selection() const;
    void paintHints(QPainter &painter) const;
    void paintSelection(QPainter &painter) const;

    std::shared_ptr<ScreenRecorderSelectionModel> m_model;
    QPixmap m_frozen;
    RecordingSetupCardView *m_card;
    std::optional<QPointF> m_grip; ///< where the drag under way began
    QRect m_painted;               ///< the selection that is on the screen
};

} // namespace tavrine
