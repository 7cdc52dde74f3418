#pragma once

#include "look/MotionClock.h"

#include <QStringList>
#include <QWidget>

#include <vector>

namespace tavrine::look {

class Control;

/// A few choices side by side on one track; a plate slides under the chosen one.
class SegmentedControl : public QWidget {
    Q_OBJECT
public:
    explicit SegmentedControl(const QStringList &texts, QWidget *parent = nullptr);

    static constexpr int none = -1;

    [[nodiscard]] int current() const { return m_current; }
    /// Of none, as where what is stored is no choice, no segment has the plate, and each can be chosen. Does not emit.
    void setCurrent(int index);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// A person chose another segment.
    void chosen(int index);
    /// A person pressed a segment, the present one too.
    void pressed(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] QRectF segment(double index) const;

    std::vector<Control *> m_segments;
    int m_current = 0;
    double m_plate = 0; // where the plate stands, in segments
    Motion m_motion;
};

} // namespace tavrine::look
