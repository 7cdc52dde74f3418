#pragma once

#include "adapters/linux/PanelView.h"

#include <QElapsedTimer>

#include <optional>

namespace tavrine {

/// The toolkit's window of a panel on X11, and what the person does to it as a window.
///
/// Its frame is the one that was asked for last, or that the person moved it to. What the toolkit knows of a window
/// that is hidden, or that was moved a moment ago, may be older: a window manager tells of each step of an animation
/// when it comes to it.
class X11PanelView final : public PanelView {
public:
    explicit X11PanelView(const PanelDescription &description);

    void setFrame(const QRect &frame);
    /// Before a showing: gives the window its frame, whatever the toolkit believes that it has.
    void insistOnFrame();

    /// Gives the shadow its room, where there is one and the desktop can show it. Before each showing.
    void setComposited(bool isComposited);
    void setIgnoresMouseEvents(bool ignores);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    [[nodiscard]] bool isMovedByWindowManager();
    [[nodiscard]] bool isThereRoom() const;

    QElapsedTimer m_sinceAsked; ///< for another frame
    QRect m_desktop;            ///< all screens together, when it was last looked at
    QTimer m_moveEnds;          ///< runs while the person moves it through the window manager
    std::optional<QPoint> m_grip;
    bool m_ignoresMouseEvents;
    bool m_isComposited = false;
};

} // namespace tavrine
