#pragma once

#include "adapters/wayland/ClearBuffer.h"
#include "adapters/wayland/WaylandClient.h"

#include <QDeadlineTimer>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;
struct zwp_keyboard_shortcuts_inhibit_manager_v1;

namespace tavrine {

/// The keyboards of all seats, and with them the keys that the compositor would obey itself: a clear pixel over
/// the windows is given both. What they type is dropped. Main thread. Used by WaylandEventTap.
///
/// Some compositors give the keyboard on when a window or a panel is clicked: it is asked for again at once. Who
/// takes it again and again, or is obeyed before this program, has it then.
class WaylandKeyboardHold final : public QObject {
public:
    enum class State {
        asking,   ///< the compositor has not heard all yet
        answered, ///< it has, and somebody else has a keyboard, or it comes in a moment
        whole,    ///< every keyboard is held, and no shortcut is obeyed
        gone,     ///< it was taken away too often, or could not even be asked for
    };

    /// Whether the compositor has what that takes.
    [[nodiscard]] static bool isOffered(const WaylandLink &link);

    /// Asks for all of it, over that connection; null for one of its own. `onChange` is called with each change of the
    /// state, never within a call; it does not destroy the hold.
    WaylandKeyboardHold(std::shared_ptr<WaylandReader> reader, std::function<void()> onChange);
    ~WaylandKeyboardHold() override;

    [[nodiscard]] State state() const { return m_state; }

    /// Gives all back and destroys the hold. What is down is still for nobody: programs of the X server would take it
    /// for pressed there. So that is waited for, for a moment, and `onChange` is called no more.
    void leave();

private:
    class Seat;

    void open();
    void close();
    void draw(std::uint32_t serial);
    void ask();
    void answered();
    void claimAgain();
    void lose();
    [[nodiscard]] bool isLostTooOften();
    void update();
    void become(State state);
    [[nodiscard]] bool isKeyDown() const;

    WaylandClient m_client;
    ClearBuffer m_buffer{m_client.link()};
    std::function<void()> m_onChange;
    wl_compositor *m_compositor = nullptr;
    zwlr_layer_shell_v1 *m_layers = nullptr;
    zwp_keyboard_shortcuts_inhibit_manager_v1 *m_inhibitors = nullptr;
    std::vector<std::unique_ptr<Seat>> m_seats;
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_role = nullptr;
    wl_callback *m_answer = nullptr;
    QDeadlineTimer m_lossesCount; ///< from the first of them on
    int m_losses = 0;
    State m_state = State::gone;
    bool m_isShown = false;
    bool m_isLost = false; ///< it was whole, or its pixel went, as with a screen
    bool m_isLeaving = false;
};

} // namespace tavrine
