#pragma once

#include "look/MotionClock.h"

#include <QWidget>

namespace tavrine {

/// Says that the history is gone: a badge with a check mark and eight sparks that fly off it. It only moves; it clears
/// nothing. Covers its parent while it is shown; main thread.
class MemoryCleaningOverlay final : public QWidget {
    Q_OBJECT

public:
    explicit MemoryCleaningOverlay(QWidget *parent);

    /// Comes in a spring and goes by fading.
    void setShown(bool isShown);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void paintBadge(class QPainter &painter, const QPointF &centre) const;

    look::Motion m_appearing;
    look::Motion m_bursting;
    look::Motion m_checking;
    bool m_isShown = false;
    double m_opacity = 0;
    double m_burst = 0;
    double m_checkScale = 0;
    double m_checkOpacity = 0;
};

} // namespace tavrine
