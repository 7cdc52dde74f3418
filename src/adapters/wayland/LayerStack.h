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

private:
    void settle(const Window *silent);

    std::list<Window> m_windows;      ///< from the back to the front
    std::list<const Window *> m_keys; ///< those that want the keyboard, the last one has it
    bool m_yields = false;
};

} // namespace tavrine
