#pragma once

#include "look/MotionClock.h"

#include <QWidget>

namespace tavrine {

/// A row of widgets that is scrolled sideways, by wheel, by touchpad, or to either end. What takes the keyboard comes
/// into sight.
class RecentStripView : public QWidget {
    Q_OBJECT

public:
    static constexpr int edge = 6; ///< room round the tiles for a focus ring

    explicit RecentStripView(int height, QWidget *parent = nullptr);

    /// Takes the widgets over, all of one size; the former ones go.
    void setTiles(std::vector<QWidget *> tiles);
    void scrollToStart() { scrollTo(0); }
    void scrollToEnd() { scrollTo(maximumOffset()); }
    [[nodiscard]] int offset() const { return m_offset; }
    [[nodiscard]] int maximumOffset() const;

Q_SIGNALS:
    void scrolled();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void scrollTo(int offset);
    void setOffset(int offset);

    QWidget *m_row;
    std::vector<QWidget *> m_tiles;
    look::Motion m_motion;
    int m_offset = 0;
};

} // namespace tavrine
