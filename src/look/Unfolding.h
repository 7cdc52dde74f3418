#pragma once

#include "look/MotionClock.h"

#include <QWidget>

class QGraphicsOpacityEffect;

namespace tavrine::look {

/// Holds one widget that comes and goes: it moves in from under what stands before it, fades in on its way, and what
/// comes after makes room for it. Going is the same, turned round. Where nothing may move, and while its parent is not
/// shown yet, both happen at once. What it holds may need another size meanwhile, and gets it. Main thread.
class Unfolding final : public QWidget {
    Q_OBJECT

public:
    /// What an animation takes that names no time of its own.
    static constexpr Seconds length{0.25};

    /// Takes the widget over, and is gone at first. It unfolds downwards, or to the side.
    explicit Unfolding(QWidget *inside, Qt::Orientation direction = Qt::Vertical);

    /// What goes shows and takes no clicks until it has gone.
    void setShown(bool isShown);
    void setShown(bool isShown, const Spring &spring);
    void setShownAtOnce(bool isShown);
    [[nodiscard]] bool isShown() const { return m_isShown; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

Q_SIGNALS:
    /// Its size hint is another now.
    void moved();

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    /// False when there is nothing left to move.
    [[nodiscard]] bool begin(bool isShown);
    void step(double part);
    void end();
    void place();
    [[nodiscard]] int wholeHeight(int width) const;

    QWidget *m_inside;
    Qt::Orientation m_direction;
    QGraphicsOpacityEffect *m_fade = nullptr; // only on the way: it costs a picture for each painting
    Motion m_motion;
    double m_from = 0;
    double m_part = 0; // of the whole size; a spring may run past it
    bool m_isShown = false;
};

} // namespace tavrine::look
