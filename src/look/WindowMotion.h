#pragma once

#include "look/MotionClock.h"

#include <QPointer>
#include <QWidget>

namespace tavrine::look {

/// The fades, slides and the shrink of one window, a member of whoever owns the window. A new motion replaces the one
/// under way without calling its `done`.
///
/// Without a compositor, and where nothing may move, a window is at the end at once, and `done` is called before the
/// call returns.
class WindowMotion {
public:
    explicit WindowMotion(QWidget *window) : m_window(window) {}
    ~WindowMotion();

    void fadeTo(double opacity, Seconds length, Motion::Done done = {});
    /// Fades and moves together; the move is in points, y downwards.
    void fadeAndSlide(double opacity, QPoint by, Seconds length, Motion::Done done = {});
    /// The window shrinks to `part` of its size about its centre and fades out, easing in. Its geometry and opacity are
    /// what they were when `done` is called; the caller orders it out first thing, so `hide` comes before them.
    void shrinkAway(double part, Seconds length, Motion::Done done = {});
    [[nodiscard]] bool isRunning() const { return m_motion.isRunning(); }
    void stop();

private:
    void endShrink();

    QPointer<QWidget> m_window;
    QPointer<QWidget> m_picture;
    Motion m_motion;
};

} // namespace tavrine::look
