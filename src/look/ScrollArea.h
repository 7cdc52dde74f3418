#pragma once

#include "look/MotionClock.h"

#include <QWidget>

namespace tavrine::look {

class ScrollThumb;

/// The base of what scrolls up and down: a thin bar over the content that shows while it scrolls or the pointer is
/// near, and a wheel that glides on and comes to rest. A touchpad, which sends pixels, moves the content exactly.
class ScrollArea : public QWidget {
    Q_OBJECT
public:
    explicit ScrollArea(QWidget *parent = nullptr);
    ~ScrollArea() override;

    [[nodiscard]] qreal offset() const { return m_offset; }
    [[nodiscard]] qreal maximumOffset() const;
    /// Goes there, gliding or at once; past the ends is cut.
    void scrollTo(qreal offset, bool isAnimated);
    /// What a wheel over the area does; for panels that hand their wheel on.
    void scrollBy(QWheelEvent *event);

Q_SIGNALS:
    void scrolled(qreal offset);

protected:
    [[nodiscard]] virtual qreal contentHeight() const = 0;
    /// The content is to be shown at `offset()`.
    virtual void moved() = 0;
    /// To be called when `contentHeight` may be another.
    void contentChanged();

    void wheelEvent(QWheelEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    friend class ScrollThumb;
    void setOffset(qreal offset);
    void glide();

    qreal m_offset = 0;
    qreal m_target = 0;
    Motion m_motion;
    ScrollThumb *m_thumb;
};

/// Scrolls one widget that is taller than the place for it: a page of settings. The widget gets the area's width.
class ScrollPane : public ScrollArea {
    Q_OBJECT
public:
    explicit ScrollPane(QWidget *content, QWidget *parent = nullptr);
    /// Scrolls until a widget within the content is in sight.
    void reveal(const QWidget &widget);

protected:
    [[nodiscard]] qreal contentHeight() const override;
    void moved() override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void place();

    QWidget *m_content;
};

} // namespace tavrine::look
