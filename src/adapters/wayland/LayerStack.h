#pragma once

#include <QRect>

#include <functional>
#include <list>

namespace tavrine {

/// Which of this program's floating windows is in front and which has the keyboard. The layer shell leaves both to the
/// compositor: of two windows of one layer some put the newer one below the older, and of two that ask for the keyboard
/// some give it to the older. So one alone asks for the keyboard, and one that another lies on goes a layer down. Main
/// thread.
class LayerStack {
public:
    /// What a window is to do.
    struct Standing {
        bool takesKeyboard = false;
        bool isOverFullScreen = true;
    };
    struct Window {
        int level = 0;
        QRect rect;
        bool wantsKeyboard = false;
        std::function<void(const Standing &)> stand;
        Standing standing{};
    };
    using Place = std::list<Window>::iterator;

    /// In front of those of its level and below; with the keyboard, if it wants that. Tells the others where they stand
    /// then, and the window itself nothing: it reads its `standing`.
    Place add(Window window);
    void remove(Place window);
    /// The rectangle of one has changed. Tells all.
    void follow(Place window, const QRect &rect);

    /// A window of the program that does not float has come or gone. While one is there that came last, none that
    /// floats asks for the keyboard.
    void setYields(bool yields);
    /// One of them has the keyboard, as far as it lies with this program.
    [[nodiscard]] bool asksForKeyboard() const { return !m_yields && !m_isHeld && !m_keys.empty(); }
    /// `settled` is called after each change.
    void setOnSettled(std::function<void()> settled) { m_settled = std::move(settled); }
    /// While it is held, none asks for the keyboard, whatever comes.
    void setHeld(bool isHeld);
    [[nodiscard]] bool isHeld() const { return m_isHeld; }

private:
    void settle(const Window *silent);

    std::list<Window> m_windows;      ///< from the back to the front
    std::list<const Window *> m_keys; ///< those that want the keyboard, the last one has it
    bool m_yields = false;
    bool m_isHeld = false;
    std::function<void()> m_settled;
};

} // namespace tavrine
