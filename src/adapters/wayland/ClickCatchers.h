#pragma once

#include "adapters/wayland/ClearBuffer.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class QMouseEvent;

namespace tavrine {

class LayerShell;
class LayerStack;

/// Hears of what is pressed beside this program's floating windows, which a compositor tells nobody: clear windows over
/// all screens take it. So it reaches nothing else, as a press beside a menu does here. Main thread.
///
///  1. They are there while they are wanted and a floating window has the keyboard: what comes over it, as a picture of
///     the screens to choose in, a question or a large window, is not behind them. Else there is nothing of them.
///  2. They take nothing where a floating window of this program takes the mouse, whichever of the two is in front, nor
///     where a keyboard on the screen does.
///  3. A window that opens is not kept waiting for them.
///  4. What is dragged, by this program or another, passes.
///  5. A press that ends them is theirs until it is let go, or the pointer moves without it: nobody gets one half of a
///     click.
///  6. While a menu of a floating window is open a press closes that, and is told to nobody.
class ClickCatchers final : public QObject {
public:
    ClickCatchers(LayerShell &shell, LayerStack &stack);
    ~ClickCatchers() override;

    void setWanted(bool areWanted);
    void setOnPress(std::function<void(const QMouseEvent &press)> onPress) { m_onPress = std::move(onPress); }
    /// Whether that is one of these windows, which are nothing that this program shows.
    [[nodiscard]] static bool isCatcher(const QObject *window);

private:
    class Catcher;

    [[nodiscard]] bool areDue() const;
    void settleSoon();
    void settle();
    void appear();
    void vanish();
    void appearAnew();
    void pressed(const QMouseEvent &press);
    void dragged();

    LayerShell &m_shell;
    LayerStack &m_stack;
    std::function<void(const QMouseEvent &)> m_onPress;
    std::unique_ptr<ClearBuffer> m_buffer;
    std::vector<std::unique_ptr<Catcher>> m_catchers; ///< one for each screen, or none
    std::vector<std::unique_ptr<Catcher>> m_gone;     ///< the toolkit may yet tell that a drag has left them
    QTimer m_settles;
    bool m_areWanted = false;
    bool m_isPassing = false; ///< something is dragged, by a program that does not tell when that ends
};

} // namespace tavrine
