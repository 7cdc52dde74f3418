#pragma once

#include <QRectF>
#include <QWidget>

namespace tavrine {

/// The red frame round what is recorded, in a window over the whole screen. Main thread.
class RecordingBorderView final : public QWidget {
    Q_OBJECT

public:
    /// `rect` is in points, relative to the screen of that height, with its origin at the bottom left.
    RecordingBorderView(const QRectF &rect, double screenHeight);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    QRectF m_outline; ///< where the middle of the line goes, origin at the top left
};

} // namespace tavrine
