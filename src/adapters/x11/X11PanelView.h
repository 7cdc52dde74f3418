#pragma once

#include "ports/PanelWindow.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <optional>

namespace tavrine {

/// The toolkit's window of a panel: its content, room for its shadow, and what the person does to it as a window. Owned
/// by its panel; main thread.
///
/// Its frame is the one that was asked for last, or that the person moved it to. What the toolkit knows of a window
/// that is hidden, or that was moved a moment ago, may be older: a window manager tells of each step of an animation
/// when it comes to it.
class X11PanelView final : public QWidget {
public:
    explicit X11PanelView(const PanelDescription &description);

    /// In the toolkit's coordinates, without the room for the shadow.
    [[nodiscard]] const QRect &frame() const { return m_frame; }
    void setFrame(const QRect &frame);
    /// Before a showing: gives the window its frame, whatever the toolkit believes that it has.
    void insistOnFrame();

    /// Gives the shadow its room, where there is one and the desktop can show it. Before each showing.
    void setComposited(bool isComposited);
    [[nodiscard]] QMargins room() const;
    void setIgnoresMouseEvents(bool ignores);

    std::function<void()> onMoved;
    std::function<void()> onClosed;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    [[nodiscard]] bool isMovedByWindowManager();
    [[nodiscard]] bool isThereRoom() const;
    void rest();

    PanelDescription m_description;
    QRect m_frame;
    QElapsedTimer m_sinceAsked; ///< for another frame
    QRect m_desktop;            ///< all screens together, when it was last looked at
    QTimer m_moveEnds;          ///< runs while the person moves it through the window manager
    QTimer m_restsSoon;         ///< runs from the moment at which it was hidden
    std::optional<QPoint> m_grip;
    bool m_ignoresMouseEvents;
    bool m_isComposited = false;
    bool m_hasRoom = true; ///< on the screen, for the shadow
};

} // namespace tavrine
