#pragma once

#include "look/PanelSurface.h"
#include "shell/StatusMenu.h"

#include <QPointer>

#include <vector>

class QMouseEvent;

namespace tavrine {

namespace look {
class Control;
class ScrollPane;
} // namespace look
class QuickActionsGrid;
class QuickActionsHeight;

/// The menu of the tray item as people see it: the Quick Actions, and the plain entries under them. It paints the
/// entries as they are, also while they change, and decides nothing. Lives as long as its panel; main thread.
///
/// It takes keys as menus do: arrows move, Return and Space press, a key equivalent fires its entry, Escape closes.
/// A press that began on the item and is still held chooses what it is let go over.
/// To a screen reader it is a window of buttons.
class StatusMenuView final : public look::PanelSurface {
    Q_OBJECT

public:
    /// Takes the grid over. Menu and height outlive the view.
    StatusMenuView(StatusMenu &menu, QuickActionsGrid *grid, QuickActionsHeight &height, QWidget *parent = nullptr);
    ~StatusMenuView() override;

    /// It comes now, by a press at this place of the screen.
    void prepare(QPoint place);
    [[nodiscard]] QSize sizeHint() const override;
    /// Of the Quick Actions, once they have the width of the menu.
    [[nodiscard]] double measuredGrid() const;
    /// While a menu of one of its cards is open: what is pressed there is no press elsewhere.
    [[nodiscard]] static bool hasMenuOpen();
    /// The pointer is here, in a press that began before the menu came; the window itself does not hear of it where the
    /// tray keeps the pointer. `isHeld`: the button is still down.
    void followHeldPress(QPoint place, bool isHeld);

Q_SIGNALS:
    /// The person is done with the menu, or chose an entry, which fires after it.
    void closeWanted();
    /// The menu is to be as high as its size hint.
    void sizeChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Row;

    void refresh();
    void fire(StatusMenuItem item);
    bool followHeldPress(const QMouseEvent &event);
    void lead(look::Control *to);
    [[nodiscard]] look::Control *controlAt(QPoint place) const;
    [[nodiscard]] bool fireByKey(const QKeyEvent &event);
    void moveFocus(int key);
    void place();
    [[nodiscard]] int entriesHeight() const;

    StatusMenu &m_menu;
    QuickActionsGrid *m_grid;
    QuickActionsHeight &m_height;
    look::ScrollPane *m_pane; ///< shows as much of the grid as its height and the screen let
    std::vector<Row *> m_rows;
    QPoint m_openedAt;
    QPointer<look::Control> m_ledTo; ///< by a press that is held since before it came
    bool m_isPressedInside = false;
    bool m_isHeldPressOver = false;
};

} // namespace tavrine
