#pragma once

#include "adapters/wayland/LayerStack.h"

#include <QObject>
#include <QPointer>
#include <QWindow>

#include <memory>
#include <vector>

class QWidget;

namespace tavrine {

class LayerRole;
class LayerShell;
class PopupRole;

/// Gives what opens out of a floating window its role: the toolkit knows no such window as a parent, and would make a
/// maximised window of a menu. Lives on the main thread.
///
///  1. A menu, a popover and a tool tip are pop-ups of the window that they belong to; without one, of that in which
///     the pointer or a key was last.
///  2. A question before a panel floats itself, with the keyboard.
///  3. All other windows are the toolkit's own matter. While one is open that came after the panels, it has the
///     keyboard.
class LayerPopups final : public QObject {
public:
    LayerPopups(LayerShell &shell, LayerStack &stack);
    ~LayerPopups() override;

    /// Closes what is open of menus and popovers. False where nothing was.
    [[nodiscard]] static bool closeMenus();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    struct Popup;
    struct Question;

    void appears(QWidget &widget);
    void opens(QWidget &widget);
    void vanishes(QWidget &widget);
    [[nodiscard]] QWindow *parentOf(const QWidget &widget) const;
    [[nodiscard]] const Popup *popupOf(const QWindow *window) const;
    void openPopup(QWidget &widget, QWindow &parent);
    void ask(QWidget &widget);

    LayerShell &m_shell;
    LayerStack &m_stack;
    QPointer<QWindow> m_lastUsed;
    std::vector<std::unique_ptr<Popup>> m_popups;
    std::vector<std::unique_ptr<Question>> m_questions;
    std::vector<QWidget *> m_ordinary; ///< windows that are shown and do not float
};

} // namespace tavrine
